// platform/base/RegularFile.cpp
//
// Reading a file whole.
#include "platform/base/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>

CDescriptor OpenRegularFile(const std::string& path, std::uint64_t& size) noexcept
{
    // Without O_NONBLOCK the open of a pipe would wait for somebody to write to it.
    CDescriptor file(Uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
    struct stat status = {};
    if (!file || fstat(file.Get(), &status) != 0)
        return CDescriptor();
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return CDescriptor();
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return file;
}

int ReadRegularFile(const std::string& path, std::uint64_t most, std::vector<std::uint8_t>& bytes)
{
    std::uint64_t size = 0;
    const CDescriptor file = OpenRegularFile(path, size);
    if (!file)
        return errno;
    if (size > most)
        return EFBIG;
    bytes.resize(static_cast<std::size_t>(size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            Uninterrupted([&] { return read(file.Get(), bytes.data() + filled, bytes.size() - filled); });
        if (count < 0)
            return errno;
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return 0;
}
