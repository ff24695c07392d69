// tests/system/Faults.cpp
//
// A library to be preloaded: counts the file-system calls that the program makes after FaultsArm,
// and lets one of them fail, do half its work, or kill the process. FAULT_AT names the call by its
// number, FAULT_KIND what happens: kill, short, or an errno's number.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool g_armed = false;
int g_at = 0;
int g_calls = 0;
int g_flushes = 0;
bool g_fired = false;
char g_kind[16] = "";

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

enum class Fate { Normal, Fail, Short };

Fate Next()
{
    if (!g_armed || ++g_calls != g_at)
        return Fate::Normal;
    g_fired = true;
    if (std::strcmp(g_kind, "kill") == 0)
        (void)raise(SIGKILL);
    if (std::strcmp(g_kind, "short") == 0)
        return Fate::Short;
    errno = std::atoi(g_kind);
    return Fate::Fail;
}

int Open(const char* name, const char* path, int flags, mode_t mode)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, int, ...)>(name)(path, flags, mode);
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) void FaultsArm()
{
    const char* const at = std::getenv("FAULT_AT");
    const char* const kind = std::getenv("FAULT_KIND");
    g_at = at ? std::atoi(at) : 0;
    std::snprintf(g_kind, sizeof g_kind, "%s", kind ? kind : "");
    g_armed = true;
}

/// Prints how many calls there were, how many of them were flushes, and whether the fault came.
__attribute__((visibility("default"))) void FaultsReport()
{
    g_armed = false;
    std::printf(" calls=%d flushes=%d fired=%d", g_calls, g_flushes, g_fired ? 1 : 0);
}

#define EXPORT __attribute__((visibility("default")))

EXPORT int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Open("open", path, flags, mode);
}

EXPORT int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Open("open64", path, flags, mode);
}

EXPORT ssize_t read(int descriptor, void* buffer, size_t size)
{
    const Fate fate = Next();
    return fate == Fate::Fail ? -1
                              : Real<ssize_t(int, void*, size_t)>("read")(descriptor, buffer,
                                                                          fate == Fate::Short && size > 1 ? 1 : size);
}

EXPORT ssize_t write(int descriptor, const void* buffer, size_t size)
{
    const Fate fate = Next();
    return fate == Fate::Fail ? -1
                              : Real<ssize_t(int, const void*, size_t)>("write")(
                                    descriptor, buffer, fate == Fate::Short && size > 1 ? size / 2 : size);
}

EXPORT ssize_t pread(int descriptor, void* buffer, size_t size, off_t at)
{
    return Next() == Fate::Fail ? -1 : Real<ssize_t(int, void*, size_t, off_t)>("pread")(descriptor, buffer, size, at);
}

EXPORT ssize_t pwrite(int descriptor, const void* buffer, size_t size, off_t at)
{
    return Next() == Fate::Fail
               ? -1
               : Real<ssize_t(int, const void*, size_t, off_t)>("pwrite")(descriptor, buffer, size, at);
}

EXPORT int fsync(int descriptor)
{
    g_flushes += g_armed ? 1 : 0;
    return Next() == Fate::Fail ? -1 : Real<int(int)>("fsync")(descriptor);
}

EXPORT int close(int descriptor)
{
    // A failed close has closed all the same.
    const bool fails = Next() == Fate::Fail;
    const int error = errno;
    const int result = Real<int(int)>("close")(descriptor);
    errno = fails ? error : errno;
    return fails ? -1 : result;
}

EXPORT int rename(const char* from, const char* to)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, const char*)>("rename")(from, to);
}

EXPORT int link(const char* from, const char* to)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, const char*)>("link")(from, to);
}

EXPORT int unlink(const char* path)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*)>("unlink")(path);
}

EXPORT int mkdir(const char* path, mode_t mode)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, mode_t)>("mkdir")(path, mode);
}

EXPORT int fchmod(int descriptor, mode_t mode)
{
    return Next() == Fate::Fail ? -1 : Real<int(int, mode_t)>("fchmod")(descriptor, mode);
}

EXPORT int fstat(int descriptor, struct stat* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(int, struct stat*)>("fstat")(descriptor, status);
}

// The same calls of 32-bit programs with 64-bit offsets and times.
EXPORT ssize_t pread64(int descriptor, void* buffer, size_t size, off64_t at)
{
    return Next() == Fate::Fail ? -1
                                : Real<ssize_t(int, void*, size_t, off64_t)>("pread64")(descriptor, buffer, size, at);
}

EXPORT ssize_t pwrite64(int descriptor, const void* buffer, size_t size, off64_t at)
{
    return Next() == Fate::Fail
               ? -1
               : Real<ssize_t(int, const void*, size_t, off64_t)>("pwrite64")(descriptor, buffer, size, at);
}

EXPORT int __fstat64_time64(int descriptor, void* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(int, void*)>("__fstat64_time64")(descriptor, status);
}

EXPORT int __stat64_time64(const char* path, void* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, void*)>("__stat64_time64")(path, status);
}

EXPORT int __lstat64_time64(const char* path, void* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, void*)>("__lstat64_time64")(path, status);
}

EXPORT int stat(const char* path, struct stat* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, struct stat*)>("stat")(path, status);
}

EXPORT int lstat(const char* path, struct stat* status)
{
    return Next() == Fate::Fail ? -1 : Real<int(const char*, struct stat*)>("lstat")(path, status);
}

} // extern "C"
