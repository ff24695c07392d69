// platform/desktop/x11/XSettings.h
//
// Reads what a desktop publishes for all programs: the XSETTINGS property and the X resources. The
// bytes are somebody else's: they are read with every bound checked.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// The settings that we look at; empty where the desktop says nothing.
struct XSettings {
    std::map<std::string, std::int32_t> numbers;
    std::map<std::string, std::string> texts;
};

/// Reads an XSETTINGS property; nullopt when it is damaged.
/// @source XSETTINGS 0.5, "Format of the _XSETTINGS_SETTINGS property".
std::optional<XSettings> ReadXSettings(std::string_view bytes);

/// Answers the number that a resource has, for example "Xft.dpi"; nullopt without one.
std::optional<double> FindResource(std::string_view resources, std::string_view name);

/// Pixels per point that the two ask for, 0.5 to 8.
double ScaleFrom(const XSettings& settings, std::string_view resources);
/// Whether the theme's name says that it is a dark one.
bool IsDarkTheme(const XSettings& settings);
