// tools/quillets/WindowPicture.h
//
// The options --picture, --scale and --dark: a window drawn into a file.
#pragma once

#include <Carbon/Carbon.h>

#include <string>
#include <string_view>
#include <vector>

/// What the options ask for.
struct WindowPicture {
    std::string path; ///< Empty: no picture is wanted.
    double scale = 1; ///< Pixels per point.
    bool dark = false;
};

/// Takes the three options and their values out of the words.
/// @return what is wrong with them; empty when nothing is.
std::string TakePictureOptions(std::vector<std::string_view>& words, WindowPicture& picture);
/// Draws a window, shown or not; true where there is a whole picture now.
bool Save(const WindowPicture& picture, WindowRef window);
