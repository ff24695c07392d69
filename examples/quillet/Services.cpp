// Services.cpp
#include "Services.h"

#include <dlfcn.h>
#include <link.h>

#include <string_view>
#include <utility>

#include <CVPlatform/CVPlatform.h>

namespace quillet {

namespace {

constexpr std::string_view kCodeInBundle = "/Contents/MacOS/Quillets";
constexpr std::string_view kBundleName = "/Quillets.bundle";

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

int TakeLoadedBundle(dl_phdr_info* image, std::size_t, void* path)
{
    const std::string end = std::string(kBundleName) + std::string(kCodeInBundle);
    if (!EndsWith(image->dlpi_name, end))
        return 0;
    *static_cast<std::string*>(path) = image->dlpi_name;
    return 1;
}

// Two plug-ins may each bring a bundle of their own; the first one loaded serves both, so that there
// is one object and one place for what the user sets.
void* OpenCode(const std::string& pluginFolder)
{
    std::string loaded;
    dl_iterate_phdr(TakeLoadedBundle, &loaded);
    if (!loaded.empty()) {
        if (void* const code = dlopen(loaded.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD))
            return code;
    }
    for (const std::string& bundle : {pluginFolder + std::string(kBundleName), std::string(CORVANE_BUNDLE)}) {
        if (void* const code = dlopen((bundle + std::string(kCodeInBundle)).c_str(), RTLD_NOW | RTLD_LOCAL))
            return code;
    }
    return nullptr;
}

} // namespace

struct CServices::Layer {
    decltype(&::GetApplicationEventTarget) GetApplicationEventTarget = nullptr;
    decltype(&::InstallEventHandler) InstallEventHandler = nullptr;
    decltype(&::RemoveEventHandler) RemoveEventHandler = nullptr;
    decltype(&::DisposeWindow) DisposeWindow = nullptr;
    decltype(&::CVCreateForeignWindow) CreateForeignWindow = nullptr;
    decltype(&::CVPump) Pump = nullptr;

    // The layer's names carry a prefix at the linker's level. dlsym looks through what the bundle
    // depends on too, so its handle finds them.
    template <typename Call>
    static bool Find(void* code, const char* name, Call& call)
    {
        call = reinterpret_cast<Call>(dlsym(code, name));
        return call != nullptr;
    }

    bool FindAll(void* code)
    {
        return Find(code, "cv_GetApplicationEventTarget", GetApplicationEventTarget) &&
               Find(code, "cv_InstallEventHandler", InstallEventHandler) &&
               Find(code, "cv_RemoveEventHandler", RemoveEventHandler) &&
               Find(code, "cv_DisposeWindow", DisposeWindow) &&
               Find(code, "cv_CVCreateForeignWindow", CreateForeignWindow) && Find(code, "cv_CVPump", Pump);
    }
};

std::unique_ptr<CServices> CServices::Load(const std::string& pluginFolder)
{
    void* const code = OpenCode(pluginFolder);
    if (!code)
        return nullptr;
    const auto factory = reinterpret_cast<GetLibProductManagerProc>(dlsym(code, "GetLibProductManager"));
    auto layer = std::make_unique<Layer>();
    if (!factory || !layer->FindAll(code)) {
        dlclose(code);
        return nullptr;
    }
    return std::unique_ptr<CServices>(new CServices(code, factory(), std::move(layer)));
}

CServices::CServices(void* code, IProductManager* manager, std::unique_ptr<Layer> layer)
    : m_code(code), m_manager(manager), m_layer(std::move(layer))
{
}

CServices::~CServices()
{
    if (m_parent)
        m_layer->DisposeWindow(m_parent); // and with it the dialogs that are modal to it
    if (m_handler)
        (void)m_layer->RemoveEventHandler(m_handler);
    dlclose(m_code);
}

void CServices::OnDialogEnd(std::function<void()> ended)
{
    m_ended = std::move(ended);
    if (m_handler)
        return;
    const EventTypeSpec end = {'cvev', 'iend'};
    (void)m_layer->InstallEventHandler(m_layer->GetApplicationEventTarget(), DialogEnded, 1, &end, this,
                                       &m_handler); // without it, the next drag asks anyway
}

OSStatus CServices::DialogEnded(EventHandlerCallRef, EventRef, void* services)
{
    const auto& self = *static_cast<CServices*>(services);
    if (self.m_ended)
        self.m_ended();
    return eventNotHandledErr; // others want to hear it too
}

void CServices::OpenInfoDialog(std::uint64_t hostWindow)
{
    if (!m_parent && hostWindow != 0)
        (void)m_layer->CreateForeignWindow(hostWindow, &m_parent); // without it, the dialog has no parent
    m_used = true;
    m_manager->InfoDialog(m_parent, false);
}

void CServices::OpenHelp(unsigned int topic)
{
    m_used = true;
    m_manager->OpenHelp(nullptr, topic);
}

void CServices::Pump()
{
    if (m_used)
        (void)m_layer->Pump();
}

} // namespace quillet
