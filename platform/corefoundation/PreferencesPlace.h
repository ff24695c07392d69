// platform/corefoundation/PreferencesPlace.h
//
// Where a domain's file lies: folders by the user's environment, the file's name by the domain and
// the machine. Reads no preference and makes no folder.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

enum class PreferencesUser : unsigned char { Any, Current };
enum class PreferencesHost : unsigned char { Any, Current };

/// Whose preferences, and on which machine.
struct PreferencesScope {
    PreferencesUser user;
    PreferencesHost host;
};

/// A domain's file and the rights that it and new folders get.
struct PreferencesPlace {
    std::string folder; ///< Absolute, without a slash at its end.
    std::string file;   ///< Absolute.
    mode_t fileMode;
    mode_t folderMode;
};

/// Finds the place of a domain. The name is the domain's own as far as a file name can hold it;
/// else its beginning and its hash, so that domains that differ never share a file.
/// @return nullopt where the user has no home, or the machine's identity cannot be read just now.
std::optional<PreferencesPlace> FindPreferencesPlace(std::string_view domain, PreferencesScope scope);

/// Tells whether the variables that decide the folders are still what they were. Much cheaper than
/// to look them up again: it compares the environment's own pointers.
class CPreferencesEnvironment {
public:
    /// Remembers the environment as it is now.
    CPreferencesEnvironment() noexcept;
    bool IsUnchanged() const noexcept;

private:
    static constexpr std::size_t kVariables = 3;

    char** m_list;
    std::size_t m_count = 0;
    struct {
        std::size_t at;
        const char* text;
    } m_known[kVariables + 1]; // the last one stands for the list's end
    std::size_t m_knownCount = 0;
};
