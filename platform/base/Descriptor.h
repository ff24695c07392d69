// platform/base/Descriptor.h
//
// The owner of a file descriptor, and calls that a signal may not break off.
#pragma once

#include <unistd.h>

#include <cerrno>

/// Owns a descriptor and closes it at the end of the scope. Every descriptor of the layer is opened
/// with O_CLOEXEC: the host starts other programs at any time.
class CDescriptor {
public:
    explicit CDescriptor(int descriptor = -1) noexcept : m_descriptor(descriptor) {}
    CDescriptor(CDescriptor&& other) noexcept : m_descriptor(other.m_descriptor) { other.m_descriptor = -1; }
    CDescriptor& operator=(CDescriptor&& other) noexcept
    {
        const int mine = m_descriptor;
        m_descriptor = other.m_descriptor;
        other.m_descriptor = mine;
        return *this;
    }
    ~CDescriptor() { Close(); }

    int Get() const noexcept { return m_descriptor; }
    explicit operator bool() const noexcept { return m_descriptor >= 0; }
    /// Closes early. A failure has nothing to say to those who have flushed before.
    void Close() noexcept
    {
        const int error = errno;
        if (m_descriptor >= 0)
            (void)close(m_descriptor);
        m_descriptor = -1;
        errno = error;
    }

private:
    int m_descriptor;
};

/// Answers whether this process can open `count` descriptors more. GLib ends the process when it gets
/// none, and fonts that could not be read then stay away: both are begun only with some to spare.
bool HasSpareDescriptors(int count);

/// More than a library needs to begin.
constexpr int kDescriptorsToBegin = 24;

/// Makes a system call again for as long as a signal breaks it off.
template <typename Call>
auto Uninterrupted(Call&& call) noexcept
{
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR)
            return result;
    }
}
