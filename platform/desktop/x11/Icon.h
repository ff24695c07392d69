// platform/desktop/x11/Icon.h
//
// The icon that window managers and task lists show for our windows.
#pragma once

#include <cstdint>
#include <vector>

/// Answers icons in the form of the property _NET_WM_ICON: width, height and 0xAARRGGBB pixels,
/// several times.
const std::vector<std::uint32_t>& WindowIcon();
