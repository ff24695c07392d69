// platform/hitoolbox/nib/NibReader.h
//
// Reads the bytes of a Carbon nib's `objects.xib` into plain records. Finding the folder, choosing its
// language and making windows of the records are left to others.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/hitoolbox/nib/NibRecords.h"

/// A file larger than this is refused, so no more of it need be read.
constexpr std::size_t kMaximumNibBytes = std::size_t{16} << 20U;
/// Controls inside controls and menus inside menus go no deeper.
constexpr int kMaximumNibDepth = 100;
/// Controls, menu items, tabs and the like of one file, all together.
constexpr std::size_t kMaximumNibObjects = 32768;

/// Why a nib cannot be read.
struct NibProblem {
    std::string message;    ///< one line of printable ASCII
    std::size_t line = 0;   ///< from 1; 0 when it concerns the file as a whole
    std::size_t offset = 0; ///< in bytes from the file's start
};

/// What became of looking a window up by name.
enum class NibLookup { Found, NoSuchObject, AnotherClass };

/// All windows of one nib. Owns everything it refers to; reading it is safe from several threads at once.
class NibDocument {
public:
    /// Answers the names of the windows, sorted by their bytes.
    std::vector<std::string> WindowNames() const;
    /// Finds a window by its exact name.
    /// @param result  out: what was found.
    /// @return the window, which lives as long as the document; null unless `result` is Found.
    const NibWindow* FindWindow(std::string_view name, NibLookup& result) const;

private:
    friend class CNibBuilder;
    static constexpr std::size_t kNoWindow = static_cast<std::size_t>(-1);

    std::vector<std::pair<std::string, std::size_t>> m_names; // sorted; kNoWindow names another object
    std::vector<NibWindow> m_windows;
};

/// Reads the bytes of an `objects.xib`, in time that grows with their number and no faster.
/// @param bytes    the whole file; not needed afterwards.
/// @param problem  out: what is wrong and where, when nothing is answered.
/// @return the windows; nothing for bytes that are no Carbon nib, broken, cyclic or beyond the bounds above.
std::optional<NibDocument> ReadNib(std::string_view bytes, NibProblem& problem);
