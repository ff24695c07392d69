// tools/quillets/Preferences.h
//
// Where the settings of a section lie.
#pragma once

#include <string>
#include <string_view>

#include <CVPlatform/CVPlatform.h>
#include <CoreFoundation/CoreFoundation.h>

/// Answers the domain of a section.
std::string PreferenceDomain(std::string_view section);
/// Answers the path of a section's file, there or not; empty where the user has no home.
std::string PreferencePath(std::string_view section, CFStringRef user);
