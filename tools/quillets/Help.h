// tools/quillets/Help.h
//
// Which page the component opens for a topic, and in which application.
#pragma once

#include <string>

#include "frame/IProductManager.h"

/// A page as the component asks for it to be opened.
struct HelpPage {
    std::string path;   ///< Empty where the component opens nothing.
    std::string viewer; ///< The application's file; empty where the user's default is meant.
};

/// Lets the component open help and takes the page in the viewer's place; starts no program.
HelpPage FindHelpPage(IProductManager& manager, unsigned topic);

/// Opens a page in its viewer, else in the user's default one. Returns when it is handed over.
OSStatus OpenHelpPage(const HelpPage& page);

/// Answers the application that would show `page`, as people and as the file system name it; empty
/// where there is none.
std::string DescribeViewer(const HelpPage& page);
