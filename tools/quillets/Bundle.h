// tools/quillets/Bundle.h
//
// Finds and loads the bundle, as a plug-in would.
#pragma once

#include <string>

#include "frame/IProductManager.h"
#include "tools/quillets/Command.h"

/// The loaded bundle and its object, which live until the program ends.
struct LoadedBundle {
    CFBundleRef bundle = nullptr;
    IProductManager* manager = nullptr;
    std::string path;    ///< Where it was looked for.
    std::string problem; ///< What is wrong, in one line; empty when `manager` is there.
};

/// Loads the bundle that --bundle names, else the one beside the program, else the installed one.
LoadedBundle LoadBundle(const Arguments& arguments);

/// Answers a URL's path; empty for null. Releases the URL.
std::string TakePath(CFURLRef url);
