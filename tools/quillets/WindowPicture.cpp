// tools/quillets/WindowPicture.cpp
//
// Reads the options that name a picture of a window.
#include "tools/quillets/WindowPicture.h"

#include <algorithm>
#include <charconv>

#include "tools/quillets/Command.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr double kSmallestScale = 0.25;
constexpr double kLargestScale = 8;

// Takes an option and the word behind it; false where it is not there.
bool TakeValue(std::vector<std::string_view>& words, std::string_view option, std::string_view& value)
{
    const auto found = std::find(words.begin(), words.end(), option);
    if (found == words.end())
        return false;
    const bool isLast = found + 1 == words.end();
    value = isLast ? "" : *(found + 1);
    words.erase(found, found + (isLast ? 1 : 2));
    return true;
}

bool ReadScale(std::string_view word, double& scale)
{
    const auto result = std::from_chars(word.data(), word.data() + word.size(), scale);
    return result.ec == std::errc() && result.ptr == word.data() + word.size() && scale >= kSmallestScale &&
           scale <= kLargestScale;
}

} // namespace

std::string TakePictureOptions(std::vector<std::string_view>& words, WindowPicture& picture)
{
    picture.dark = TakeFlag(words, "--dark");
    std::string_view value;
    while (TakeValue(words, "--scale", value)) {
        if (!ReadScale(value, picture.scale))
            return "--scale needs a number from 0.25 to 8";
    }
    while (TakeValue(words, "--picture", value)) {
        picture.path = value;
        if (value.empty())
            return "--picture needs a path";
    }
    return "";
}

bool Save(const WindowPicture& picture, WindowRef window)
{
    return CVSaveWindowPicture(window, picture.path.c_str(), picture.scale, picture.dark) == noErr;
}
