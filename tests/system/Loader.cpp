// tests/system/Loader.cpp
//
// A host that knows nothing of us: it loads a bundle's code by its path, asks it for its name, and
// prints what that has brought into the process: a line for each library beyond the C and C++
// libraries, the number of threads, and that of the descriptors that came on top.
#include <dirent.h>
#include <dlfcn.h>
#include <link.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>

namespace {

std::size_t CountEntries(const char* folder)
{
    std::size_t count = 0;
    DIR* const entries = opendir(folder);
    while (const dirent* const entry = readdir(entries))
        count += entry->d_name[0] == '.' ? 0 : 1;
    closedir(entries);
    return count;
}

bool IsBasic(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    for (const char* const basic : {"libc.so", "libm.so", "libstdc++.so", "libgcc_s.so", "ld-linux", "linux-vdso"}) {
        if (name.rfind(basic, 0) == 0)
            return true;
    }
    return false;
}

std::set<std::string> Libraries()
{
    std::set<std::string> names;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* context) {
            if (info->dlpi_name && info->dlpi_name[0] != '\0' && !IsBasic(info->dlpi_name))
                static_cast<std::set<std::string>*>(context)->insert(info->dlpi_name);
            return 0;
        },
        &names);
    return names;
}

} // namespace

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    const std::size_t descriptors = CountEntries("/proc/self/fd");
    const std::set<std::string> before = Libraries();
    void* const code = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
    if (!code || !dlsym(code, "GetLibProductManager")) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    for (const std::string& name : Libraries()) {
        if (before.find(name) == before.end() && name != words[1])
            std::printf("library %s\n", name.c_str());
    }
    std::printf("threads %zu\n", CountEntries("/proc/self/task"));
    std::printf("descriptors %zu\n", CountEntries("/proc/self/fd") - descriptors);
    return 0;
}
