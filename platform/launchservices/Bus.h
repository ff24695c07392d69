// platform/launchservices/Bus.h
//
// Opening through the session bus: the desktop portal, which is a sandbox's way out, and
// applications that are started by the bus alone. A bus may take its time, so these calls block
// and the launcher makes them on a thread of their own.
#pragma once

#include <string>
#include <vector>

#include "platform/launchservices/ILauncher.h"

/// Asks the desktop portal to open one thing and waits for its end, which may be the user's choice
/// of an application.
/// @return false where there is no portal or it could not; a user's refusal is no failure.
/// @source org.freedesktop.portal.OpenURI, versions 1 to 5.
bool OpenThroughPortal(const LaunchItem& item);

/// Has the bus start the application of the entry `id` ("org.example.Viewer") and hands it `items`.
/// @source Desktop Entry Specification 1.5, "D-Bus Activation".
bool OpenThroughActivation(const std::string& id, const std::vector<LaunchItem>& items);
