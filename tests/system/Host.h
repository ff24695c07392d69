// tests/system/Host.h
//
// Host programs that are not ours, each brought to show one plug-in's window.
#pragma once

#include <memory>

#include "tests/support/Screen.h"

class IHost {
public:
    virtual ~IHost() = default;

    virtual CProgram& Program() = 0;
    /// Asks for the plug-in's window where the program does not show it by itself. To be called until
    /// the window is there.
    virtual void ShowPlugin() = 0;
    /// Whether the program lives on when that window is closed; then it can show it again.
    virtual bool OutlivesWindow() const = 0;
};

/// Starts a host on a screen.
/// @param program  "jalv.gtk3", "jalv.qt5" or "audacity".
/// @param folder   of its own, for what the program keeps.
/// @param uri      names the plug-in, which has to lie where LV2_PATH says.
/// @param vendor   the plug-in's maker and
/// @param name     its name, as its description gives them.
std::unique_ptr<IHost> StartHost(const std::string& program, const CScreen& screen, const std::string& folder,
                                 const std::string& uri, const std::string& vendor, const std::string& name);
