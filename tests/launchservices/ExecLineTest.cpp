// tests/launchservices/ExecLineTest.cpp
//
// What a page or an address holds must reach the program as it is, one argument, whatever the
// entry's command line looks like.
#include "platform/launchservices/ExecLine.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

const LaunchItem kPage = {"file:///tmp/a%20b.html", "/tmp/a b.html"};
const LaunchItem kOther = {"file:///tmp/c.html", "/tmp/c.html"};
const LaunchItem kSite = {"https://example.org/?a=1&b=$(x)", ""};
const EntryTexts kTexts = {"The Viewer", "eye", "/apps/viewer.desktop"};

TEST(ExecLine, GivesOneItemAsAddressOrPath)
{
    EXPECT_THAT(ExpandExecLine({"v", "%u"}, {kPage}, kTexts), ElementsAre(Arguments{"v", kPage.uri}));
    EXPECT_THAT(ExpandExecLine({"v", "%f", "-x"}, {kPage}, kTexts), ElementsAre(Arguments{"v", kPage.path, "-x"}));
}

TEST(ExecLine, GivesSeveralItemsToOneProgramOnlyWhereItTakesThem)
{
    EXPECT_THAT(ExpandExecLine({"v", "%U"}, {kPage, kOther}, kTexts),
                ElementsAre(Arguments{"v", kPage.uri, kOther.uri}));
    EXPECT_THAT(ExpandExecLine({"v", "%F"}, {kPage, kOther}, kTexts),
                ElementsAre(Arguments{"v", kPage.path, kOther.path}));
    EXPECT_THAT(ExpandExecLine({"v", "%u"}, {kPage, kOther}, kTexts),
                ElementsAre(Arguments{"v", kPage.uri}, Arguments{"v", kOther.uri}));
}

TEST(ExecLine, AddsTheItemToALineThatSaysNothingAboutFiles)
{
    EXPECT_THAT(ExpandExecLine({"v", "--new"}, {kPage}, kTexts), ElementsAre(Arguments{"v", "--new", kPage.path}));
    EXPECT_THAT(ExpandExecLine({"v", "100%%u"}, {kPage}, kTexts), ElementsAre(Arguments{"v", "100%u", kPage.path}));
}

TEST(ExecLine, GivesAnAddressWhereAPathIsAskedForAndThereIsNone)
{
    EXPECT_THAT(ExpandExecLine({"v", "%f"}, {kSite}, kTexts), ElementsAre(Arguments{"v", kSite.uri}));
}

TEST(ExecLine, FillsInTheTextsOfTheEntry)
{
    EXPECT_THAT(ExpandExecLine({"v", "%i", "%c", "%k", "%%", "%u"}, {kPage}, kTexts),
                ElementsAre(Arguments{"v", "--icon", "eye", "The Viewer", "/apps/viewer.desktop", "%", kPage.uri}));
    EXPECT_THAT(ExpandExecLine({"v", "%i", "%u"}, {kPage}, {"n", "", "f"}), ElementsAre(Arguments{"v", kPage.uri}));
}

TEST(ExecLine, DropsDeprecatedAndUnknownCodesButNoEmptyArgument)
{
    EXPECT_THAT(ExpandExecLine({"v", "%d", "%v", "%m", "%x", "a%nb", "", "50%", "%u"}, {kPage}, kTexts),
                ElementsAre(Arguments{"v", "ab", "", "50%", kPage.uri}));
}

TEST(ExecLine, PutsAnItemIntoAnOption)
{
    EXPECT_THAT(ExpandExecLine({"v", "--url=%u"}, {kSite}, kTexts), ElementsAre(Arguments{"v", "--url=" + kSite.uri}));
}

TEST(ExecLine, DoesNotExpandWhatAnItemBringsAlong)
{
    const LaunchItem percent = {"file:///tmp/%25u%25f", "/tmp/%u%f"};
    EXPECT_THAT(ExpandExecLine({"v", "%f"}, {percent}, kTexts), ElementsAre(Arguments{"v", "/tmp/%u%f"}));
}

TEST(ExecLine, LeavesNothingForAShellToReadInTheTextOfACommand)
{
    EXPECT_THAT(ExpandExecLine({"sh", "-c", "v %f"}, {{"file:///tmp/%24%28x%29", "/tmp/$(x)"}}, kTexts),
                ElementsAre(Arguments{"sh", "-c", "v file:///tmp/%24%28x%29"}));
    EXPECT_THAT(ExpandExecLine({"sh", "-c", "v %u"}, {kSite}, kTexts),
                ElementsAre(Arguments{"sh", "-c", "v https://example.org/?a=1%26b=%24%28x%29"}));
}

} // namespace
