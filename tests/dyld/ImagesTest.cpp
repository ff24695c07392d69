// tests/dyld/ImagesTest.cpp
//
// The list of images: where the program stands in it, and that names stay right.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <mach-o/dyld.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <thread>

#include "tests/support/Support.h"

namespace {

// The probe, copied to a folder and loaded by whatever path leads there.
class CProbe {
public:
    explicit CProbe(const std::string& path) : m_code(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        EXPECT_NE(m_code, nullptr) << dlerror();
    }
    ~CProbe()
    {
        if (m_code)
            dlclose(m_code);
    }
    CProbe(const CProbe&) = delete;
    CProbe& operator=(const CProbe&) = delete;

    const void* Header() const { return reinterpret_cast<const void* (*)()>(dlsym(m_code, "ProbeHeader"))(); }
    // Where the probe stands in the list; 0 for nowhere.
    std::uint32_t Index() const
    {
        for (std::uint32_t index = 1; index < _dyld_image_count(); ++index) {
            if (static_cast<const void*>(_dyld_get_image_header(index)) == Header())
                return index;
        }
        return 0;
    }
    std::string Name() const
    {
        const char* const name = Index() == 0 ? nullptr : _dyld_get_image_name(Index());
        return name ? name : "(null)";
    }

private:
    void* m_code;
};

std::string CopyProbe(const std::string& to)
{
    std::filesystem::create_directories(std::filesystem::path(to).parent_path());
    std::filesystem::copy_file(CV_IMAGE_PROBE, to);
    return to;
}

} // namespace

TEST(Images, TheProgramIsIndexZero)
{
    ASSERT_GT(_dyld_image_count(), 1U);
    EXPECT_EQ(static_cast<const void*>(_dyld_get_image_header(0)), static_cast<const void*>(&__dso_handle));
    EXPECT_EQ(std::string(_dyld_get_image_name(0)), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST(Images, EveryOneHasAHeaderAndAnAbsoluteName)
{
    for (std::uint32_t index = 0; index < _dyld_image_count(); ++index) {
        const void* const header = _dyld_get_image_header(index);
        ASSERT_NE(header, nullptr) << index;
        EXPECT_EQ(std::string(static_cast<const char*>(header), 4), "\x7F"
                                                                    "ELF");
        ASSERT_NE(_dyld_get_image_name(index), nullptr) << index;
        EXPECT_EQ(_dyld_get_image_name(index)[0], '/') << _dyld_get_image_name(index);
        EXPECT_TRUE(FileExists(_dyld_get_image_name(index))) << _dyld_get_image_name(index);
    }
}

TEST(Images, AnIndexOutOfRangeGivesNull)
{
    for (const std::uint32_t index : {_dyld_image_count(), 0xFFFFFFFFU}) {
        EXPECT_EQ(_dyld_get_image_header(index), nullptr);
        EXPECT_EQ(_dyld_get_image_name(index), nullptr);
    }
}

TEST(Images, LibrariesComeAndGo)
{
    const CTemporaryFolder folder;
    const std::string path = CopyProbe(folder / "probe");
    const std::uint32_t before = _dyld_image_count();
    {
        const CProbe probe(path);
        EXPECT_EQ(_dyld_image_count(), before + 1);
        EXPECT_EQ(probe.Name(), path);
    }
    EXPECT_EQ(_dyld_image_count(), before);
}

TEST(Images, NamesAreAbsoluteAfterALoadByARelativePath)
{
    const CTemporaryFolder folder;
    CopyProbe(folder / "a b#%\xC3\xA9/probe");
    const int code = RunInChild([&folder] {
        if (chdir(folder.Path().c_str()) != 0)
            return 1;
        const CProbe probe("./a b#%\xC3\xA9/probe");
        EXPECT_EQ(probe.Name(), folder / "a b#%\xC3\xA9/probe");
        if (chdir("/") != 0)
            return 1;
        EXPECT_EQ(probe.Name(), folder / "a b#%\xC3\xA9/probe");
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(Images, AMovedFileIsFoundAtItsNewPlace)
{
    const CTemporaryFolder folder;
    const CProbe probe(CopyProbe(folder / "old/probe"));
    std::filesystem::rename(folder / "old", folder / "new");
    EXPECT_EQ(probe.Name(), folder / "new/probe");
    std::filesystem::rename(folder / "new", folder / "line\nbreak and blank");
    EXPECT_EQ(probe.Name(), folder / "line\nbreak and blank/probe");
}

TEST(Images, ADeletedFileKeepsTheNameItWasLoadedBy)
{
    const CTemporaryFolder folder;
    const std::string path = CopyProbe(folder / "probe");
    const CProbe probe(path);
    std::filesystem::remove(path);
    EXPECT_EQ(probe.Name(), path);
}

TEST(Images, NamesThatWereHandedOutStayValid)
{
    const CTemporaryFolder folder;
    const char* name = nullptr;
    {
        const CProbe probe(CopyProbe(folder / "probe"));
        name = _dyld_get_image_name(probe.Index());
    }
    EXPECT_EQ(std::string(name), folder / "probe");
}

TEST(Images, IndicesMeanTheSameImagesUntilTheThreadCountsAgain)
{
    const CTemporaryFolder folder;
    auto first = std::make_unique<CProbe>(CopyProbe(folder / "first"));
    const CProbe second(CopyProbe(folder / "second"));
    const std::uint32_t index = second.Index();
    std::thread([&first] { first.reset(); }).join();
    EXPECT_EQ(static_cast<const void*>(_dyld_get_image_header(index)), second.Header());
    EXPECT_EQ(std::string(_dyld_get_image_name(index)), folder / "second");
    EXPECT_EQ(second.Index(), index - 1) << "counted again";
}

TEST(Images, TheListMayBeReadWhileOthersLoad)
{
    const CTemporaryFolder folder;
    const std::string path = CopyProbe(folder / "probe");
    std::thread loader([&path] {
        for (int round = 0; round < 200; ++round)
            const CProbe probe(path);
    });
    for (int round = 0; round < 200; ++round) {
        for (std::uint32_t index = 0; index < _dyld_image_count(); ++index) {
            (void)_dyld_get_image_header(index);
            (void)_dyld_get_image_name(index);
        }
    }
    loader.join();
    EXPECT_NE(_dyld_get_image_name(0), nullptr);
}
