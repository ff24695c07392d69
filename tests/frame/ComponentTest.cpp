// tests/frame/ComponentTest.cpp
//
// The built bundle, loaded as a plug-in loads it: its one object, its identity, its place, its
// version, and the order of its operations.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "tests/support/Owner.h"

namespace {

class Component : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_bundle);
        m_manager = m_bundle.Manager();
        ASSERT_NE(m_manager, nullptr);
    }

    IProductManager& Manager() { return *m_manager; }
    // An exported name as a function or record of the type that the caller knows it to have. A
    // member function takes its object first.
    template <typename Pointer>
    Pointer Symbol(const char* name)
    {
        void* const address = m_bundle.Symbol(name);
        EXPECT_NE(address, nullptr) << name;
        return reinterpret_cast<Pointer>(address);
    }
    float Version(CVProductVersion* version)
    {
        return Symbol<float (*)(void*, CVProductVersion*)>("_ZN19CBaseProductManager10GetVersionEP16CVProductVersion")(
            m_manager, version);
    }
    void Format(char* buffer, int size, CVProductVersion* version)
    {
        Symbol<void (*)(void*, char*, int, CVProductVersion*)>(
            "_ZN19CBaseProductManager19FormatVersionStringEPciP16CVProductVersion")(m_manager, buffer, size, version);
    }
    bool FolderPath(char* buffer, int size)
    {
        return Symbol<bool (*)(char*, int)>("_ZN19CBaseProductManager20GetCurrentBundlePathEPci")(buffer, size);
    }

private:
    CLoadedBundle m_bundle;
    IProductManager* m_manager = nullptr;
};

using GUID = corvane::GUID;

} // namespace

TEST_F(Component, TheFactoryAlwaysAnswersTheSameObject)
{
    const auto factory = Symbol<GetLibProductManagerProc>("GetLibProductManager");
    EXPECT_EQ(factory(), &Manager());
    EXPECT_EQ(factory(), factory());
}

TEST_F(Component, ConstructionHappensOnce)
{
    // Another construction would clear the name that was stored when the bundle was loaded.
    const char* const name = Manager().GetProductName();
    (void)Symbol<GetLibProductManagerProc>("GetLibProductManager")();
    EXPECT_EQ(Manager().GetProductName(), name);
    EXPECT_STREQ(name, "Corvane Audio Quillets for Mac");
}

TEST_F(Component, ReferencesAreNotCounted)
{
    for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(Manager().AddRef(), 2U);
        EXPECT_EQ(Manager().Release(), 1U);
        EXPECT_EQ(Manager().Release(), 1U);
    }
    EXPECT_STREQ(Manager().GetProductName(), "Corvane Audio Quillets for Mac") << "the object stays valid";
}

TEST_F(Component, QueryInterfaceFailsForEveryIdentifierAndLeavesOutAsItWas)
{
    const GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}; // IUnknown's
    const GUID other = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    for (const GUID& iid : {unknown, other}) {
        void* out = &out;
        const HRESULT result = Manager().QueryInterface(iid, &out);
        EXPECT_EQ(result, E_FAIL);
        EXPECT_EQ(static_cast<UInt32>(result), 0x80004005U);
        EXPECT_LT(result, 0);
        EXPECT_EQ(out, &out);
        EXPECT_EQ(Manager().QueryInterface(iid, nullptr), E_FAIL);
    }
}

TEST_F(Component, TranslatesNothing)
{
    const char* const text = "Options";
    EXPECT_EQ(Manager().TranslateCommon(kEffectLangInfoDialog, "Options", text), text);
    EXPECT_STREQ(Manager().TranslateCommon(kEffectLangButton, "OK", nullptr), "OK");
    EXPECT_EQ(TextOf(Own(Manager().TranslateCommonCFString(kEffectLangButton, "Key", "T\xC3\xA9xt")).get()),
              "T\xC3\xA9xt");
    EXPECT_EQ(TextOf(Own(Manager().TranslateCommonCFString(kEffectLangButton, "Key", nullptr)).get()), "Key");
    EXPECT_EQ(Manager().TranslateCommonCFString(kEffectLangButton, "Key", "\xFF"), nullptr);
    EXPECT_EQ(Manager().TranslateCommonCFString(kEffectLangButton, nullptr, nullptr), nullptr);
}

TEST_F(Component, InitAlwaysSucceedsAndMayBeCalledAgain)
{
    EXPECT_EQ(Manager().Init(nullptr, nullptr), 1);
    EXPECT_EQ(Manager().Init(this, "Other/Folder"), 1);
    EXPECT_EQ(Manager().Init(nullptr, "Quillets/VST"), 1);
    EXPECT_FALSE(Manager().KnobsDragVertical());
}

TEST_F(Component, TheNameOutlivesCallsOfInit)
{
    const char* const name = Manager().GetProductName();
    (void)Manager().Init(nullptr, "x");
    EXPECT_EQ(Manager().GetProductName(), name);
    EXPECT_STREQ(name, "Corvane Audio Quillets for Mac");
}

TEST_F(Component, FindsItsOwnBundleAndTheFolderAroundIt)
{
    char path[1024] = "";
    ASSERT_TRUE(Manager().GetResourcesBundlePath(path, sizeof path));
    EXPECT_EQ(std::filesystem::canonical(path), std::filesystem::canonical(BuiltBundle()));
    char folder[1024] = "";
    ASSERT_TRUE(FolderPath(folder, sizeof folder));
    EXPECT_EQ(std::string(path), std::string(folder) + "/Quillets.bundle");
}

TEST_F(Component, ABufferTooSmallForThePathIsRefused)
{
    char path[1024] = "";
    ASSERT_TRUE(Manager().GetResourcesBundlePath(path, sizeof path));
    const int length = static_cast<int>(std::strlen(path));
    char small[1024] = "as it was";
    EXPECT_FALSE(Manager().GetResourcesBundlePath(small, length)) << "no room for the NUL";
    EXPECT_FALSE(Manager().GetResourcesBundlePath(small, 0));
    EXPECT_FALSE(Manager().GetResourcesBundlePath(small, -1));
    EXPECT_FALSE(Manager().GetResourcesBundlePath(nullptr, 100));
    EXPECT_FALSE(FolderPath(small, length - static_cast<int>(std::strlen("/Quillets.bundle"))));
    EXPECT_STREQ(small, "as it was");
    EXPECT_TRUE(Manager().GetResourcesBundlePath(small, length + 1));
    EXPECT_STREQ(small, path);
}

TEST_F(Component, OpensBundlesByTheirPaths)
{
    const auto open = Symbol<CFBundleRef (*)(const char*)>("_ZN19CBaseProductManager10OpenBundleEPKc");
    EXPECT_EQ(open(nullptr), nullptr);
    EXPECT_EQ(open(""), nullptr);
    EXPECT_EQ(open("/no/such/bundle"), nullptr);
    const auto bundle = Own(open(BuiltBundle().c_str()));
    EXPECT_TRUE(bundle);
}

TEST_F(Component, TheVersionRecordIsTheExportedOne)
{
    const CVProductVersion* const version = Manager().GetProductVersion();
    EXPECT_EQ(version, Manager().GetProductVersion());
    EXPECT_EQ(version, Symbol<CVProductVersion*>("g_VersionInf"));
    EXPECT_EQ(version->major, 1);
    EXPECT_EQ(version->minor, 3);
    EXPECT_NE(std::string(version->notice).find("Corvane Audio"), std::string::npos);
}

TEST_F(Component, TheBuildNumberIsThatOfTheCompileDate)
{
    const uint32_t build = Symbol<uint32_t (*)()>("g_CVGetCurrentBuildNumber")();
    EXPECT_EQ(static_cast<uint32_t>(Manager().GetProductVersion()->build), build);
    EXPECT_GE(build / 100 % 100, 1U);
    EXPECT_LE(build / 100 % 100, 12U);
    EXPECT_GE(build % 100, 1U);
    EXPECT_LE(build % 100, 31U);
}

TEST_F(Component, VersionsReadAsNumbers)
{
    const auto version = [this](int major, int minor) {
        CVProductVersion record = {major, minor, 0, ""};
        return Version(&record);
    };
    EXPECT_EQ(Version(nullptr), 1.0F);
    EXPECT_FLOAT_EQ(version(1, 3), 1.3F);
    EXPECT_FLOAT_EQ(version(2, 0), 2.0F);
    EXPECT_FLOAT_EQ(version(1, 9), 1.9F);
    EXPECT_FLOAT_EQ(version(1, 12), 1.12F);
}

// On purpose: one more place for every ten of the minor number.
TEST_F(Component, MinorNumbersFromTwentyOnGainPlaces)
{
    CVProductVersion twenty = {1, 20, 0, ""};
    CVProductVersion thirtyFive = {1, 35, 0, ""};
    EXPECT_FLOAT_EQ(Version(&twenty), 1.02F);
    EXPECT_FLOAT_EQ(Version(&thirtyFive), 1.0035F);
}

TEST_F(Component, TheVersionLineIsFormatted)
{
    CVProductVersion version = {1, 3, 110311, ""};
    char line[100] = "";
    Format(line, sizeof line - 1, &version);
    EXPECT_STREQ(line, "Version 1.3 Build 110311");
    char small[8] = "xxxxxxx";
    Format(small, sizeof small, &version);
    EXPECT_STREQ(small, "Version") << "cut and terminated";
}

TEST_F(Component, WithoutARecordTheLineIsLeftAsItWas)
{
    char line[16] = "as it was";
    Format(line, sizeof line, nullptr);
    EXPECT_STREQ(line, "as it was");
    CVProductVersion version = {1, 3, 110311, ""};
    Format(line, 0, &version);
    EXPECT_STREQ(line, "as it was");
    Format(nullptr, 16, &version);
}

// The order is the binary interface that plug-ins are built against.
TEST_F(Component, EveryOperationStandsInItsSlot)
{
#define BASE(name) "_ZN19CBaseProductManager" name
#define OWN(name) "_ZN15CProductManager" name
// A status is a long at the 32-bit home.
#define ATTACH(status)                                                                                                 \
    "18AttachDialogEventsEP15OpaqueWindowPtrPF" status                                                                 \
    "P25OpaqueEventHandlerCallRefP14OpaqueEventRefPvEP18EventHandlerParams"
    // Mangled, so that the arguments count too.
    const char* const kSlots[] = {BASE("14QueryInterfaceERKN7corvane4GUIDEPPv"),
                                  BASE("6AddRefEv"),
                                  BASE("7ReleaseEv"),
                                  OWN("D1Ev"),
                                  OWN("D0Ev"),
                                  OWN("4InitEPvPKc"),
                                  OWN("10InfoDialogEP15OpaqueWindowPtrb"),
                                  BASE("20SetInfoDialogOptionsEjb"),
                                  BASE("17KnobsDragVerticalEv"),
                                  BASE("8OpenHelpEP15OpaqueWindowPtrj"),
                                  BASE("15SetDragVerticalEb"),
                                  BASE("14GetProductNameEv"),
                                  BASE("17GetProductVersionEv"),
                                  BASE("22GetResourcesBundlePathEPci"),
                                  BASE("16CreateInfoDialogEv"),
                                  BASE("14ShowInfoDialogEP15OpaqueWindowPtrb"),
                                  BASE("8GoToSiteEv"),
                                  BASE("15InitLogoControlEP16OpaqueControlRef"),
                                  sizeof(void*) == 4 ? BASE(ATTACH("l")) : BASE(ATTACH("i")),
                                  BASE("16AttachLogoEventsEP16OpaqueControlRefP18EventHandlerParams"),
                                  BASE("14SetRegistryKeyEPKcS1_S1_"),
                                  BASE("14GetRegistryKeyEPKcS1_Pci"),
                                  BASE("15TranslateCommonE18EffectLangItemTypePKcS2_"),
                                  BASE("23TranslateCommonCFStringE18EffectLangItemTypePKcS2_")};
#undef BASE
#undef OWN
#undef ATTACH
    static_assert(sizeof kSlots / sizeof kSlots[0] == 24, "the interface has 24 slots");
    const void* const* const table = *reinterpret_cast<const void* const* const*>(&Manager());
    for (std::size_t slot = 0; slot < 24; ++slot)
        EXPECT_EQ(table[slot], Symbol<const void*>(kSlots[slot])) << "slot " << slot + 1 << ": " << kSlots[slot];
    EXPECT_NE(table[3], table[4]) << "the complete and the deleting destructor";
    EXPECT_EQ(static_cast<const void*>(table), Symbol<const char*>("_ZTV15CProductManager") + 2 * sizeof(void*))
        << "the object is of the concrete class";
}

// Whatever the folders are called, the bundle is three levels up.
TEST(ComponentPlace, IsThreeLevelsAboveTheExecutable)
{
    const CTemporaryFolder folder;
    const std::string code = folder / "a/b/c/code.so";
    std::filesystem::create_directories(folder / "a/b/c");
    std::filesystem::copy_file(BuiltBundle() + "/Contents/MacOS/Quillets", code);
    void* const image = dlopen(code.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(image, nullptr) << dlerror();
    IProductManager* const manager = reinterpret_cast<GetLibProductManagerProc>(dlsym(image, "GetLibProductManager"))();
    char path[1024] = "";
    EXPECT_TRUE(manager->GetResourcesBundlePath(path, sizeof path));
    EXPECT_EQ(std::string(path), folder / "a");
    dlclose(image);
}
