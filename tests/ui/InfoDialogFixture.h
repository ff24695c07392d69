// tests/ui/InfoDialogFixture.h
//
// What tests of the information dialog share: an object of our own, linked in, with its help, web
// site and settings recorded, whose bundle is the built one or another; and the count of the ends
// that the host is told of.
#pragma once

#include <gtest/gtest.h>

#include "frame/ProductManager.h"
#include "tests/support/Toolbox.h"
#include "tests/ui/Hands.h"

class CTestManager : public CProductManager {
public:
    using CBaseProductManager::bundle;
    using CBaseProductManager::infoDialogOptions;
    using CBaseProductManager::infoDialogWindow;

    explicit CTestManager(const std::string& bundlePath = BuiltBundle())
    {
        bundle = OpenBundle(bundlePath.c_str());
        SetProductName("A Product");
    }
    ~CTestManager() override
    {
        if (bundle)
            CFRelease(bundle);
        bundle = nullptr;
    }

    void OpenHelp(WindowRef parent, unsigned int topic) override
    {
        helpWindow = parent;
        helpTopics.push_back(topic);
    }
    void GoToSite() override { ++visits; }
    bool SetRegistryKey(const char* section, const char* key, const char* value) override
    {
        stored.push_back(std::string(section) + "/" + key + "=" + value);
        return true;
    }
    const char* TranslateCommon(EffectLangItemType type, const char* key, const char* text) override
    {
        if (onTranslate)
            onTranslate();
        return CProductManager::TranslateCommon(type, key, text);
    }
    OSStatus AttachDialogEvents(WindowRef window, EventHandlerProcPtr handler, EventHandlerParams* params) override
    {
        return attachStatus == noErr ? CProductManager::AttachDialogEvents(window, handler, params) : attachStatus;
    }

    WindowRef helpWindow = nullptr;
    std::vector<unsigned> helpTopics;
    int visits = 0;
    std::vector<std::string> stored;
    std::function<void()> onTranslate;
    OSStatus attachStatus = noErr;
};

/// How often an 'iend' event came to the application's target in the test that runs.
extern int g_ends;

int CountWindows();
ControlRef ControlOf(WindowRef window, OSType signature, SInt32 id = 0);

class InfoDialog : public testing::Test {
protected:
    static void SetUpTestSuite() { Hands::Begin(); }
    void SetUp() override;
    void TearDown() override;

    /// Opens the dialog and answers its window.
    static WindowRef Open(CTestManager& manager, bool hideKnobOption = false, WindowRef parent = nullptr);
    /// Opens it and waits until it can be used.
    static WindowRef Use(CTestManager& manager, bool hideKnobOption = false, WindowRef parent = nullptr);
    /// Opens it where knobs follow up and down drags, and takes the tick out of its box.
    static WindowRef UseAndClearTheBox(CTestManager& manager);
    static WindowRef MakeParent();
    static WindowModality ModalityOf(WindowRef window, WindowRef& parent);
    /// Serves the windows; answers whether so many ends came, and no more.
    static bool Ended(int times);

    int m_before = 0;
    EventHandlerRef m_handler = nullptr;
};
