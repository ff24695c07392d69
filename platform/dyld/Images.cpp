// platform/dyld/Images.cpp
//
// The list of loaded images, over the ELF loader. The loader tells the path by which an image was
// loaded; where that path is relative, or leads nowhere because somebody moved the file, the
// kernel's list of mappings tells where the file is now.
#include <elf.h>
#include <link.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "platform/base/Guard.h"
#include <mach-o/dyld.h>

namespace {

struct Image {
    const mach_header* header;
    std::string name; // as the loader has it
};

struct ImageList {
    unsigned long long added = 0; // the loader's counters when the list was made
    unsigned long long removed = 0;
    std::vector<Image> images;
};
using SharedList = std::shared_ptr<ImageList>; // not changed once it is shared

struct Images {
    std::mutex mutex;
    SharedList list = std::make_shared<ImageList>();
    std::set<std::string> names; // what was handed out; bounded by the files ever loaded
};

Images& g_images = *new Images;

// What the calling thread counted last: its indices mean these images until it counts again, also
// while other threads load and unload. By a key and not thread_local, whose objects are gone when the
// program's globals are destroyed; the component asks once more then.
SharedList& Counted()
{
    static const pthread_key_t key = [] {
        pthread_key_t made = {};
        if (pthread_key_create(&made, [](void* list) { delete static_cast<SharedList*>(list); }) != 0)
            throw std::bad_alloc();
        return made;
    }();
    auto* list = static_cast<SharedList*>(pthread_getspecific(key));
    if (!list) {
        list = new SharedList;
        (void)pthread_setspecific(key, list); // fails for want of memory only; then the next call begins anew
    }
    return *list;
}

const mach_header* HeaderOf(const dl_phdr_info& info)
{
    for (int index = 0; index < info.dlpi_phnum; ++index) {
        const auto& segment = info.dlpi_phdr[index];
        if (segment.p_type == PT_LOAD && segment.p_offset == 0)
            return reinterpret_cast<const mach_header*>(info.dlpi_addr + segment.p_vaddr);
    }
    return nullptr;
}

// The kernel's own code page is no file and no image.
bool IsVirtual(const dl_phdr_info& info)
{
    return info.dlpi_name && info.dlpi_name[0] != '\0' && !std::strchr(info.dlpi_name, '/');
}

int AddImage(dl_phdr_info* info, std::size_t, void* context)
{
    auto& list = *static_cast<ImageList*>(context);
    return Guarded<int>(-1, [&] {
        list.added = info->dlpi_adds;
        list.removed = info->dlpi_subs;
        if (!IsVirtual(*info))
            list.images.push_back({HeaderOf(*info), info->dlpi_name ? info->dlpi_name : ""});
        return 0;
    });
}

int CompareCounters(dl_phdr_info* info, std::size_t, void* context)
{
    const auto& list = *static_cast<const ImageList*>(context);
    return info->dlpi_adds == list.added && info->dlpi_subs == list.removed ? 1 : 2;
}

// Answers the list as it is now. The loader never asks for our mutex.
SharedList CurrentList()
{
    const std::lock_guard<std::mutex> lock(g_images.mutex);
    ImageList& known = *g_images.list;
    if (known.images.empty() || dl_iterate_phdr(CompareCounters, &known) != 1) {
        const SharedList fresh = std::make_shared<ImageList>();
        if (dl_iterate_phdr(AddImage, fresh.get()) != 0)
            return std::make_shared<ImageList>(); // no memory
        g_images.list = fresh;
    }
    return g_images.list;
}

const Image* FindImage(std::uint32_t index)
{
    SharedList& counted = Counted();
    if (!counted)
        counted = CurrentList();
    return index < counted->images.size() ? &counted->images[index] : nullptr;
}

bool IsThere(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0;
}

// The kernel writes a newline in a path as \012, and nothing else in such a way.
std::string ReadPath(const char* text)
{
    std::string path(text);
    while (!path.empty() && path.back() == '\n')
        path.pop_back();
    for (std::size_t at = path.find("\\012"); at != std::string::npos; at = path.find("\\012", at + 1))
        path.replace(at, 4, "\n");
    return path;
}

// Answers where the file that is mapped at `header` lies now; empty when that cannot be told.
std::string MappedPath(const mach_header* header)
{
    std::FILE* const maps = std::fopen("/proc/self/maps", "re");
    if (!maps)
        return "";
    std::string path;
    char* line = nullptr;
    std::size_t capacity = 0;
    while (getline(&line, &capacity, maps) > 0) {
        unsigned long start = 0;
        unsigned long end = 0;
        int at = 0;
        // address perms offset device node path
        if (std::sscanf(line, "%lx-%lx %*s %*s %*s %*s %n", &start, &end, &at) < 2 || at == 0)
            continue;
        const auto address = reinterpret_cast<unsigned long>(header);
        if (address >= start && address < end) {
            path = ReadPath(line + at);
            break;
        }
    }
    free(line);
    (void)std::fclose(maps);
    return !path.empty() && path.front() == '/' && IsThere(path) ? path : "";
}

std::string ProgramPath()
{
    std::string path(256, '\0');
    for (;;) {
        const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
        if (size < 0)
            return "";
        if (static_cast<std::size_t>(size) < path.size()) {
            path.resize(static_cast<std::size_t>(size));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::string CurrentPath(const Image& image, bool isProgram)
{
    if (isProgram)
        return ProgramPath();
    const bool absolute = !image.name.empty() && image.name.front() == '/';
    if (absolute && IsThere(image.name))
        return image.name;
    const std::string mapped = MappedPath(image.header);
    return mapped.empty() && absolute ? image.name : mapped;
}

} // namespace

uint32_t _dyld_image_count(void)
{
    return Guarded<uint32_t>(0, [] {
        SharedList& counted = Counted();
        counted = CurrentList();
        return static_cast<uint32_t>(counted->images.size());
    });
}

const struct mach_header* _dyld_get_image_header(uint32_t image_index)
{
    return Guarded<const mach_header*>(nullptr, [&]() -> const mach_header* {
        const Image* const image = FindImage(image_index);
        return image ? image->header : nullptr;
    });
}

const char* _dyld_get_image_name(uint32_t image_index)
{
    return Guarded<const char*>(nullptr, [&]() -> const char* {
        const Image* const image = FindImage(image_index);
        const std::string path = image ? CurrentPath(*image, image_index == 0) : "";
        if (path.empty())
            return nullptr;
        const std::lock_guard<std::mutex> lock(g_images.mutex);
        return g_images.names.insert(path).first->c_str();
    });
}
