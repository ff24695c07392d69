// tests/ui/HelpViewerTest.cpp
//
// Which page a topic opens, through the built bundle and up to the program that is started with it.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/launchservices/Viewers.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Words = std::vector<std::string>;

constexpr char kHelpFolder[] = "Quillets/VST";

// A copy of the built bundle with help pages of the test's own.
class CHelpBundle {
public:
    explicit CHelpBundle(const std::string& name = "Quillets.bundle") : m_path(m_folder / name)
    {
        std::filesystem::create_directories(m_path + "/Contents/MacOS");
        std::filesystem::create_directories(Page(""));
        std::filesystem::copy(BuiltBundle() + "/Contents/MacOS/Quillets", m_path + "/Contents/MacOS/Quillets");
    }

    const std::string& Path() const { return m_path; }
    std::string Page(const std::string& name, const std::string& folder = kHelpFolder) const
    {
        return m_path + "/Contents/Resources/" + folder + "/" + name;
    }
    void WriteMap(const std::string& pairs, const std::string& folder = kHelpFolder) const
    {
        WriteFile(Page("ContextMap.xml", folder), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                  "<plist version=\"1.0\"><dict>" +
                                                      pairs + "</dict></plist>\n");
    }

private:
    const CTemporaryFolder m_folder;
    const std::string m_path;
};

std::string Entry(const std::string& topic, const std::string& page)
{
    return "<key>" + topic + "</key><string>" + page + "</string>";
}

class HelpViewer : public testing::Test {
protected:
    HelpViewer() { viewers.Install("com.apple.HelpViewer", "%f"); }

    // What the viewer is started with, once for each time.
    std::vector<Words> Opened(const std::string& bundlePath, const std::function<void(IProductManager&)>& work)
    {
        std::vector<Words> all;
        for (const Visit& visit : viewers.VisitsOf([&] {
                 const CLoadedBundle loaded(bundlePath);
                 ASSERT_NE(loaded.Manager(), nullptr);
                 work(*loaded.Manager());
             }))
            all.push_back(visit.arguments);
        return all;
    }
    std::vector<Words> OpenedBy(unsigned topic) { return OpenedBy(bundle.Path(), topic); }
    std::vector<Words> OpenedBy(const std::string& bundlePath, unsigned topic)
    {
        return Opened(bundlePath, [topic](IProductManager& manager) { manager.OpenHelp(nullptr, topic); });
    }

    CViewers viewers;
    const CHelpBundle bundle;
};

TEST_F(HelpViewer, OpensTheListedPageFromTheMapsOwnFolder)
{
    WriteFile(bundle.Page("index.html"), "");
    WriteFile(bundle.Page("knobs.html"), "");
    bundle.WriteMap(Entry("300", "knobs.html") + Entry("30", "other.html"));
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs.html")}));
}

TEST_F(HelpViewer, OpensTheIndexForATopicThatIsNotListed)
{
    WriteFile(bundle.Page("index.html"), "");
    bundle.WriteMap(Entry("300", "knobs.html") + Entry("0301", "padded.html") + Entry("+301", "plus.html"));
    EXPECT_THAT(OpenedBy(301), ElementsAre(Words{bundle.Page("index.html")}));
}

TEST_F(HelpViewer, OpensTheIndexWhereTheMapsRootIsAnArray)
{
    WriteFile(bundle.Page("index.html"), "");
    WriteFile(bundle.Page("ContextMap.xml"), "<plist version=\"1.0\"><array><string>300</string></array></plist>");
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("index.html")}));
}

TEST_F(HelpViewer, OpensTheIndexWhereTheMapCannotBeRead)
{
    WriteFile(bundle.Page("index.html"), "");
    std::filesystem::create_directory(bundle.Page("ContextMap.xml"));
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("index.html")}));
}

TEST_F(HelpViewer, OpensTheIndexWhereTheMapIsMalformed)
{
    WriteFile(bundle.Page("index.html"), "");
    for (const char* text : {"", "<plist><dict><key>300</key>", "no list at all", "<plist></plist>"}) {
        WriteFile(bundle.Page("ContextMap.xml"), text);
        EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("index.html")})) << text;
    }
}

TEST_F(HelpViewer, OpensTheIndexWhereThereIsNoMap)
{
    WriteFile(bundle.Page("index.html"), "");
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("index.html")}));
}

TEST_F(HelpViewer, DoesNothingWithoutMapAndIndex)
{
    EXPECT_THAT(OpenedBy(300), IsEmpty());
}

TEST_F(HelpViewer, DoesNothingWithoutAHelpFolderOrResources)
{
    std::filesystem::remove_all(bundle.Path() + "/Contents/Resources");
    EXPECT_THAT(OpenedBy(300), IsEmpty());
}

TEST_F(HelpViewer, DoesNothingForAnUnlistedTopicWithoutAnIndex)
{
    bundle.WriteMap(Entry("300", "knobs.html"));
    EXPECT_THAT(OpenedBy(1), IsEmpty());
}

TEST_F(HelpViewer, OpensTheListedPageWithoutAnIndex)
{
    WriteFile(bundle.Page("knobs.html"), "");
    bundle.WriteMap(Entry("300", "knobs.html"));
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs.html")}));
}

TEST_F(HelpViewer, ReadsTopicsAsSignedNumbers)
{
    WriteFile(bundle.Page("index.html"), "");
    bundle.WriteMap(Entry("-1", "last.html") + Entry("-2147483648", "half.html") + Entry("2147483647", "most.html") +
                    Entry("0", "zero.html") + Entry("4294967295", "wrong.html"));
    EXPECT_THAT(OpenedBy(4294967295U), ElementsAre(Words{bundle.Page("last.html")}));
    EXPECT_THAT(OpenedBy(2147483648U), ElementsAre(Words{bundle.Page("half.html")}));
    EXPECT_THAT(OpenedBy(2147483647U), ElementsAre(Words{bundle.Page("most.html")}));
    EXPECT_THAT(OpenedBy(0), ElementsAre(Words{bundle.Page("zero.html")}));
}

TEST_F(HelpViewer, DoesNotLookAtTheWindow)
{
    bundle.WriteMap(Entry("300", "knobs.html"));
    const auto opened = Opened(
        bundle.Path(), [](IProductManager& manager) { manager.OpenHelp(reinterpret_cast<WindowRef>(0x123), 300); });
    EXPECT_THAT(opened, ElementsAre(Words{bundle.Page("knobs.html")}));
}

TEST_F(HelpViewer, ReadsTheMapAnewAtEveryCall)
{
    WriteFile(bundle.Page("index.html"), "");
    bundle.WriteMap(Entry("300", "old.html"));
    const auto opened = Opened(bundle.Path(), [this](IProductManager& manager) {
        manager.OpenHelp(nullptr, 300);
        bundle.WriteMap(Entry("300", "new.html"));
        manager.OpenHelp(nullptr, 300);
        std::filesystem::remove(bundle.Page("ContextMap.xml"));
        manager.OpenHelp(nullptr, 300);
    });
    EXPECT_THAT(opened, testing::UnorderedElementsAre(Words{bundle.Page("old.html")}, Words{bundle.Page("new.html")},
                                                      Words{bundle.Page("index.html")}));
}

TEST_F(HelpViewer, OpensAPageInASubFolder)
{
    bundle.WriteMap(Entry("300", "knobs/circular/drag.html"));
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs/circular/drag.html")}));
}

TEST_F(HelpViewer, TakesANumberSignForAPartOfThePagesName)
{
    viewers.Install("com.apple.HelpViewer", "%f %u");
    bundle.WriteMap(Entry("300", "knobs.html#drag"));
    EXPECT_THAT(OpenedBy(300),
                ElementsAre(Words{bundle.Page("knobs.html#drag"), "file://" + bundle.Page("knobs.html%23drag")}));
}

TEST_F(HelpViewer, OpensNothingForAnEmptyPageName)
{
    WriteFile(bundle.Page("index.html"), "");
    bundle.WriteMap(Entry("300", ""));
    EXPECT_THAT(OpenedBy(300), IsEmpty()); // an entry is there, but it gives no page
}

TEST_F(HelpViewer, TakesAValueThatIsNoStringForNoEntry)
{
    WriteFile(bundle.Page("index.html"), "");
    for (const char* value : {"<integer>7</integer>", "<true/>", "<array><string>a.html</string></array>",
                              "<dict><key>300</key><string>a.html</string></dict>", "<data>YS5odG1s</data>",
                              "<real>1.5</real>", "<date>2011-03-11T00:00:00Z</date>"}) {
        bundle.WriteMap("<key>300</key>" + std::string(value));
        EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("index.html")})) << value;
    }
}

TEST_F(HelpViewer, FindsOneOfAHundredThousandTopics)
{
    std::string pairs;
    for (int topic = 0; topic < 100000; ++topic)
        pairs += Entry(std::to_string(topic), "pages/" + std::to_string(topic) + ".html");
    bundle.WriteMap(pairs);
    EXPECT_THAT(OpenedBy(99999), ElementsAre(Words{bundle.Page("pages/99999.html")}));
}

TEST_F(HelpViewer, HandsEveryNameOverAsItIs)
{
    // What a shell, a URL, a command line or a desktop entry could take for something else.
    const std::string strange = "a b'c\"d$(touch x)`e`%20%u%f#g?h&i;j\\k|l*\xC3\xA4\xE6\x97\xA5\nm";
    const CHelpBundle odd(strange + ".bundle");
    const std::string folder = "Help " + strange;
    const std::string escaped = "a b'c\"d$(touch x)`e`%20%u%f#g?h&amp;i;j\\k|l*\xC3\xA4\xE6\x97\xA5\nm.html";
    odd.WriteMap(Entry("300", escaped), folder);
    const auto opened = Opened(odd.Path(), [&folder](IProductManager& manager) {
        manager.Init(nullptr, folder.c_str());
        manager.OpenHelp(nullptr, 300);
    });
    EXPECT_THAT(opened, ElementsAre(Words{odd.Page(strange + ".html", folder)}));
}

TEST_F(HelpViewer, PrefersTheUsersLanguage)
{
    const std::string german = std::string("de.lproj/") + kHelpFolder;
    const std::string english = std::string("en.lproj/") + kHelpFolder;
    bundle.WriteMap(Entry("300", "knobs.html"), german);
    bundle.WriteMap(Entry("300", "knobs.html"), english);
    {
        const CEnvironment locale("LANG", "de_AT.UTF-8");
        EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs.html", german)}));
        const CEnvironment list("LANGUAGE", "fr:en:de");
        EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs.html", english)}));
    }
    const CEnvironment locale("LANG", "ja_JP.UTF-8");
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{bundle.Page("knobs.html", english)}));
}

TEST_F(HelpViewer, ShipsThePageOfTheKnobOptionInTwoLanguages)
{
    const std::string resources = BuiltBundle() + "/Contents/Resources/";
    EXPECT_THAT(OpenedBy(BuiltBundle(), 300), ElementsAre(Words{resources + "en.lproj/Quillets/VST/knobs.html"}));
    EXPECT_THAT(OpenedBy(BuiltBundle(), 12345), ElementsAre(Words{resources + "en.lproj/Quillets/VST/index.html"}));
    const CEnvironment locale("LANG", "de_DE.UTF-8");
    EXPECT_THAT(OpenedBy(BuiltBundle(), 300), ElementsAre(Words{resources + "de.lproj/Quillets/VST/knobs.html"}));
}

TEST_F(HelpViewer, FallsBackToTheDefaultViewerForHtml)
{
    std::filesystem::remove(viewers.Entry("com.apple.HelpViewer"));
    viewers.Install("org.example.Browser", "browser %u");
    viewers.MakeDefault("org.example.Browser", "text/html");
    bundle.WriteMap(Entry("300", "knobs.html"));
    EXPECT_THAT(OpenedBy(300), ElementsAre(Words{"browser", "file://" + bundle.Page("knobs.html")}));
}

TEST_F(HelpViewer, IsQuietWithoutAnyViewer)
{
    std::filesystem::remove(viewers.Entry("com.apple.HelpViewer"));
    bundle.WriteMap(Entry("300", "knobs.html"));
    EXPECT_THAT(OpenedBy(300), IsEmpty());
}

TEST_F(HelpViewer, OpensFromSeveralThreadsAtOnce)
{
    bundle.WriteMap(Entry("300", "knobs.html"));
    const auto opened = Opened(bundle.Path(), [](IProductManager& manager) {
        const auto work = [&manager] {
            manager.OpenHelp(nullptr, 300);
        };
        std::thread threads[] = {std::thread(work), std::thread(work), std::thread(work)};
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_THAT(opened, SizeIs(3));
}

TEST_F(HelpViewer, LoadsGLibWithTheFirstPageOnly)
{
    bundle.WriteMap(Entry("300", "knobs.html"));
    const auto opened = Opened(bundle.Path(), [](IProductManager& manager) {
        EXPECT_THAT(ReadFile("/proc/self/maps"), Not(HasSubstr("libglib")));
        manager.OpenHelp(nullptr, 1); // no page, no launch
        EXPECT_THAT(ReadFile("/proc/self/maps"), Not(HasSubstr("libglib")));
        manager.OpenHelp(nullptr, 300);
        EXPECT_THAT(ReadFile("/proc/self/maps"), HasSubstr("libglib"));
    });
    EXPECT_THAT(opened, SizeIs(1));
}

TEST_F(HelpViewer, ShowsThePageInARealBrowser)
{
    if (access("/usr/bin/chromium", X_OK) != 0)
        GTEST_SKIP() << "no chromium";
    const CTemporaryFolder folder;
    WriteFile(folder / "viewer", "#!/bin/sh\n"
                                 "exec /usr/bin/chromium --headless --no-sandbox --disable-gpu --user-data-dir='" +
                                     (folder / "profile") + "' --dump-dom \"$1\" >'" + (folder / "page") +
                                     "' 2>/dev/null\n");
    std::filesystem::permissions(folder / "viewer", std::filesystem::perms::owner_all);
    viewers.InstallLine("com.apple.HelpViewer", (folder / "viewer") + " %u");
    (void)OpenedBy(BuiltBundle(), 300); // waits until the browser has ended
    EXPECT_THAT(ReadFile(folder / "page"), HasSubstr("<title>Turning knobs with the mouse"));
    const CEnvironment locale("LANG", "de_DE.UTF-8");
    (void)OpenedBy(BuiltBundle(), 300);
    EXPECT_THAT(ReadFile(folder / "page"), HasSubstr("<title>Regler mit der Maus drehen"));
}

} // namespace
