// tests/launchservices/Viewers.h
//
// A desktop for tests of launching: desktop entries whose programs only write down how they were
// started.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/Support.h"

/// How a program was started.
struct Visit {
    std::vector<std::string> arguments; ///< Without the program's name.
    std::vector<std::string> environment;
    std::vector<std::string> descriptors; ///< "number target"
    std::string status;                   ///< /proc/self/status
    std::string folder;                   ///< The working folder.
    std::string session;                  ///< "leads its session", or not.
};

/// A user's desktop, the only one that this process and its children see while it lives.
class CViewers {
public:
    CViewers();

    /// Installs an application that records; `codes` ends its command line, `more` are further
    /// lines of its entry.
    void Install(const std::string& id, const std::string& codes = "%u", const std::string& more = "");
    /// Installs an application with a command line of its own.
    void InstallLine(const std::string& id, const std::string& line, const std::string& more = "");
    /// Makes an application the user's choice for a type or "x-scheme-handler/…".
    void MakeDefault(const std::string& id, const std::string& type);
    /// The start of a command line that records.
    std::string Recorder() const;
    /// The path of an application's entry.
    std::string Entry(const std::string& id) const;
    /// The folder of the records.
    std::string Folder() const { return m_folder / "records"; }
    /// A folder at the front of PATH.
    std::string Programs() const { return m_folder / "bin"; }

    /// Runs `work` in a process of its own, waits until every program has ended that it started,
    /// directly or not, and answers how these were started.
    std::vector<Visit> VisitsOf(const std::function<void()>& work) const;
    /// The same for records that are there already.
    std::vector<Visit> TakeVisits() const;

private:
    const CTemporaryFolder m_folder;
    const CEnvironment m_dataHome;
    const CEnvironment m_dataDirs;
    const CEnvironment m_configHome;
    const CEnvironment m_configDirs;
    const CEnvironment m_path;
    const CEnvironment m_bus;
    std::string m_defaults;
};

/// Calls CFURLCreateWithString; the caller releases.
CFURLRef MakeUrl(const std::string& text);
/// Answers the URL of a file; the caller releases.
CFURLRef MakeFileUrl(const std::string& path);
