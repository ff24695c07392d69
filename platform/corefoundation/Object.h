// platform/corefoundation/Object.h
//
// The root of all Core Foundation objects and the owner of one. A CFTypeRef is the address of a
// CObject; every class derives from it alone, so that the addresses are the same.
#pragma once

#include <atomic>
#include <limits>
#include <string>

#include <CoreFoundation/CFBase.h>

/// What CFGetTypeID answers.
enum class TypeId : CFTypeID { String = 1, Data, Array, Dictionary, Number, Truth, Date, Url, Bundle, Opaque, Image };

/// Constant objects live until the process ends and are not counted.
enum class Lifetime { Counted, Constant };

/// An object with an atomic reference count; one reference belongs to who made it.
class CObject {
public:
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    virtual TypeId Type() const noexcept = 0;
    /// Compares with an object of the same type.
    virtual bool EqualTo(const CObject& other) const { return this == &other; }
    virtual CFHashCode Hash() const { return reinterpret_cast<CFHashCode>(this) >> 4U; }
    /// Answers the text that `%@` shows, in UTF-8.
    virtual std::string Describe() const = 0;

    void Retain() const noexcept;
    /// Retains unless the last reference is gone already; for caches that hold no reference.
    bool TryRetain() const noexcept;
    void Release() const noexcept;
    CFIndex ReferenceCount() const noexcept { return m_references.load(std::memory_order_relaxed); }

protected:
    /// Constant objects are complete in the library's file, before any initialiser has run.
    constexpr explicit CObject(Lifetime lifetime = Lifetime::Counted) noexcept
        : m_references(lifetime == Lifetime::Constant ? kConstant : 1)
    {
    }
    virtual ~CObject() = default;

private:
    // The count of constant objects; no object can be retained so often.
    static constexpr CFIndex kConstant = std::numeric_limits<CFIndex>::max();

    mutable std::atomic<CFIndex> m_references;
};

/// A constant object of the layer: complete at compile time and never destroyed. A program may hold
/// a copy of the pointer to it that was made before any initialiser of the layer ran.
template <typename T>
union ConstantObject {
    template <typename... Arguments>
    constexpr explicit ConstantObject(Arguments... arguments) : object(arguments...)
    {
    }
    ~ConstantObject() {}

    T object;
};

/// Owns one reference to a T, which derives from CObject.
template <typename T>
class CRef {
public:
    CRef() noexcept = default;
    CRef(const CRef& other) noexcept : m_object(other.m_object)
    {
        if (m_object)
            m_object->Retain();
    }
    CRef(CRef&& other) noexcept : m_object(other.Detach()) {}
    CRef& operator=(CRef other) noexcept
    {
        T* const mine = m_object;
        m_object = other.m_object;
        other.m_object = mine;
        return *this;
    }
    ~CRef()
    {
        if (m_object)
            m_object->Release();
    }

    /// Takes over the reference that the caller has.
    static CRef Adopt(T* object) noexcept
    {
        CRef ref;
        ref.m_object = object;
        return ref;
    }
    /// Adds a reference of its own.
    static CRef Share(T* object) noexcept
    {
        if (object)
            object->Retain();
        return Adopt(object);
    }

    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    /// Gives the reference up to the caller.
    T* Detach() noexcept
    {
        T* const object = m_object;
        m_object = nullptr;
        return object;
    }

private:
    T* m_object = nullptr;
};

/// Answers the object behind a reference; null for null.
inline const CObject* ObjectOf(CFTypeRef cf) noexcept
{
    return static_cast<const CObject*>(cf);
}

/// Answers whether a reference is an object of `type`.
inline bool IsOfType(CFTypeRef cf, TypeId type) noexcept
{
    return cf && ObjectOf(cf)->Type() == type;
}
