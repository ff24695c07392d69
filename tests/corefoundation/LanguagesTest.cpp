// tests/corefoundation/LanguagesTest.cpp
//
// From the user's settings to the language folders.
#include "platform/corefoundation/Languages.h"

#include <gmock/gmock.h>

#include "tests/support/Support.h"

using testing::ElementsAre;

TEST(Languages, EnglishAndBaseComeLastAndAlways)
{
    EXPECT_THAT(LanguageFolders(), ElementsAre("en.lproj", "English.lproj", "Base.lproj"));
}

TEST(Languages, TerritoriesComeBeforeTheLanguage)
{
    const CEnvironment lang("LANG", "de_AT.UTF-8@euro");
    EXPECT_THAT(LanguageFolders(), ElementsAre("de_AT.lproj", "de-AT.lproj", "de.lproj", "German.lproj", "en.lproj",
                                               "English.lproj", "Base.lproj"));
}

TEST(Languages, SettingsHaveTheirOrder)
{
    const CEnvironment lang("LANG", "de_DE.UTF-8");
    EXPECT_EQ(LanguageFolders().front(), "de_DE.lproj");
    const CEnvironment messages("LC_MESSAGES", "fr");
    EXPECT_EQ(LanguageFolders().front(), "fr.lproj");
    const CEnvironment all("LC_ALL", "it");
    EXPECT_EQ(LanguageFolders().front(), "it.lproj");
    const CEnvironment list("LANGUAGE", "ja:es");
    EXPECT_THAT(LanguageFolders(), ElementsAre("ja.lproj", "Japanese.lproj", "es.lproj", "Spanish.lproj", "en.lproj",
                                               "English.lproj", "Base.lproj"));
}

TEST(Languages, AnEmptySettingCountsAsNone)
{
    const CEnvironment lang("LANG", "nl");
    const CEnvironment all("LC_ALL", "");
    EXPECT_EQ(LanguageFolders().front(), "nl.lproj");
}

// As gettext has it: a list of languages needs a locale.
TEST(Languages, AListWithoutALocaleIsIgnored)
{
    const CEnvironment list("LANGUAGE", "de");
    EXPECT_EQ(LanguageFolders().front(), "en.lproj");
    const CEnvironment lang("LANG", "C.UTF-8");
    EXPECT_EQ(LanguageFolders().front(), "en.lproj");
}

TEST(Languages, OddSettingsDoNoHarm)
{
    const CEnvironment lang("LANG", "en_US.UTF-8");
    const CEnvironment list("LANGUAGE", "::../etc:de:de:_:");
    for (const std::string& folder : LanguageFolders())
        EXPECT_EQ(folder.find('/'), std::string::npos) << folder;
    EXPECT_EQ(LanguageFolders().front(), "de.lproj");
}
