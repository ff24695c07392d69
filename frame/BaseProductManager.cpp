// frame/BaseProductManager.cpp
//
// The object itself: its life, its critical region, its configuration, its name and the hook for
// translations.
#include "frame/BaseProductManager.h"

#include <string.h>

#include "frame/Owned.h"

namespace {

// Copies as much of `text` as fits, without leaving half of a UTF-8 sequence at the cut.
void CopyText(char (&to)[CBaseProductManager::kTextSize], const char* text)
{
    size_t length = strlen(text);
    if (length >= sizeof to) {
        length = sizeof to - 1;
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    memmove(to, text, length);
    to[length] = '\0';
}

} // namespace

CBaseProductManager::CBaseProductManager()
    : knobsDragVertical(false),
      bundle(nullptr),
      infoDialogOptions(0),
      productName(),
      helpFolder(),
      infoDialogWindow(nullptr),
      criticalRegion(nullptr)
{
    (void)MPCreateCriticalRegion(&criticalRegion);
}

CBaseProductManager::~CBaseProductManager()
{
    if (infoDialogWindow) {
        DisposeWindow(infoDialogWindow); // may name a window that is gone already
        infoDialogWindow = nullptr;
    }
    if (bundle) {
        const COwned<CFURLRef> held(CFBundleCopyBundleURL(bundle));
        const COwned<CFURLRef> own(GetCurrentBundle());
        const bool isOwn =
            held && own &&
            CFStringCompare(CFURLGetString(held.Get()), CFURLGetString(own.Get()), 0) == kCFCompareEqualTo;
        if (!isOwn) { // the own bundle is kept on purpose: its code is still running here
            CFRelease(bundle);
            bundle = nullptr;
        }
    }
    (void)MPDeleteCriticalRegion(criticalRegion);
}

HRESULT CBaseProductManager::QueryInterface(const corvane::GUID&, void**)
{
    return E_FAIL;
}

unsigned long CBaseProductManager::AddRef()
{
    return 2;
}

unsigned long CBaseProductManager::Release()
{
    return 1;
}

void CBaseProductManager::EnterCritical()
{
    (void)MPEnterCriticalRegion(criticalRegion, kDurationForever);
}

void CBaseProductManager::LeaveCritical()
{
    (void)MPExitCriticalRegion(criticalRegion);
}

int CBaseProductManager::Init(void*, const char* folder)
{
    const CCriticalScope scope(*this);
    char value[60] = "";
    StoreDragFlag(false);
    if (GetRegistryKey("Common", "Knobs Drag Vertical", value, sizeof value - 1))
        StoreDragFlag(value[0] == 'y');

    char path[kTextSize] = "";
    bundle = GetResourcesBundlePath(path, sizeof path - 1) ? OpenBundle(path) : nullptr;
    if (folder)
        CopyText(helpFolder, folder);
    return 1;
}

void CBaseProductManager::SetProductName(const char* name)
{
    const CCriticalScope scope(*this);
    if (name)
        CopyText(productName, name);
}

const char* CBaseProductManager::GetProductName()
{
    return productName;
}

const char* CBaseProductManager::TranslateCommon(EffectLangItemType, const char* key, const char* text)
{
    return text ? text : key;
}

CFStringRef CBaseProductManager::TranslateCommonCFString(EffectLangItemType, const char* key, const char* text)
{
    const char* const wording = text ? text : key;
    return wording ? CFStringCreateWithCString(kCFAllocatorDefault, wording, kCFStringEncodingUTF8) : nullptr;
}

void CBaseProductManager::SendCVEvent(UInt32 kind)
{
    EventRef event = nullptr;
    (void)CreateEvent(kCFAllocatorDefault, 'cvev', kind, 0, kEventAttributeNone, &event);
    (void)SendEventToEventTarget(event, GetApplicationEventTarget());
    // The event is not released; this is intended.
}
