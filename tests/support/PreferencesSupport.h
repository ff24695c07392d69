// tests/support/PreferencesSupport.h
//
// Settings folders for one test, and the ways in which tests look at and disturb the files.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/BaseProductManager.h"
#include "tests/support/Support.h"

/// Has machine-wide and own settings in folders of its own.
class CPreferencesTest : public testing::Test {
protected:
    CPreferencesTest();

    /// The file of a domain, by its full identifier.
    static std::string MachineFile(const std::string& domain = "com.corvane.common");
    static std::string UserFile(const std::string& domain = "com.corvane.common");

    /// Runs `work` in a child process that may not write machine-wide and has no more rights than
    /// any user; answers as RunInChild does.
    int RunAsUser(const std::function<int()>& work);

    const CTemporaryFolder m_folder;
    const CEnvironment m_dirs;
    const CEnvironment m_config;
    const CEnvironment m_home;
};

/// The interface's operations on an object of the component's class.
bool SetKey(const std::string& section, const std::string& key, const std::string& value);
/// Answers the value, "(none)" where it is not found.
std::string GetKey(const std::string& section, const std::string& key);

/// Answers the names in a folder, sorted; none if it does not exist.
std::vector<std::string> NamesIn(const std::string& folder);
/// Answers the rights of a file or folder.
unsigned ModeOf(const std::string& path);
/// Writes an XML property list with `body` in its dictionary.
void WriteXml(const std::string& path, const std::string& body);
/// Replaces a file by renaming another over it, as careful programs do.
void ReplaceFile(const std::string& path, const std::string& bytes);
