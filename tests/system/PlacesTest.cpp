// tests/system/PlacesTest.cpp
//
// The bundle is complete in itself: wherever it is copied, moved or linked to, it loads and finds
// itself. The loader program is a process of its own, so that nothing of ours is loaded before.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "tests/support/Owner.h"

namespace {

std::string CopyBundle(const std::string& to)
{
    std::filesystem::create_directories(std::filesystem::path(to).parent_path());
    std::filesystem::copy(BuiltBundle(), to, std::filesystem::copy_options::recursive);
    return to;
}

std::string OwnPlace(const CLoadedBundle& bundle)
{
    char path[4096] = "";
    return bundle.Manager() && bundle.Manager()->GetResourcesBundlePath(path, sizeof path) ? path : "(none)";
}

// The files mapped into this process whose names hold `part`.
std::set<std::string> MappedFiles(const std::string& part)
{
    std::set<std::string> files;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos && line.find(part, path) != std::string::npos)
            files.insert(line.substr(path));
    }
    return files;
}

std::string IdentityOf(const std::string& tool)
{
    const ProgramResult result = RunProgram({tool, "identity"});
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out;
}

} // namespace

TEST(Places, AnyFolderServes)
{
    const CTemporaryFolder folder;
    for (const char* const name :
         {"plain", "with blanks", "umlaut \xC3\xA4", "#1 100% ?", "no UTF-8 \xFF", "quote'\""}) {
        const std::string path = CopyBundle(folder / (std::string(name) + "/Quillets.bundle"));
        const CLoadedBundle bundle(path);
        ASSERT_TRUE(bundle) << path << dlerror();
        EXPECT_EQ(OwnPlace(bundle), path);
    }
}

TEST(Places, TheNameOfTheBundleFolderDoesNotMatter)
{
    const CTemporaryFolder folder;
    const CLoadedBundle bundle(CopyBundle(folder / "Renamed"));
    EXPECT_EQ(OwnPlace(bundle), folder / "Renamed");
}

TEST(Places, AMovedBundleIsFoundAtItsNewPlaceWithItsResources)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "old/Quillets.bundle");
    WriteFile(folder / "old/Quillets.bundle/Contents/Resources/probe.txt", "");
    const CLoadedBundle bundle(folder / "old/Quillets.bundle");
    ASSERT_TRUE(bundle);
    const auto opened = Own(CFBundleCreate(
        nullptr, Own(CFURLCreateWithFileSystemPath(nullptr, Own(MakeString(folder / "old/Quillets.bundle")).get(),
                                                   kCFURLPOSIXPathStyle, true))
                     .get()));
    std::filesystem::rename(folder / "old", folder / "new");
    EXPECT_EQ(OwnPlace(bundle), folder / "new/Quillets.bundle");
    const auto resource = Own(CFBundleCopyResourceURL(opened.get(), CFSTR("probe"), CFSTR("txt"), nullptr));
    EXPECT_TRUE(resource) << "opened before the move";
    EXPECT_EQ(bundle.Manager()->Init(nullptr, nullptr), 1);
    EXPECT_EQ(OwnPlace(bundle), folder / "new/Quillets.bundle");
}

TEST(Places, ASymbolicLinkServes)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "real/Quillets.bundle");
    std::filesystem::create_directory_symlink(folder / "real/Quillets.bundle", folder / "Link.bundle");
    const CLoadedBundle bundle(folder / "Link.bundle");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(std::filesystem::canonical(OwnPlace(bundle)), folder / "real/Quillets.bundle");
}

TEST(Places, ARelativePathServesAlsoWhenTheWorkingFolderChanges)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "Quillets.bundle");
    const int code = RunInChild([&folder] {
        if (chdir(folder.Path().c_str()) != 0)
            return 1;
        const CLoadedBundle bundle("./Quillets.bundle");
        EXPECT_TRUE(bundle);
        EXPECT_EQ(OwnPlace(bundle), folder / "Quillets.bundle");
        if (chdir("/") != 0)
            return 1;
        EXPECT_EQ(OwnPlace(bundle), folder / "Quillets.bundle");
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(Places, FourCopiesLiveBesideEachOtherWithOneLayer)
{
    const CTemporaryFolder folder;
    std::vector<std::unique_ptr<CLoadedBundle>> bundles;
    std::set<IProductManager*> managers;
    for (const char* const name : {"a", "b", "c", "d"}) {
        const std::string path = CopyBundle(folder / (std::string(name) + "/Quillets.bundle"));
        bundles.push_back(std::make_unique<CLoadedBundle>(path));
        ASSERT_TRUE(*bundles.back());
        managers.insert(bundles.back()->Manager());
    }
    EXPECT_EQ(managers.size(), 4U) << "each copy has an object of its own";
    const char* const kNames[] = {"a", "b", "c", "d"};
    for (std::size_t index = 0; index < bundles.size(); ++index)
        EXPECT_EQ(OwnPlace(*bundles[index]), folder / (std::string(kNames[index]) + "/Quillets.bundle"));
    EXPECT_EQ(MappedFiles("libcvplatform.so.1").size(), 1U) << "the layer that was there serves all";
    bundles.erase(bundles.begin());
    EXPECT_EQ(OwnPlace(*bundles.front()), folder / "b/Quillets.bundle");
}

// A program without the layer takes the bundle's own copy.
TEST(Places, TheBundleBringsItsLayer)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "x y/Quillets.bundle");
    const ProgramResult result = RunProgram({CV_LOADER, folder / "x y/Quillets.bundle/Contents/MacOS/Quillets"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find(folder / "x y/Quillets.bundle/Contents/MacOS/../Frameworks/libcvplatform.so.1"),
              std::string::npos)
        << result.out;
}

TEST(Places, LoadingMapsFewLibrariesAndStartsNothing)
{
    const ProgramResult result = RunProgram({CV_LOADER, BuiltBundle() + "/Contents/MacOS/Quillets"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("threads 1\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("descriptors 0\n"), std::string::npos) << result.out;
    int libraries = 0;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
        libraries += line.rfind("library ", 0) == 0 ? 1 : 0;
    if (!CV_SANITIZED) {
        EXPECT_GE(libraries, 2) << result.out;
        EXPECT_LE(libraries, 5) << result.out;
    }
}

TEST(Places, LoadingTouchesNoDisplay)
{
    // A display that anybody could connect to, and nobody does.
    const CTemporaryFolder folder;
    const std::string path = folder / "display";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(server, 8), 0);
    const CEnvironment display("DISPLAY", ("unix:" + path).c_str());
    const ProgramResult result = RunProgram({CV_LOADER, BuiltBundle() + "/Contents/MacOS/Quillets"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(accept(server, nullptr, nullptr), -1);
    close(server);
    for (const char* const library : {"libcvplatform-", "libxcb", "libX", "libxkbcommon", "libcairo", "libpango",
                                      "libgdk", "libglib", "libgio", "libgobject", "libwayland", "libfontconfig"})
        EXPECT_EQ(result.out.find(library), std::string::npos) << result.out;
}

TEST(Places, TheToolFindsTheBundleBesideIt)
{
    const CTemporaryFolder folder;
    CopyBundle(folder / "Quillets.bundle");
    std::filesystem::copy_file(BuiltTool(), folder / "quillets");
    std::filesystem::copy_file(CV_BUILD_DIR "/libcvplatform.so.1", folder / "libcvplatform.so.1");
    EXPECT_NE(IdentityOf(folder / "quillets").find(folder / "Quillets.bundle"), std::string::npos);
}
