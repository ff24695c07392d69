// tests/frame/LinkedTest.cpp
//
// The component's code linked into a program: what needs an image of index 0, and what can be seen
// of the object only from a class derived of its own.
#include <gtest/gtest.h>

#include <string>

#include "frame/BuildNumber.h"
#include "frame/ProductManager.h"
#include "tests/support/Owner.h"
#include <CVPlatform/CVPlatform.h>

namespace {

// Answers one stored value, or none, and shows the state.
class CProbe : public CProductManager {
public:
    explicit CProbe(const char* stored = nullptr) : m_stored(stored) {}

    using CBaseProductManager::bundle;
    using CBaseProductManager::helpFolder;
    using CBaseProductManager::infoDialogOptions;
    using CBaseProductManager::infoDialogWindow;
    using CBaseProductManager::knobsDragVertical;
    using CBaseProductManager::productName;

    bool GetRegistryKey(const char* section, const char* key, char* buffer, int size) override
    {
        asked = std::string(section) + "/" + key;
        askedSize = size;
        if (!m_stored)
            return false;
        snprintf(buffer, static_cast<std::size_t>(size), "%s", m_stored);
        return true;
    }
    const char* TranslateCommon(EffectLangItemType type, const char* key, const char* text) override
    {
        return std::string(key) == "Version" ? "Fassung" : CProductManager::TranslateCommon(type, key, text);
    }

    std::string asked;
    int askedSize = 0;

private:
    const char* m_stored;
};

bool KnobsAfterInit(const char* stored)
{
    CProbe manager(stored);
    manager.knobsDragVertical = stored == nullptr; // Init clears what was there
    EXPECT_EQ(manager.Init(nullptr, nullptr), 1);
    EXPECT_EQ(manager.KnobsDragVertical(), manager.knobsDragVertical);
    return manager.KnobsDragVertical();
}

} // namespace

TEST(NewObject, IsEmpty)
{
    const CProbe manager;
    EXPECT_FALSE(manager.knobsDragVertical);
    EXPECT_EQ(manager.bundle, nullptr);
    EXPECT_EQ(manager.infoDialogOptions, 0U);
    EXPECT_STREQ(manager.productName, "");
    EXPECT_STREQ(manager.helpFolder, "");
    EXPECT_EQ(manager.infoDialogWindow, nullptr);
}

TEST(HelpFolder, IsCutTo259Bytes)
{
    CProbe manager;
    const std::string longName(300, 'x');
    (void)manager.Init(nullptr, longName.c_str());
    EXPECT_EQ(std::string(manager.helpFolder), longName.substr(0, 259));
    (void)manager.Init(nullptr, longName.substr(0, 259).c_str());
    EXPECT_EQ(std::string(manager.helpFolder), longName.substr(0, 259));
}

TEST(HelpFolder, IsNotCutInsideACharacter)
{
    CProbe manager;
    const std::string longName = std::string(258, 'x') + "\xC3\xA9\xC3\xA9";
    (void)manager.Init(nullptr, longName.c_str());
    EXPECT_EQ(std::string(manager.helpFolder), longName.substr(0, 258));
}

TEST(HelpFolder, ThatNeverBeginsACharacterIsEmpty)
{
    CProbe manager;
    (void)manager.Init(nullptr, std::string(300, '\xA9').c_str());
    EXPECT_STREQ(manager.helpFolder, "");
}

TEST(HelpFolder, NullKeepsTheEarlierOne)
{
    CProbe manager;
    (void)manager.Init(nullptr, "Quillets/VST");
    (void)manager.Init(nullptr, nullptr);
    EXPECT_STREQ(manager.helpFolder, "Quillets/VST");
    (void)manager.Init(nullptr, "");
    EXPECT_STREQ(manager.helpFolder, "");
}

TEST(HelpFolder, MayBeGivenBackAsItIs)
{
    CProbe manager;
    (void)manager.Init(nullptr, "Quillets/VST");
    (void)manager.Init(nullptr, manager.helpFolder);
    EXPECT_STREQ(manager.helpFolder, "Quillets/VST");
}

TEST(ProductName, IsCutLikeTheHelpFolder)
{
    CProbe manager;
    manager.SetProductName(std::string(300, 'n').c_str());
    EXPECT_EQ(std::string(manager.GetProductName()), std::string(259, 'n'));
    manager.SetProductName(nullptr);
    EXPECT_EQ(std::string(manager.GetProductName()), std::string(259, 'n'));
}

TEST(KnobPreference, OnlyAValueThatBeginsWithASmallYTurnsItOn)
{
    EXPECT_TRUE(KnobsAfterInit("yes"));
    EXPECT_TRUE(KnobsAfterInit("y"));
    EXPECT_FALSE(KnobsAfterInit("Yes"));
    EXPECT_FALSE(KnobsAfterInit("no"));
    EXPECT_FALSE(KnobsAfterInit(""));
    EXPECT_FALSE(KnobsAfterInit(" yes"));
    EXPECT_FALSE(KnobsAfterInit(nullptr)) << "no such key";
}

TEST(KnobPreference, IsReadThroughTheVirtualOperation)
{
    CProbe manager("yes");
    (void)manager.Init(nullptr, nullptr);
    EXPECT_EQ(manager.asked, "Common/Knobs Drag Vertical");
    EXPECT_EQ(manager.askedSize, 59);
}

TEST(VersionLine, GoesThroughTheTranslationHook)
{
    CProbe manager;
    CVProductVersion version = {1, 3, 110311, ""};
    char line[100] = "";
    manager.FormatVersionString(line, 99, &version);
    EXPECT_STREQ(line, "Fassung 1.3 Build 110311");
}

// The search for the own image begins behind the program.
TEST(LinkedIntoTheProgram, TheComponentNeverFindsItsBundle)
{
    EXPECT_EQ(CBaseProductManager::GetCurrentBundle(), nullptr);
    EXPECT_EQ(CBaseProductManager::GetCurrentBundlePath(), nullptr);
    char buffer[1024] = "as it was";
    EXPECT_FALSE(CBaseProductManager::GetCurrentBundlePath(buffer, sizeof buffer));
    CProbe manager;
    EXPECT_FALSE(manager.GetResourcesBundlePath(buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "as it was");
    EXPECT_EQ(manager.Init(nullptr, nullptr), 1);
    EXPECT_EQ(manager.bundle, nullptr);
}

TEST(LinkedIntoTheProgram, TheComponentHasNoHelpToOpen)
{
    int launches = 0;
    CVSetLaunchHandler(
        [](CFURLRef, CFURLRef, void* count) -> OSStatus {
            ++*static_cast<int*>(count);
            return noErr;
        },
        &launches);
    CProbe manager;
    (void)manager.Init(nullptr, "Quillets/VST");
    manager.OpenHelp(nullptr, 300);
    CVSetLaunchHandler(nullptr, nullptr);
    EXPECT_EQ(launches, 0);
}

TEST(LinkedIntoTheProgram, TheInitialisersHaveRun)
{
    EXPECT_STREQ(GetLibProductManager()->GetProductName(), "Corvane Audio Quillets for Mac");
    EXPECT_EQ(static_cast<uint32_t>(g_VersionInf.build), g_CVGetCurrentBuildNumber());
    EXPECT_NE(g_VersionInf.build, 0);
}

TEST(Destructor, ReleasesAForeignBundleAndTheRegion)
{
    const CTemporaryFolder folder;
    const auto foreign = Own(CBaseProductManager::OpenBundle(folder.Path().c_str()));
    ASSERT_TRUE(foreign);
    {
        CProbe manager;
        manager.bundle = CBaseProductManager::OpenBundle(folder.Path().c_str());
        EXPECT_EQ(manager.bundle, foreign.get());
        EXPECT_EQ(CFGetRetainCount(foreign.get()), 2);
    }
    EXPECT_EQ(CFGetRetainCount(foreign.get()), 1);
}

TEST(BuildNumber, IsYearMonthAndDay)
{
    EXPECT_EQ(BuildNumberOfDate("Mar 11 2011"), 110311U);
    EXPECT_EQ(BuildNumberOfDate("Dec  5 2009"), 91205U);
    EXPECT_EQ(BuildNumberOfDate("Jan 31 2010"), 100131U);
    EXPECT_EQ(BuildNumberOfDate("Feb 29 2000"), 229U);
    EXPECT_EQ(BuildNumberOfDate("Dec 31 2099"), 991231U);
}

TEST(BuildNumber, KnowsEveryMonth)
{
    const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (uint32_t month = 1; month <= 12; ++month)
        EXPECT_EQ(BuildNumberOfDate((std::string(kMonths[month - 1]) + " 01 2011").c_str()), 110001 + month * 100);
}

TEST(BuildNumber, AShortDateGivesNothing)
{
    EXPECT_EQ(BuildNumberOfDate("Mar 11 201"), 0U);
    EXPECT_EQ(BuildNumberOfDate(""), 0U);
}

TEST(BuildNumber, AnUnknownMonthCountsAsZero)
{
    EXPECT_EQ(BuildNumberOfDate("Foo 11 2011"), 110011U);
    EXPECT_EQ(BuildNumberOfDate("mar 11 2011"), 110011U);
}

TEST(BuildNumber, WhatFollowsTheDateIsIgnored)
{
    EXPECT_EQ(BuildNumberOfDate("Mar 11 2011 12:00"), 110311U);
}
