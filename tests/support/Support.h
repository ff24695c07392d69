// tests/support/Support.h
//
// What many tests need: files in a folder of their own, programs run to their end, the bundle
// loaded as a plug-in loads it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "frame/IProductManager.h"

/// Leaves a test that needs what CMake's option CV_MODULES left out.
#define SKIP_WITHOUT_MODULES()                                                                                         \
    if (!CV_MODULES)                                                                                                   \
    GTEST_SKIP() << "built without GLib, X11 and Pango"

/// Answers the path of the folder that this test process has for itself.
std::string OwnFolder();

/// A folder that is removed, with all in it, at the end of the scope.
class CTemporaryFolder {
public:
    CTemporaryFolder();
    ~CTemporaryFolder();
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// Writes a file whole, making its folders; throws on failure.
void WriteFile(const std::string& path, const std::string& bytes);
/// Reads a file whole; throws on failure.
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);

/// Where the build put its products.
std::string BuiltBundle();
std::string BuiltTool();
/// A file under tests/data.
std::string DataFile(const std::string& name);

/// What a program left behind.
struct ProgramResult {
    int code = -1; ///< Its exit status; 128 and the signal's number when one ended it.
    std::string out;
    std::string err;
};
/// Runs a program to its end, with the environment of this process and `environment` over it (an
/// empty value removes a variable).
ProgramResult RunProgram(const std::vector<std::string>& words,
                         const std::map<std::string, std::string>& environment = {});

/// Sets an environment variable for a scope; null removes it.
class CEnvironment {
public:
    CEnvironment(const char* name, const char* value);
    ~CEnvironment();
    CEnvironment(const CEnvironment&) = delete;
    CEnvironment& operator=(const CEnvironment&) = delete;

private:
    std::string m_name;
    std::string m_old;
    bool m_had;
};

/// Runs `work` in a child process; answers its exit status, or 128 and the signal's number. What
/// `work` answers is the status; a failed expectation in it makes the status 99.
int RunInChild(const std::function<int()>& work);

/// The bundle, loaded with dlopen and unloaded at the end of the scope.
class CLoadedBundle {
public:
    explicit CLoadedBundle(const std::string& bundlePath = BuiltBundle());
    ~CLoadedBundle();
    CLoadedBundle(const CLoadedBundle&) = delete;
    CLoadedBundle& operator=(const CLoadedBundle&) = delete;

    explicit operator bool() const { return m_code != nullptr; }
    /// The address of an exported name; null when it is absent.
    void* Symbol(const char* name) const;
    IProductManager* Manager() const;

private:
    void* m_code;
};

/// Answers the text of a string in UTF-8; "(null)" for null. Does not release it.
std::string TextOf(CFStringRef string);
/// Makes a string of UTF-8 that the caller releases.
CFStringRef MakeString(const std::string& utf8);
