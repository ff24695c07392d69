// frame/Owned.h
//
// The component's owner of a Core Foundation reference.
#ifndef FRAME_OWNED_H
#define FRAME_OWNED_H

#include <CoreFoundation/CoreFoundation.h>

/// Holds what a Create or Copy call answered and releases it at the end of the scope. Null is fine.
template <typename Ref>
class COwned {
public:
    explicit COwned(Ref ref = nullptr) : m_ref(ref) {}
    ~COwned()
    {
        if (m_ref)
            CFRelease(m_ref);
    }
    COwned(const COwned&) = delete;
    COwned& operator=(const COwned&) = delete;

    Ref Get() const { return m_ref; }
    explicit operator bool() const { return m_ref != nullptr; }
    /// Gives the reference up to the caller.
    Ref Detach()
    {
        const Ref ref = m_ref;
        m_ref = nullptr;
        return ref;
    }
    /// Where a call may write a reference for this to own; only while nothing is held.
    Ref* Receive() { return &m_ref; }

private:
    Ref m_ref;
};

#endif
