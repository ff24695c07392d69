// platform/launchservices/ILauncher.h
//
// The seam between Launch Services' calls and what finds and starts programs. The one launcher is
// a module of its own, so that a process that never opens anything never loads GLib.
#pragma once

#include <string>
#include <vector>

/// One thing to open.
struct LaunchItem {
    std::string uri;  ///< Absolute; a local file's begins "file:///".
    std::string path; ///< The local file, as the file system has it; empty for anything else.
};

enum class Launch {
    Started,       ///< Or, where the desktop's own service does it, asked for.
    NoApplication, ///< Nobody opens such a thing.
    Failed         ///< The application is there and could not be started.
};

/// Every operation may be called from any thread, returns at once and waits for no other program.
/// An application is named by the path of its desktop entry; an empty path names none.
class ILauncher {
public:
    virtual ~ILauncher() = default;

    /// Answers the entry whose id is `id`, such as "org.example.Viewer", in the user's folders and
    /// the machine's; empty where there is none or its program is not installed.
    virtual std::string FindEntry(const std::string& id) = 0;
    /// Answers the entry of the user's choice for `item`: by its type for a local file, HTML where
    /// that says nothing, and by its scheme for anything else; empty where there is none.
    virtual std::string DefaultEntry(const LaunchItem& item) = 0;
    /// Answers an entry's name in the user's language; empty for what is no entry.
    virtual std::string NameOfEntry(const std::string& entry) = 0;
    /// Answers whether this process is in a sandbox, whose desktop portal opens what has no
    /// application inside.
    virtual bool HasPortal() = 0;
    /// Opens `items` with the application of `entry`; each with its default where `entry` names
    /// none.
    virtual Launch Open(const std::string& entry, const std::vector<LaunchItem>& items) = 0;
    /// Waits until no service of the desktop is being asked any more, at most `seconds`.
    /// @return whether none is.
    virtual bool Finish(double seconds) = 0;
};

/// What the module exports: answers its launcher, which is never destroyed. The name changes with
/// the seam, so that a layer never meets the module of another version.
using GetLauncherProc = ILauncher* (*)();
constexpr char kGetLauncherName[] = "CVGetLauncher1";
