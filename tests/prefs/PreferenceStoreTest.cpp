// tests/prefs/PreferenceStoreTest.cpp
//
// What a plug-in sees of the preference store: sections, keys, values, and the knob setting.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "tests/support/PreferencesSupport.h"

namespace {

class PreferenceStore : public CPreferencesTest {
protected:
    CBaseProductManager m_manager;
    char m_buffer[300] = "as it was";
};

std::string Normalized(const char* section)
{
    char output[CBaseProductManager::kTextSize] = "";
    CBaseProductManager::Normalize(output, section);
    return output;
}

// A property list may hold what no interface text can.
void SetValue(const char* key, CFPropertyListRef value, CFStringRef user)
{
    const CFStringRef name = MakeString(key);
    CFPreferencesSetValue(name, value, CFSTR("com.corvane.common"), user, kCFPreferencesCurrentHost);
    EXPECT_TRUE(CFPreferencesSynchronize(CFSTR("com.corvane.common"), user, kCFPreferencesCurrentHost));
    CFRelease(name);
}

TEST(Normalize, KeepsLettersDigitsDotUnderscoreAndDashInLowerCase)
{
    EXPECT_EQ(Normalized("Common"), "common");
    EXPECT_EQ(Normalized("My Plug-in 2.0!"), "myplug-in2.0");
    EXPECT_EQ(Normalized("AZ_az.09-[@`{/:"), "az_az.09-");
    EXPECT_EQ(Normalized("Gr\xC3\xBC\xC3\x9F\x01\x7F"), "gr");
    EXPECT_EQ(Normalized("  !!"), "");
}

TEST(Normalize, WritesNothingForAnEmptyInput)
{
    char output[CBaseProductManager::kTextSize] = "before";
    CBaseProductManager::Normalize(output, "");
    EXPECT_STREQ(output, "before");
}

TEST(Normalize, CutsAtTheBuffer)
{
    struct {
        char output[CBaseProductManager::kTextSize];
        char behind[16];
    } memory = {};
    std::memset(memory.behind, '#', sizeof memory.behind);
    CBaseProductManager::Normalize(memory.output, std::string(5000, 'A').c_str());
    EXPECT_EQ(std::string(memory.output), std::string(CBaseProductManager::kTextSize - 1, 'a'));
    EXPECT_EQ(std::string(memory.behind, sizeof memory.behind), std::string(sizeof memory.behind, '#'));
}

TEST_F(PreferenceStore, ReadsBackWhatWasWritten)
{
    EXPECT_TRUE(m_manager.SetRegistryKey("Common", "Skin", "dark"));
    EXPECT_TRUE(m_manager.GetRegistryKey("Common", "Skin", m_buffer, sizeof m_buffer));
    EXPECT_STREQ(m_buffer, "dark");
    EXPECT_TRUE(m_manager.SetRegistryKey("Common", "Skin", "light"));
    EXPECT_EQ(GetKey("Common", "Skin"), "light");
}

TEST_F(PreferenceStore, ReadsWhatAnotherProcessWrote)
{
    EXPECT_EQ(GetKey("Common", "Skin"), "(none)");
    EXPECT_EQ(RunInChild([] { return SetKey("Common", "Skin", "dark") ? 0 : 1; }), 0);
    EXPECT_EQ(GetKey("Common", "Skin"), "dark");
}

TEST_F(PreferenceStore, SectionsThatDifferOnlyInCaseSpacesOrPunctuationAreOne)
{
    EXPECT_TRUE(SetKey("Common", "Skin", "dark"));
    EXPECT_EQ(GetKey("common", "Skin"), "dark");
    EXPECT_EQ(GetKey("Com mon!", "Skin"), "dark");
    EXPECT_EQ(GetKey("Commons", "Skin"), "(none)");
}

TEST_F(PreferenceStore, KeysThatDifferOnlyInCaseAndSpacesAreDistinct)
{
    for (const char* key : {"Skin", "skin", "Sk in", "Skin!"})
        EXPECT_TRUE(SetKey("Common", key, key));
    for (const char* key : {"Skin", "skin", "Sk in", "Skin!"})
        EXPECT_EQ(GetKey("Common", key), key);
}

TEST_F(PreferenceStore, ASectionThatNormalisesToNothingIsUsedAsItStands)
{
    EXPECT_TRUE(SetKey(" !! ", "Key", "one"));
    EXPECT_EQ(GetKey("", "Key"), "one");
    EXPECT_EQ(NamesIn(std::filesystem::path(MachineFile()).parent_path()).front().rfind("com.corvane..", 0), 0U);
}

TEST_F(PreferenceStore, TheIdentifierHolds258Characters)
{
    const std::string longest(246, 'a');
    EXPECT_TRUE(SetKey(longest, "Key", "longest"));
    EXPECT_EQ(GetKey(longest + "b", "Key"), "longest") << "what is over 246 characters is cut";
    EXPECT_EQ(GetKey(longest.substr(1), "Key"), "(none)");
    const CFStringRef domain = MakeString("com.corvane." + longest);
    const auto value = static_cast<CFStringRef>(
        CFPreferencesCopyValue(CFSTR("Key"), domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost));
    EXPECT_EQ(TextOf(value), "longest");
    CFRelease(domain);
    CFRelease(value);
}

TEST_F(PreferenceStore, LongSectionsThatDifferNeverShareAFile)
{
    const std::string start(245, 'a');
    EXPECT_TRUE(SetKey(start + "b", "Key", "b"));
    EXPECT_TRUE(SetKey(start + "c", "Key", "c"));
    EXPECT_EQ(GetKey(start + "b", "Key"), "b");
    EXPECT_EQ(GetKey(start + "c", "Key"), "c");
}

TEST_F(PreferenceStore, AnOverlongSectionIsBounded)
{
    EXPECT_TRUE(SetKey(std::string(100000, 'x'), "Key", "value"));
    EXPECT_EQ(GetKey(std::string(300, 'X'), "Key"), "value");
}

TEST_F(PreferenceStore, EveryTextSurvivesAsValueAndAsKey)
{
    std::string controls;
    for (char byte = 1; byte < 0x20; ++byte)
        controls.push_back(byte);
    const std::string texts[] = {
        "",
        controls + "\x7F",
        "one\rtwo\r\nthree\nfour\t",
        "<key>&amp;\"'</key> ]]> &#x41;",
        " leading and trailing ",
        "\xEF\xBB\xBF"
        "a byte-order mark",
        "\xEF\xBF\xBE \xEF\xBF\xBF \xEF\xB7\x90 \xF0\x9F\xBF\xBE \xF4\x8F\xBF\xBF", // noncharacters
        "e\xCC\x81 \xC3\xA9",                                                       // decomposed and composed
        "\xF0\x9F\x8E\x9B \xF0\x90\x80\x80 \xF4\x8F\xBF\xBD",                       // beyond the 16-bit plane
        "\xC2\x80\xC2\x9F \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80",         // ends of ranges
        std::string(1024 * 1024, 'm'),
        std::string(300000, 'm') + "\xF0\x9F\x8E\x9B",
    };
    int number = 0;
    for (const std::string& text : texts) {
        const std::string key = "Key " + std::to_string(++number);
        EXPECT_TRUE(SetKey("Texts", key, text));
        EXPECT_TRUE(SetKey("Texts", text, key));
    }
    // From another process: what is read is what is on disk.
    EXPECT_EQ(RunInChild([&] {
                  int count = 0;
                  for (const std::string& text : texts) {
                      const std::string key = "Key " + std::to_string(++count);
                      if (GetKey("Texts", key) != text || GetKey("Texts", text) != key)
                          return count;
                  }
                  return 0;
              }),
              0);
}

TEST_F(PreferenceStore, ALengthOfOneMoreThanTheValueSuffices)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_TRUE(m_manager.GetRegistryKey("Common", "Key", m_buffer, 6));
    EXPECT_STREQ(m_buffer, "value");
    std::strcpy(m_buffer, "as it was");
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", "Key", m_buffer, 5));
    EXPECT_STREQ(m_buffer, "as it was");
}

TEST_F(PreferenceStore, AMissingKeyLeavesTheBufferAlone)
{
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", "Key", m_buffer, sizeof m_buffer));
    EXPECT_STREQ(m_buffer, "as it was");
}

TEST_F(PreferenceStore, NullSectionKeyAndBufferAreRefused)
{
    EXPECT_FALSE(m_manager.SetRegistryKey(nullptr, "Key", "value"));
    EXPECT_FALSE(m_manager.SetRegistryKey("Common", nullptr, "value"));
    EXPECT_TRUE(NamesIn(m_folder / "machine").empty()) << "nothing may be touched";
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_FALSE(m_manager.GetRegistryKey(nullptr, "Key", m_buffer, sizeof m_buffer));
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", nullptr, m_buffer, sizeof m_buffer));
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", "Key", nullptr, sizeof m_buffer));
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", "Key", m_buffer, 0));
    EXPECT_FALSE(m_manager.GetRegistryKey("Common", "Key", m_buffer, -1));
    EXPECT_STREQ(m_buffer, "as it was");
}

TEST_F(PreferenceStore, AKeyThatIsNoTextIsRefused)
{
    EXPECT_FALSE(SetKey("Common", "\xFF", "value"));
    EXPECT_EQ(GetKey("Common", "\xFF"), "(none)");
}

TEST_F(PreferenceStore, ANullOrInvalidValueRemovesTheKey)
{
    for (const char* value : {static_cast<const char*>(nullptr), "\xC3(", "\xED\xA0\x80", "\xC0\x80"}) {
        ASSERT_TRUE(SetKey("Common", "Key", "value"));
        ASSERT_TRUE(SetKey("Common", "Other", "kept"));
        EXPECT_TRUE(m_manager.SetRegistryKey("Common", "Key", value));
        EXPECT_EQ(GetKey("Common", "Key"), "(none)");
        EXPECT_EQ(GetKey("Common", "Other"), "kept");
    }
    EXPECT_TRUE(m_manager.SetRegistryKey("Common", "Never there", nullptr));
}

TEST_F(PreferenceStore, AMachineWideValueComesFirst)
{
    const CFStringRef machine = CFSTR("machine");
    const CFStringRef own = CFSTR("own");
    SetValue("Key", own, kCFPreferencesCurrentUser);
    EXPECT_EQ(GetKey("Common", "Key"), "own");
    SetValue("Key", machine, kCFPreferencesAnyUser);
    EXPECT_EQ(GetKey("Common", "Key"), "machine");
    SetValue("Key", nullptr, kCFPreferencesAnyUser);
    EXPECT_EQ(GetKey("Common", "Key"), "own");
}

TEST_F(PreferenceStore, AWriteLandsMachineWideWhereTheUserMayWriteThere)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_TRUE(FileExists(MachineFile()));
    EXPECT_FALSE(FileExists(UserFile()));
}

TEST_F(PreferenceStore, AWriteOfAnOrdinaryUserGoesToThatUser)
{
    EXPECT_EQ(RunAsUser([] { return SetKey("Common", "Key", "value") && GetKey("Common", "Key") == "value" ? 0 : 1; }),
              0);
    EXPECT_FALSE(FileExists(MachineFile()));
    EXPECT_TRUE(FileExists(UserFile()));
}

TEST_F(PreferenceStore, AWriteThatWouldChangeNothingMachineWideGoesToTheUserToo)
{
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_EQ(RunAsUser([] { return SetKey("Common", "Key", "value") ? 0 : 1; }), 0);
    ASSERT_TRUE(FileExists(UserFile()));
    std::filesystem::remove(MachineFile());
    EXPECT_EQ(RunAsUser([] { return GetKey("Common", "Key") == "value" ? 0 : 1; }), 0);
}

TEST_F(PreferenceStore, ARemovalThatWouldChangeNothingMachineWideGoesToTheUserToo)
{
    ASSERT_TRUE(SetKey("Common", "Other", "value"));
    EXPECT_EQ(RunAsUser([] {
                  CBaseProductManager manager;
                  CFPreferencesSetValue(CFSTR("Key"), CFSTR("own"), CFSTR("com.corvane.common"),
                                        kCFPreferencesCurrentUser, kCFPreferencesCurrentHost);
                  CFPreferencesSynchronize(CFSTR("com.corvane.common"), kCFPreferencesCurrentUser,
                                           kCFPreferencesCurrentHost);
                  return GetKey("Common", "Key") == "own" && manager.SetRegistryKey("Common", "Key", nullptr) &&
                                 GetKey("Common", "Key") == "(none)"
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(PreferenceStore, AFailedWriteIsNotReadBack)
{
    EXPECT_EQ(RunAsUser([] {
                  CFPreferencesSetValue(CFSTR("Key"), CFSTR("pending"), CFSTR("com.corvane.common"),
                                        kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
                  const bool saved = CFPreferencesSynchronize(CFSTR("com.corvane.common"), kCFPreferencesAnyUser,
                                                              kCFPreferencesCurrentHost);
                  return !saved && GetKey("Common", "Key") == "(none)" ? 0 : 1;
              }),
              0);
}

TEST_F(PreferenceStore, NumbersAndBooleansReadAsTheirText)
{
    WriteXml(MachineFile(), "<key>whole</key><integer>-42</integer><key>real</key><real>0.5</real>"
                            "<key>yes</key><true/><key>no</key><false/>");
    EXPECT_EQ(GetKey("Common", "whole"), "-42");
    EXPECT_EQ(GetKey("Common", "real"), "0.5");
    EXPECT_EQ(GetKey("Common", "yes"), "true");
    EXPECT_EQ(GetKey("Common", "no"), "false");
}

TEST_F(PreferenceStore, OtherTypesReadAsNotFoundAndSurviveAWrite)
{
    const std::string body = "<key>array</key><array><string>a</string><integer>1</integer></array>"
                             "<key>data</key><data>AQID</data>"
                             "<key>date</key><date>2011-03-11T12:00:00Z</date>"
                             "<key>dict</key><dict><key>k</key><string>v</string></dict>";
    const std::string plain = "<key>number</key><integer>7</integer><key>text</key><string>t</string>";
    WriteXml(MachineFile(), body + plain);
    for (const char* key : {"array", "data", "date", "dict"})
        EXPECT_EQ(GetKey("Common", key), "(none)") << key;
    ASSERT_TRUE(SetKey("Common", "new", "value"));

    WriteXml(m_folder / "expected.plist", body + plain + "<key>new</key><string>value</string>");
    const auto readList = [](const std::string& path) {
        const std::string bytes = ReadFile(path);
        const CFDataRef data =
            CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()));
        const CFPropertyListRef list = CFPropertyListCreateFromXMLData(nullptr, data, 0, nullptr);
        CFRelease(data);
        return list;
    };
    const CFPropertyListRef expected = readList(m_folder / "expected.plist");
    const CFPropertyListRef found = readList(MachineFile());
    EXPECT_TRUE(CFEqual(expected, found));
    CFRelease(expected);
    CFRelease(found);
}

TEST_F(PreferenceStore, AValueWithoutTextMachineWideLeavesTheUsersToBeFound)
{
    WriteXml(MachineFile(), "<key>Key</key><data>AQID</data>");
    SetValue("Key", CFSTR("own"), kCFPreferencesCurrentUser);
    EXPECT_EQ(GetKey("Common", "Key"), "own");
}

TEST_F(PreferenceStore, AListWrittenByHandIsReadAndKeptWhenWritten)
{
    WriteXml(MachineFile(), "<!-- by hand --><key>Gru\xC3\x9F</key><string>a &lt;b&gt; &amp; c</string>");
    EXPECT_EQ(GetKey("Common", "Gru\xC3\x9F"), "a <b> & c");
    ASSERT_TRUE(SetKey("Common", "Key", "value"));
    EXPECT_EQ(GetKey("Common", "Gru\xC3\x9F"), "a <b> & c");
}

TEST_F(PreferenceStore, TheKnobSettingIsStoredAndPickedUpByAFreshObject)
{
    m_manager.SetDragVertical(true);
    EXPECT_TRUE(m_manager.KnobsDragVertical());
    EXPECT_EQ(GetKey("Common", "Knobs Drag Vertical"), "yes");
    CBaseProductManager fresh;
    fresh.Init(nullptr, nullptr);
    EXPECT_TRUE(fresh.KnobsDragVertical());

    m_manager.SetDragVertical(false);
    EXPECT_FALSE(m_manager.KnobsDragVertical());
    EXPECT_EQ(GetKey("Common", "Knobs Drag Vertical"), "no");
    fresh.Init(nullptr, nullptr);
    EXPECT_FALSE(fresh.KnobsDragVertical());
}

TEST_F(PreferenceStore, OnlyALowerCaseYTurnsTheKnobSettingOn)
{
    const std::pair<const char*, bool> cases[] = {{"yes", true},  {"y", true},  {"yellow", true}, {"no", false},
                                                  {"Yes", false}, {"1", false}, {"", false},      {" yes", false}};
    for (const auto& [text, on] : cases) {
        ASSERT_TRUE(SetKey("Common", "Knobs Drag Vertical", text));
        m_manager.Init(nullptr, nullptr);
        EXPECT_EQ(m_manager.KnobsDragVertical(), on) << text;
    }
    ASSERT_TRUE(SetKey("Common", "Knobs Drag Vertical", "y" + std::string(57, '.')));
    m_manager.Init(nullptr, nullptr);
    EXPECT_TRUE(m_manager.KnobsDragVertical());
    ASSERT_TRUE(SetKey("Common", "Knobs Drag Vertical", "y" + std::string(58, '.')));
    m_manager.Init(nullptr, nullptr);
    EXPECT_FALSE(m_manager.KnobsDragVertical()) << "it does not fit the buffer";
    ASSERT_TRUE(m_manager.SetRegistryKey("Common", "Knobs Drag Vertical", nullptr));
    m_manager.Init(nullptr, nullptr);
    EXPECT_FALSE(m_manager.KnobsDragVertical());
}

TEST_F(PreferenceStore, TheKnobFlagIsKeptWhenItCannotBeStored)
{
    std::filesystem::remove_all(m_folder / "machine");
    std::filesystem::remove_all(m_folder / "home");
    WriteFile(m_folder / "machine", "a file where the folder should be");
    WriteFile(m_folder / "home", "a file where the folder should be");
    m_manager.SetDragVertical(true);
    EXPECT_TRUE(m_manager.KnobsDragVertical());
    EXPECT_EQ(GetKey("Common", "Knobs Drag Vertical"), "(none)");
}

class CCountingManager : public CBaseProductManager {
public:
    bool SetRegistryKey(const char* section, const char* key, const char* value) override
    {
        said = std::string(section) + "/" + key + "=" + value;
        return false;
    }
    bool GetRegistryKey(const char*, const char*, char* buffer, int size) override
    {
        asked = size;
        std::strcpy(buffer, "y");
        return true;
    }
    std::string said;
    int asked = 0;
};

TEST_F(PreferenceStore, TheKnobSettingGoesThroughTheInterface)
{
    CCountingManager manager;
    manager.Init(nullptr, nullptr);
    EXPECT_EQ(manager.asked, 59);
    EXPECT_TRUE(manager.KnobsDragVertical());
    manager.SetDragVertical(false);
    EXPECT_EQ(manager.said, "Common/Knobs Drag Vertical=no");
}

} // namespace
