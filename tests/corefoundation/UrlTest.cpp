// tests/corefoundation/UrlTest.cpp
//
// URLs and paths: RFC 3986 for what URLs mean, the Mac's habits for what file URLs look like.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/Owner.h"

namespace {

Owner<CFURLRef> OfPath(const std::string& path, bool isDirectory = false)
{
    return Own(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                       static_cast<CFIndex>(path.size()), isDirectory));
}

Owner<CFURLRef> OfText(const std::string& text, CFURLRef base = nullptr)
{
    return Own(CFURLCreateWithString(nullptr, Own(MakeString(text)).get(), base));
}

std::string TextOf(CFURLRef url)
{
    return TextOf(CFURLGetString(url));
}

std::string PathOf(CFURLRef url, bool resolve = true)
{
    char buffer[512] = "";
    return CFURLGetFileSystemRepresentation(url, resolve, reinterpret_cast<UInt8*>(buffer), sizeof buffer) ? buffer
                                                                                                           : "(none)";
}

std::string Parent(const std::string& text)
{
    return TextOf(Own(CFURLCreateCopyDeletingLastPathComponent(nullptr, OfText(text).get())).get());
}

std::string Appended(const std::string& text, const std::string& component, bool isDirectory = false)
{
    return TextOf(Own(CFURLCreateCopyAppendingPathComponent(nullptr, OfText(text).get(),
                                                            Own(MakeString(component)).get(), isDirectory))
                      .get());
}

std::string Resolved(const std::string& base, const std::string& reference)
{
    const auto baseUrl = OfText(base);
    const auto url = OfText(reference, baseUrl.get());
    return TextOf(Own(CFURLCopyAbsoluteURL(url.get())).get());
}

SInt32 ReadError(CFURLRef url)
{
    CFDataRef data = nullptr;
    SInt32 error = 1;
    const bool read = CFURLCreateDataAndPropertiesFromResource(nullptr, url, &data, nullptr, nullptr, &error);
    EXPECT_EQ(read, error == 0);
    EXPECT_EQ(read, data != nullptr);
    CFRelease(data);
    return error;
}

} // namespace

TEST(Url, PathsAreEscapedAndComeBack)
{
    const struct {
        const char* path;
        const char* text;
    } cases[] = {
        {"/a/b", "file://localhost/a/b"},
        {"/with space", "file://localhost/with%20space"},
        {"/100%/#1?", "file://localhost/100%25/%231%3F"},
        {"/\xC3\xA9", "file://localhost/%C3%A9"},
        {"/\xFF\x01", "file://localhost/%FF%01"},
        {"/a:b;c[d]", "file://localhost/a%3Ab%3Bc%5Bd%5D"},
        {"/%41", "file://localhost/%2541"},
        {"/a-._~", "file://localhost/a-._~"},
        {"/", "file://localhost/"},
        {"/a//b", "file://localhost/a//b"},
    };
    for (const auto& item : cases) {
        const auto url = OfPath(item.path);
        EXPECT_EQ(TextOf(url.get()), item.text);
        EXPECT_EQ(PathOf(url.get()), item.path);
    }
}

TEST(Url, EveryByteOfAPathSurvives)
{
    for (int code = 1; code < 256; ++code) {
        const std::string path = "/x" + std::string(1, static_cast<char>(code)) + "y";
        const auto url = OfPath(path);
        ASSERT_TRUE(url) << code;
        EXPECT_EQ(PathOf(url.get()), path);
        EXPECT_TRUE(OfText(TextOf(url.get()))) << "the text is a URL: " << TextOf(url.get());
    }
}

TEST(Url, DirectoriesEndInASlashAndTheirPathsDoNot)
{
    EXPECT_EQ(TextOf(OfPath("/a", true).get()), "file://localhost/a/");
    EXPECT_EQ(TextOf(OfPath("/a/", true).get()), "file://localhost/a/");
    EXPECT_EQ(TextOf(OfPath("/a//", false).get()), "file://localhost/a");
    EXPECT_EQ(TextOf(OfPath("/", true).get()), "file://localhost/");
    EXPECT_EQ(TextOf(OfPath("/", false).get()), "file://localhost/");
    EXPECT_EQ(PathOf(OfPath("/a/", true).get()), "/a");
    EXPECT_EQ(PathOf(OfPath("/", true).get()), "/");
    EXPECT_TRUE(CFURLHasDirectoryPath(OfPath("/a", true).get()));
    EXPECT_FALSE(CFURLHasDirectoryPath(OfPath("/a").get()));
    EXPECT_FALSE(CFURLHasDirectoryPath(nullptr));
}

TEST(Url, EmptyPathsAndPathsWithANulAreRefused)
{
    EXPECT_FALSE(OfPath(""));
    EXPECT_FALSE(OfPath(std::string("/a\0b", 4)));
    EXPECT_FALSE(OfPath(std::string("a\0b", 3)));
    EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 1, false), nullptr);
    EXPECT_EQ(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>("/a"), -1, false),
              nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false), nullptr);
}

TEST(Url, RelativePathsAreBasedOnTheWorkingFolder)
{
    const CTemporaryFolder folder;
    const int code = RunInChild([&folder] {
        if (chdir(folder.Path().c_str()) != 0)
            return 1;
        const auto url = OfPath("a b/c");
        if (chdir("/") != 0) // where it was made counts
            return 1;
        EXPECT_EQ(TextOf(url.get()), "a%20b/c");
        EXPECT_EQ(PathOf(url.get(), false), "a b/c");
        EXPECT_EQ(PathOf(url.get()), folder / "a b/c");
        EXPECT_EQ(PathOf(CFURLGetBaseURL(url.get())), folder.Path());
        const auto absolute = Own(CFURLCopyAbsoluteURL(url.get()));
        EXPECT_EQ(CFURLGetBaseURL(absolute.get()), nullptr);
        EXPECT_EQ(PathOf(absolute.get()), folder / "a b/c");
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(Url, RelativePathsOfAVanishedFolderAreRefused)
{
    const CTemporaryFolder folder;
    const int code = RunInChild([&folder] {
        const std::string gone = folder / "gone";
        if (mkdir(gone.c_str(), 0700) != 0 || chdir(gone.c_str()) != 0 || rmdir(gone.c_str()) != 0)
            return 1;
        EXPECT_FALSE(OfPath("a"));
        return 0;
    });
    EXPECT_EQ(code, 0);
}

TEST(Url, ColonsInRelativePathsAreNoScheme)
{
    const auto url = OfPath("http:x");
    EXPECT_EQ(PathOf(url.get(), false), "http:x");
}

TEST(Url, BuffersAreBounded)
{
    const auto url = OfPath("/abc");
    char buffer[8] = "xxxxxxx";
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(buffer), 4));
    EXPECT_STREQ(buffer, "xxxxxxx");
    EXPECT_TRUE(CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(buffer), 5));
    EXPECT_STREQ(buffer, "/abc");
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(buffer), 0));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(buffer), -1));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), true, nullptr, 8));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(nullptr, true, reinterpret_cast<UInt8*>(buffer), 8));
}

TEST(Url, OnlyLocalFileUrlsHavePaths)
{
    EXPECT_EQ(PathOf(OfText("file:///a%20b/").get()), "/a b");
    EXPECT_EQ(PathOf(OfText("file:/a").get()), "/a");
    EXPECT_EQ(PathOf(OfText("file://localhost/a").get()), "/a");
    EXPECT_EQ(PathOf(OfText("FILE://LOCALHOST/a").get()), "/a") << "neither minds its case";
    EXPECT_EQ(PathOf(OfText("file://elsewhere/a").get()), "(none)");
    EXPECT_EQ(PathOf(OfText("http://localhost/a").get()), "(none)");
    EXPECT_EQ(PathOf(OfText("file:///a%00b").get()), "(none)");
    EXPECT_EQ(PathOf(OfText("file:///a?query#fragment").get()), "/a");
}

TEST(Url, FileSystemPathsAreStrings)
{
    EXPECT_EQ(TextOf(Own(CFURLCopyFileSystemPath(OfPath("/\xC3\xA9/", true).get(), kCFURLPOSIXPathStyle)).get()),
              "/\xC3\xA9");
    EXPECT_EQ(CFURLCopyFileSystemPath(OfPath("/\xFF").get(), kCFURLPOSIXPathStyle), nullptr) << "no UTF-8";
    EXPECT_EQ(CFURLCopyFileSystemPath(OfText("http://a/b").get(), kCFURLPOSIXPathStyle), nullptr);
    EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, kCFURLPOSIXPathStyle), nullptr);
    const auto url = Own(CFURLCreateWithFileSystemPath(nullptr, CFSTR("/a b"), kCFURLPOSIXPathStyle, true));
    EXPECT_EQ(TextOf(url.get()), "file://localhost/a%20b/");
}

TEST(Url, DeletingTheLastComponentLeavesADirectory)
{
    EXPECT_EQ(Parent("file://localhost/a/b/c"), "file://localhost/a/b/");
    EXPECT_EQ(Parent("file://localhost/a/b/"), "file://localhost/a/");
    EXPECT_EQ(Parent("file://localhost/a"), "file://localhost/");
    EXPECT_EQ(Parent("file://localhost/"), "file://localhost/");
    EXPECT_EQ(Parent("file://localhost/a%2Fb/c"), "file://localhost/a%2Fb/");
    EXPECT_EQ(Parent("http://h/a/b?q#f"), "http://h/a/");
    EXPECT_EQ(Parent("http://h"), "(null)");
    EXPECT_EQ(Parent("mailto:a@b"), "(null)");
    EXPECT_EQ(CFURLCreateCopyDeletingLastPathComponent(nullptr, nullptr), nullptr);
    const auto base = OfPath("/base", true);
    const auto relative = OfText("a", base.get());
    const auto parent = Own(CFURLCreateCopyDeletingLastPathComponent(nullptr, relative.get()));
    EXPECT_EQ(PathOf(parent.get()), "/base/.");
}

TEST(Url, AppendingEscapesTheComponent)
{
    EXPECT_EQ(Appended("file://localhost/a", "b c#"), "file://localhost/a/b%20c%23");
    EXPECT_EQ(Appended("file://localhost/a/", "b", true), "file://localhost/a/b/");
    EXPECT_EQ(Appended("file://localhost/", "b/c"), "file://localhost/b/c");
    EXPECT_EQ(Appended("http://h/a?q#f", "b"), "http://h/a/b");
    EXPECT_EQ(Appended("http://h", "b"), "http://h/b");
    EXPECT_EQ(Appended("file://localhost/a", ""), "(null)");
    EXPECT_EQ(Appended("file://localhost/a", std::string("b\0c", 3)), "(null)");
    EXPECT_EQ(Appended("mailto:a@b", "c"), "(null)");
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, CFSTR("a"), false), nullptr);
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, OfPath("/a").get(), nullptr, false), nullptr);
}

TEST(Url, TextsThatAreNoUrlsAreRefused)
{
    for (const char* const text :
         {"", "a b", "http://a/%", "http://a/%4", "http://a/%zz", "http://a/<b>", "http://a/\"", "http://\xC3\xA9/",
          "http://a/#b#c", "1a:b", ":b", "http://a/[b]", "a\x7F", "a\\b"})
        EXPECT_FALSE(OfText(text)) << text;
    EXPECT_FALSE(OfText(std::string("a\0b", 3)));
    EXPECT_EQ(CFURLCreateWithString(nullptr, nullptr, nullptr), nullptr);
    for (const char* const text :
         {"http://a/", "a/b:c", "mailto:a@b.c", "http://[::1]:8/x", "?q", "#f", "//h/p", "x-a+b.c:y"})
        EXPECT_TRUE(OfText(text)) << text;
}

// RFC 3986, 5.4: the examples, word for word.
TEST(Url, ResolvesTheExamplesOfTheStandard)
{
    const struct {
        const char* reference;
        const char* result;
    } cases[] = {
        {"g:h", "g:h"},
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"g#s", "http://a/b/c/g#s"},
        {"g?y#s", "http://a/b/c/g?y#s"},
        {";x", "http://a/b/c/;x"},
        {"g;x", "http://a/b/c/g;x"},
        {"g;x?y#s", "http://a/b/c/g;x?y#s"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"./", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../..", "http://a/"},
        {"../../", "http://a/"},
        {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"},
        {"../../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."},
        {".g", "http://a/b/c/.g"},
        {"g..", "http://a/b/c/g.."},
        {"..g", "http://a/b/c/..g"},
        {"./../g", "http://a/b/g"},
        {"./g/.", "http://a/b/c/g/"},
        {"g/./h", "http://a/b/c/g/h"},
        {"g/../h", "http://a/b/c/h"},
        {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/./x", "http://a/b/c/g?y/./x"},
        {"g?y/../x", "http://a/b/c/g?y/../x"},
        {"g#s/./x", "http://a/b/c/g#s/./x"},
        {"g#s/../x", "http://a/b/c/g#s/../x"},
        {"http:g", "http:g"},
    };
    for (const auto& item : cases)
        EXPECT_EQ(Resolved("http://a/b/c/d;p?q", item.reference), item.result) << item.reference;
    EXPECT_EQ(Resolved("http://a", "g"), "http://a/g");
}

TEST(Url, LongChainsOfBasesResolve)
{
    auto url = OfText("http://a/");
    for (int level = 0; level < 50; ++level)
        url = OfText("b/", url.get());
    EXPECT_EQ(TextOf(Own(CFURLCopyAbsoluteURL(url.get())).get()).size(), std::strlen("http://a/") + 100);
}

TEST(Url, EqualUrlsHaveEqualHashes)
{
    EXPECT_TRUE(CFEqual(OfPath("/a").get(), OfText("file://localhost/a").get()));
    EXPECT_EQ(CFHash(OfPath("/a").get()), CFHash(OfText("file://localhost/a").get()));
    EXPECT_FALSE(CFEqual(OfPath("/a").get(), OfPath("/a", true).get()));
    const auto base = OfPath("/base", true);
    EXPECT_FALSE(CFEqual(OfText("a").get(), OfText("a", base.get()).get()));
    EXPECT_TRUE(CFEqual(OfText("a", base.get()).get(), OfText("a", base.get()).get()));
}

TEST(Url, SchemesAreToldWhereThereAreAny)
{
    EXPECT_EQ(TextOf(Own(CFURLCopyScheme(OfText("http://a/").get())).get()), "http");
    EXPECT_EQ(CFURLCopyScheme(OfText("a/b").get()), nullptr);
    const auto base = OfText("https://a/");
    EXPECT_EQ(TextOf(Own(CFURLCopyScheme(OfText("b", base.get()).get())).get()), "https");
    EXPECT_EQ(CFURLCopyScheme(nullptr), nullptr);
}

TEST(Url, ReadsAFileWhole)
{
    const CTemporaryFolder folder;
    const std::string path = folder / "a #1 100%.txt";
    const std::string content("line\0line\n", 10);
    WriteFile(path, content);
    CFDataRef data = nullptr;
    CFDictionaryRef properties = reinterpret_cast<CFDictionaryRef>(1);
    SInt32 error = 1;
    ASSERT_TRUE(
        CFURLCreateDataAndPropertiesFromResource(nullptr, OfPath(path).get(), &data, &properties, nullptr, &error));
    const auto owner = Own(data);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                          static_cast<std::size_t>(CFDataGetLength(data))),
              content);
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(
        CFURLCreateDataAndPropertiesFromResource(nullptr, OfPath(path).get(), nullptr, nullptr, nullptr, nullptr));
}

TEST(Url, ReadingTellsWhatFailed)
{
    const CTemporaryFolder folder;
    EXPECT_EQ(ReadError(OfPath(folder / "none").get()), kCFURLResourceNotFoundError);
    WriteFile(folder / "file", "");
    EXPECT_EQ(ReadError(OfPath(folder / "file/below").get()), kCFURLResourceNotFoundError);
    EXPECT_EQ(ReadError(OfPath(folder / "file").get()), 0) << "empty is fine";
    EXPECT_EQ(ReadError(OfPath(folder.Path(), true).get()), kCFURLUnknownError) << "a folder";
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(ReadError(OfPath(folder / "pipe").get()), kCFURLUnknownError) << "a pipe would block";
    EXPECT_EQ(ReadError(OfText("http://a/").get()), kCFURLUnknownSchemeError);
    EXPECT_EQ(ReadError(nullptr), kCFURLImproperArgumentsError);
    EXPECT_EQ(ReadError(OfPath(folder / std::string(5000, 'x')).get()), kCFURLUnknownError);
}
