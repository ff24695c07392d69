// platform/hitoolbox/events/Toolbox.h
//
// What all toolbox records share: the one lock that guards them and the table that tells a good
// reference from a null, stale or foreign one.
//
// A reference is a number, never an address. The lock is never held while a handler, a timer or a
// desktop runs: who calls out takes an owner (CRef) of what it needs, unlocks, and looks everything
// else up again afterwards.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/corefoundation/Object.h"

class CTarget;

enum class RecordKind : std::uint8_t {
    Event,
    Target,
    Handler,
    Dispatch,
    Queue,
    Loop,
    Timer,
    Window,
    Control,
    TrackingArea,
    Nib,
    Dialog
};

/// A record behind a reference. Its count keeps the memory; the reference is good until Forget.
class CRecord {
public:
    CRecord(const CRecord&) = delete;
    CRecord& operator=(const CRecord&) = delete;

    RecordKind Kind() const noexcept { return m_kind; }
    /// The reference as a number; 0 before it is registered and after it is forgotten.
    std::uintptr_t Handle() const noexcept { return m_handle; }
    /// The record as a target of events; null for what is none.
    virtual CTarget* AsTarget() noexcept { return nullptr; }

    void Retain() const noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept
    {
        if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

protected:
    explicit CRecord(RecordKind kind) noexcept : m_kind(kind) {}
    virtual ~CRecord() = default;

private:
    friend class CHandleTable;
    mutable std::atomic<std::size_t> m_references{1};
    std::uintptr_t m_handle = 0;
    const RecordKind m_kind;
};

/// Holds the lock for a scope, or for parts of it.
class CToolboxLock : public std::unique_lock<std::mutex> {
public:
    CToolboxLock();
};

/// The references. Every operation: with the lock held.
class CHandleTable {
public:
    /// Gives a record its reference and keeps one count of it. Throws std::bad_alloc.
    void Register(CRecord& record);
    /// Makes a record's reference stale and gives the count back.
    void Forget(CRecord& record) noexcept;
    /// Answers the record behind a number that says it is a record's; null for anything else.
    CRecord* Find(std::uintptr_t handle) const noexcept;

    /// Set in the number of a record's target, so that a window is not taken for its target.
    static constexpr std::uintptr_t kTargetBit = 2;

private:
    struct Slot {
        CRecord* record = nullptr;
        std::uintptr_t generation = 1;
        std::size_t nextFree = 0;
    };
    std::vector<Slot> m_slots;
    std::size_t m_firstFree = 0, m_lastFree = 0, m_freeCount = 0;
};

/// Answers the one table, never destroyed.
CHandleTable& Handles();

/// Answers the record of class T behind a reference, or null. With the lock held.
template <typename T, typename Ref>
T* Find(Ref reference) noexcept
{
    CRecord* const record = Handles().Find(reinterpret_cast<std::uintptr_t>(reference));
    return record && record->Kind() == T::kKind ? static_cast<T*>(record) : nullptr;
}

/// Answers an owner of that record.
template <typename T, typename Ref>
CRef<T> Share(Ref reference) noexcept
{
    return CRef<T>::Share(Find<T>(reference));
}

/// Answers the reference of a record.
template <typename Ref>
Ref RefOf(const CRecord& record) noexcept
{
    return reinterpret_cast<Ref>(record.Handle());
}
