// Services.h
//
// The plug-in's way to the product services: finds the bundle, loads it, and lets go of it. Links
// neither the bundle nor the layer, so the plug-in also runs where there is none.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "frame/IProductManager.h"

namespace quillet {

/// One user's hold on the services; every window of the plug-in has its own. Event-loop thread.
class CServices {
public:
    /// Loads the bundle: the one that the process has already, else the one in `pluginFolder`, else
    /// the installed one.
    /// @return null when there is none or it cannot be used.
    static std::unique_ptr<CServices> Load(const std::string& pluginFolder);
    /// Closes the dialogs that stand over this user's window, and lets go of the bundle.
    ~CServices();
    CServices(const CServices&) = delete;
    CServices& operator=(const CServices&) = delete;

    /// The process's one object.
    IProductManager& Manager() const { return *m_manager; }
    /// Has `ended` called whenever an information dialog ended, whoever opened it.
    void OnDialogEnd(std::function<void()> ended);
    /// Opens the information dialog over the host's window.
    /// @param hostWindow  the X11 window that the host gave us, or 0 for none.
    void OpenInfoDialog(std::uint64_t hostWindow);
    void OpenHelp(unsigned int topic);
    /// Serves the services' windows in hosts that do not do it without knowing. Never waits.
    void Pump();

private:
    /// The calls of the layer that we need, found by name in what the bundle brought with it.
    struct Layer;

    CServices(void* code, IProductManager* manager, std::unique_ptr<Layer> layer);
    static OSStatus DialogEnded(EventHandlerCallRef call, EventRef event, void* services);

    void* m_code;
    IProductManager* m_manager;
    std::unique_ptr<Layer> m_layer;
    std::function<void()> m_ended;
    EventHandlerRef m_handler = nullptr;
    WindowRef m_parent = nullptr;
    bool m_used = false; // a window may be open; before, there is nothing to serve
};

} // namespace quillet
