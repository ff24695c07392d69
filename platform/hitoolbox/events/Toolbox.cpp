// platform/hitoolbox/events/Toolbox.cpp
//
// The layout of references: a 1 in the lowest bit (so that no address passes for one), the target
// bit, the slot's index, the slot's generation.
#include "platform/hitoolbox/events/Toolbox.h"

#include <new>

#include "platform/base/Forever.h"

namespace {

constexpr unsigned kIndexShift = 2;
constexpr unsigned kIndexBits = sizeof(std::uintptr_t) == 8 ? 30 : 19;
constexpr std::uintptr_t kIndexMask = (std::uintptr_t{1} << kIndexBits) - 1;
constexpr unsigned kGenerationShift = kIndexShift + kIndexBits;
constexpr std::uintptr_t kGenerationMask = ~std::uintptr_t{0} >> kGenerationShift;
// Slots rest before they are used again, so that a stale reference stays recognisable for long.
constexpr std::size_t kRestingSlots = 1024;

std::mutex& Mutex()
{
    static CForever<std::mutex> mutex;
    return *mutex;
}

} // namespace

CToolboxLock::CToolboxLock() : std::unique_lock<std::mutex>(Mutex())
{
}

CHandleTable& Handles()
{
    static CForever<CHandleTable> table;
    return *table;
}

void CHandleTable::Register(CRecord& record)
{
    std::size_t index = m_slots.size();
    if (m_freeCount > kRestingSlots) {
        index = m_firstFree;
        m_firstFree = m_slots[index].nextFree;
        --m_freeCount;
    } else if (index > kIndexMask) {
        throw std::bad_alloc();
    } else {
        m_slots.emplace_back();
    }
    Slot& slot = m_slots[index];
    slot.record = &record;
    record.Retain();
    record.m_handle = (slot.generation << kGenerationShift) | (index << kIndexShift) | 1U;
}

void CHandleTable::Forget(CRecord& record) noexcept
{
    if (record.m_handle == 0)
        return;
    const std::size_t index = (record.m_handle >> kIndexShift) & kIndexMask;
    Slot& slot = m_slots[index];
    slot.record = nullptr;
    slot.generation = slot.generation == kGenerationMask ? 1 : slot.generation + 1;
    if (m_freeCount == 0)
        m_firstFree = index;
    else
        m_slots[m_lastFree].nextFree = index;
    m_lastFree = index;
    ++m_freeCount;
    record.m_handle = 0;
    record.Release();
}

CRecord* CHandleTable::Find(std::uintptr_t handle) const noexcept
{
    const std::size_t index = (handle >> kIndexShift) & kIndexMask;
    if ((handle & 1U) == 0 || index >= m_slots.size())
        return nullptr;
    const Slot& slot = m_slots[index];
    const bool current = slot.record && slot.record->m_handle == handle;
    return current ? slot.record : nullptr;
}
