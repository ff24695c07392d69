// tests/corefoundation/BundleTest.cpp
//
// Bundles: one object for one folder, and where resources are found.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "tests/support/Owner.h"

namespace {

Owner<CFURLRef> OfPath(const std::string& path, bool isDirectory = false)
{
    return Own(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                       static_cast<CFIndex>(path.size()), isDirectory));
}

Owner<CFBundleRef> Open(const std::string& path, bool isDirectory = false)
{
    return Own(CFBundleCreate(nullptr, OfPath(path, isDirectory).get()));
}

std::string TextOf(CFURLRef url)
{
    return TextOf(CFURLGetString(Own(url).get()));
}

std::string PathOf(CFURLRef url)
{
    char buffer[4096] = "";
    const auto owner = Own(url);
    return CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8*>(buffer), sizeof buffer) ? buffer : "";
}

// A bundle whose resources can be named; answers are told relative to its resources folder.
class CMadeBundle {
public:
    CMadeBundle() { std::filesystem::create_directories(Resources()); }

    std::string Path() const { return m_folder / "Made.bundle"; }
    std::string Resources() const { return Path() + "/Contents/Resources"; }
    void Add(const std::string& name) const { WriteFile(Resources() + "/" + name, ""); }
    std::string Find(const char* name, const char* type, const char* folder = nullptr) const
    {
        const auto string = [](const char* text) {
            return Own(text ? MakeString(text) : nullptr);
        };
        const std::string path = PathOf(
            CFBundleCopyResourceURL(Open(Path()).get(), string(name).get(), string(type).get(), string(folder).get()));
        return path.empty() ? "" : path.substr(Resources().size() + 1);
    }

private:
    CTemporaryFolder m_folder;
};

} // namespace

TEST(Bundle, NeedsAFolderAndNothingInIt)
{
    const CTemporaryFolder folder;
    WriteFile(folder / "file", "");
    EXPECT_FALSE(Open(folder / "file"));
    EXPECT_FALSE(Open(folder / "file", true));
    EXPECT_FALSE(Open(folder / "none"));
    EXPECT_TRUE(Open(folder.Path()));
    EXPECT_EQ(CFBundleCreate(nullptr, nullptr), nullptr);
    const auto web = Own(CFURLCreateWithString(nullptr, CFSTR("http://a/"), nullptr));
    EXPECT_EQ(CFBundleCreate(nullptr, web.get()), nullptr);
}

TEST(Bundle, ItsUrlIsADirectoryUrlHoweverItWasOpened)
{
    const CMadeBundle made;
    const std::string expected = TextOf(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(made.Path().data()), static_cast<CFIndex>(made.Path().size()), true));
    EXPECT_EQ(expected.back(), '/');
    EXPECT_EQ(TextOf(CFBundleCopyBundleURL(Open(made.Path()).get())), expected);
    EXPECT_EQ(TextOf(CFBundleCopyBundleURL(Open(made.Path(), true).get())), expected);
    EXPECT_EQ(TextOf(CFBundleCopyBundleURL(Open(made.Path() + "/", false).get())), expected);
    EXPECT_EQ(TextOf(CFBundleCopyBundleURL(Open(made.Path() + "//", true).get())), expected);
}

TEST(Bundle, OneFolderHasOneObject)
{
    const CMadeBundle made;
    const auto first = Open(made.Path());
    const auto second = Open(made.Path() + "/", true);
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(CFGetRetainCount(first.get()), 2);
    EXPECT_EQ(CFGetTypeID(first.get()), CFBundleGetTypeID());
}

TEST(Bundle, AnotherFolderOfTheSameNameIsAnotherBundle)
{
    const CMadeBundle made;
    const auto first = Open(made.Path());
    std::filesystem::rename(made.Path(), made.Path() + ".old");
    std::filesystem::create_directory(made.Path());
    const auto second = Open(made.Path());
    ASSERT_TRUE(second);
    EXPECT_NE(first.get(), second.get());
}

TEST(Bundle, OpensFromManyThreadsAtOnce)
{
    const CMadeBundle made;
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&made] {
            for (int round = 0; round < 500; ++round) {
                const auto bundle = Open(made.Path());
                ASSERT_TRUE(bundle);
                ASSERT_FALSE(PathOf(CFBundleCopyBundleURL(bundle.get())).empty());
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Bundle, TheRelativePathOfAFolderServes)
{
    const CMadeBundle made;
    const int code = RunInChild([&made] {
        if (chdir((made.Path() + "/..").c_str()) != 0)
            return 1;
        const auto bundle = Open("Made.bundle");
        EXPECT_TRUE(bundle);
        if (chdir("/") != 0)
            return 1;
        EXPECT_EQ(PathOf(CFBundleCopyBundleURL(bundle.get())), made.Path());
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(Resources, UnlocalisedOnesComeFirst)
{
    const CMadeBundle made;
    made.Add("a.txt");
    made.Add("de.lproj/a.txt");
    const CEnvironment lang("LANG", "de_DE.UTF-8");
    EXPECT_EQ(made.Find("a", "txt"), "a.txt");
}

TEST(Resources, TheUsersLanguagesHaveTheirOrder)
{
    const CMadeBundle made;
    for (const char* const folder : {"de.lproj", "fr.lproj", "English.lproj", "Base.lproj"})
        made.Add(std::string(folder) + "/a.txt");
    made.Add("Base.lproj/b.txt");
    made.Add("de_AT.lproj/c.txt");
    made.Add("German.lproj/d.txt");
    EXPECT_EQ(made.Find("a", "txt"), "English.lproj/a.txt");
    EXPECT_EQ(made.Find("b", "txt"), "Base.lproj/b.txt");
    EXPECT_EQ(made.Find("c", "txt"), "");
    const CEnvironment lang("LANG", "de_AT.UTF-8");
    EXPECT_EQ(made.Find("a", "txt"), "de.lproj/a.txt");
    EXPECT_EQ(made.Find("c", "txt"), "de_AT.lproj/c.txt");
    EXPECT_EQ(made.Find("d", "txt"), "German.lproj/d.txt");
    const CEnvironment messages("LC_MESSAGES", "it_IT");
    EXPECT_EQ(made.Find("a", "txt"), "English.lproj/a.txt");
    const CEnvironment all("LC_ALL", "de");
    EXPECT_EQ(made.Find("a", "txt"), "de.lproj/a.txt");
    const CEnvironment list("LANGUAGE", "fr:de");
    EXPECT_EQ(made.Find("a", "txt"), "fr.lproj/a.txt");
}

TEST(Resources, SubFoldersHaveOneOrMoreLevels)
{
    const CMadeBundle made;
    made.Add("Help/VST/index.html");
    made.Add("de.lproj/Help/VST/page.html");
    EXPECT_EQ(made.Find("index", "html", "Help/VST"), "Help/VST/index.html");
    EXPECT_EQ(made.Find("VST", nullptr, "Help"), "Help/VST");
    EXPECT_EQ(made.Find("index", "html"), "");
    EXPECT_EQ(made.Find("index", "html", "Help"), "");
    const CEnvironment lang("LANG", "de");
    EXPECT_EQ(made.Find("page", "html", "Help/VST"), "de.lproj/Help/VST/page.html");
}

TEST(Resources, TypesMayBeMissingOrEmpty)
{
    const CMadeBundle made;
    made.Add("plain");
    made.Add("a.b.c");
    EXPECT_EQ(made.Find("plain", nullptr), "plain");
    EXPECT_EQ(made.Find("plain", ""), "plain");
    EXPECT_EQ(made.Find("a.b", "c"), "a.b.c");
    EXPECT_EQ(made.Find("a.b.c", nullptr), "a.b.c");
    EXPECT_EQ(made.Find("", nullptr), "");
    EXPECT_EQ(made.Find(nullptr, nullptr), "");
    EXPECT_EQ(made.Find("plain", "txt"), "");
    EXPECT_EQ(CFBundleCopyResourceURL(nullptr, CFSTR("a"), nullptr, nullptr), nullptr);
}

TEST(Resources, FoldersAnswerDirectoryUrls)
{
    const CMadeBundle made;
    made.Add("Help/a");
    const auto bundle = Open(made.Path());
    EXPECT_EQ(TextOf(CFBundleCopyResourceURL(bundle.get(), CFSTR("Help"), nullptr, nullptr)).back(), '/');
    EXPECT_EQ(PathOf(CFBundleCopyResourcesDirectoryURL(bundle.get())), made.Resources());
    EXPECT_EQ(TextOf(CFBundleCopyResourcesDirectoryURL(bundle.get())).back(), '/');
    std::filesystem::remove_all(made.Resources());
    EXPECT_EQ(CFBundleCopyResourcesDirectoryURL(bundle.get()), nullptr);
    EXPECT_EQ(CFBundleCopyResourcesDirectoryURL(nullptr), nullptr);
}

TEST(BundleInformation, IsReadOnceAndOnlyWhenSound)
{
    const CMadeBundle made;
    EXPECT_EQ(CFBundleGetInfoDictionary(Open(made.Path()).get()), nullptr);
    WriteFile(made.Path() + "/Contents/Info.plist", "<plist><array/></plist>");
    EXPECT_EQ(CFBundleGetInfoDictionary(Open(made.Path()).get()), nullptr) << "no dictionary";
    WriteFile(made.Path() + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>code</string></dict>");
    EXPECT_EQ(CFBundleGetInfoDictionary(Open(made.Path()).get()), nullptr) << "cut off";
    WriteFile(made.Path() + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>code</string></dict></plist>");
    const auto bundle = Open(made.Path());
    const CFDictionaryRef information = CFBundleGetInfoDictionary(bundle.get());
    ASSERT_NE(information, nullptr);
    EXPECT_EQ(CFBundleGetInfoDictionary(bundle.get()), information);
    EXPECT_EQ(TextOf(static_cast<CFStringRef>(CFDictionaryGetValue(information, CFSTR("CFBundleExecutable")))), "code");
    EXPECT_EQ(CFBundleGetInfoDictionary(nullptr), nullptr);
}

TEST(BundleExecutable, IsTheNamedOneOrTheBundlesOwnName)
{
    const CMadeBundle made;
    EXPECT_EQ(CFBundleCopyExecutableURL(Open(made.Path()).get()), nullptr);
    WriteFile(made.Path() + "/Contents/MacOS/Made", "no code");
    EXPECT_EQ(PathOf(CFBundleCopyExecutableURL(Open(made.Path()).get())), made.Path() + "/Contents/MacOS/Made");
    EXPECT_FALSE(CFBundleLoadExecutable(Open(made.Path()).get()));
    EXPECT_EQ(CFBundleGetFunctionPointerForName(Open(made.Path()).get(), CFSTR("f")), nullptr);
    WriteFile(made.Path() + "/Contents/MacOS/code", "");
    WriteFile(made.Path() + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>code</string></dict></plist>");
    EXPECT_EQ(PathOf(CFBundleCopyExecutableURL(Open(made.Path()).get())), made.Path() + "/Contents/MacOS/code");
    WriteFile(made.Path() + "/Contents/Info.plist",
              "<plist><dict><key>CFBundleExecutable</key><string>../../x</string></dict></plist>");
    EXPECT_EQ(PathOf(CFBundleCopyExecutableURL(Open(made.Path()).get())), made.Path() + "/Contents/MacOS/Made")
        << "a name that leads elsewhere does not count";
    EXPECT_EQ(CFBundleCopyExecutableURL(nullptr), nullptr);
    EXPECT_FALSE(CFBundleLoadExecutable(nullptr));
    CFBundleUnloadExecutable(nullptr);
}

TEST(BundleExecutable, LoadsAndFindsFunctionsAndUnloads)
{
    const auto bundle = Open(BuiltBundle());
    ASSERT_TRUE(bundle);
    EXPECT_TRUE(CFBundleLoadExecutable(bundle.get()));
    EXPECT_TRUE(CFBundleLoadExecutable(bundle.get())) << "it is loaded";
    const auto factory = reinterpret_cast<GetLibProductManagerProc>(
        CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("GetLibProductManager")));
    ASSERT_NE(factory, nullptr);
    EXPECT_NE(factory(), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("no such function")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), nullptr), nullptr);
    CFBundleUnloadExecutable(bundle.get());
    CFBundleUnloadExecutable(bundle.get());
    EXPECT_NE(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("GetLibProductManager")), nullptr) << "loads again";
    CFBundleUnloadExecutable(bundle.get());
}

TEST(MainBundle, IsTheProgramsFolder)
{
    const CFBundleRef bundle = CFBundleGetMainBundle();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(CFBundleGetMainBundle(), bundle);
    EXPECT_EQ(PathOf(CFBundleCopyBundleURL(bundle)),
              std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
}
