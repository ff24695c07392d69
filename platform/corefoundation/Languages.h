// platform/corefoundation/Languages.h
//
// The folders that hold a bundle's localised resources, in the order in which the user wants them.
#pragma once

#include <string>
#include <vector>

/// Answers folder names such as "de_AT.lproj", "de.lproj", "German.lproj", the user's languages
/// first (LANGUAGE, else LC_ALL, LC_MESSAGES, LANG, as gettext reads them), then English, then
/// "Base.lproj"; each once. Reads the environment anew at every call.
const std::vector<std::string>& LanguageFolders();
