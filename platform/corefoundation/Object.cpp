// platform/corefoundation/Object.cpp
//
// Reference counts and the calls that work on every kind of object.
#include "platform/corefoundation/Object.h"

#include "platform/base/Guard.h"
#include "platform/corefoundation/String.h"

void CObject::Retain() const noexcept
{
    if (m_references.load(std::memory_order_relaxed) != kConstant)
        m_references.fetch_add(1, std::memory_order_relaxed);
}

bool CObject::TryRetain() const noexcept
{
    CFIndex count = m_references.load(std::memory_order_relaxed);
    while (count != kConstant && count != 0) {
        if (m_references.compare_exchange_weak(count, count + 1, std::memory_order_acquire, std::memory_order_relaxed))
            return true;
    }
    return count == kConstant;
}

void CObject::Release() const noexcept
{
    if (m_references.load(std::memory_order_relaxed) == kConstant)
        return;
    if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

CFTypeRef CFRetain(CFTypeRef cf)
{
    if (cf)
        ObjectOf(cf)->Retain();
    return cf;
}

void CFRelease(CFTypeRef cf)
{
    if (cf)
        ObjectOf(cf)->Release();
}

CFIndex CFGetRetainCount(CFTypeRef cf)
{
    return cf ? ObjectOf(cf)->ReferenceCount() : 0;
}

CFTypeID CFGetTypeID(CFTypeRef cf)
{
    return cf ? static_cast<CFTypeID>(ObjectOf(cf)->Type()) : 0;
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2)
{
    if (cf1 == cf2)
        return true;
    return cf1 && cf2 && ObjectOf(cf1)->Type() == ObjectOf(cf2)->Type() && ObjectOf(cf1)->EqualTo(*ObjectOf(cf2));
}

CFHashCode CFHash(CFTypeRef cf)
{
    return cf ? ObjectOf(cf)->Hash() : 0;
}

CFStringRef CFCopyDescription(CFTypeRef cf)
{
    return Guarded<CFStringRef>(nullptr,
                                [&] { return __CFString::Create(cf ? ObjectOf(cf)->Describe() : "(null)").Detach(); });
}

void CFShow(CFTypeRef cf)
{
    const auto text = CRef<const __CFString>::Adopt(CFCopyDescription(cf));
    if (text)
        fprintf(stderr, "%s\n", text->Utf8().data());
}
