// platform/launchservices/ExecLine.h
//
// From a desktop entry's command line to the arguments of the programs to start. Finding the entry
// and taking its line apart is the launcher's.
#pragma once

#include <string>
#include <vector>

#include "platform/launchservices/ILauncher.h"

using Arguments = std::vector<std::string>;

/// What the field codes of a command line may stand for besides the things to open.
struct EntryTexts {
    std::string name; ///< In the user's language.
    std::string icon;
    std::string file; ///< The path of the entry itself.
};

/// Puts `items` into the place of the field codes of `words`, the already unquoted line of an
/// entry. A line that takes one thing at a time gives one command line for each.
///
/// An item goes into an argument as it is, whatever characters it holds. An argument that has
/// blanks around its field code is the text of a command for some interpreter, a shell most
/// likely: there an item is a URI, with everything that a shell could read percent-escaped.
/// @source Desktop Entry Specification 1.5, "The Exec key".
std::vector<Arguments> ExpandExecLine(const Arguments& words, const std::vector<LaunchItem>& items,
                                      const EntryTexts& texts);
