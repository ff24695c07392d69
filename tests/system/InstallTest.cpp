// tests/system/InstallTest.cpp
//
// What a plug-in developer gets of an installation: found by CMake and pkg-config, used by programs
// that are no part of this tree, and taken away again without a trace.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <sstream>

#include "tests/support/Support.h"

namespace {

constexpr const char* kComponents[] = {"runtime", "development", "tools"};
const std::string kName = "Corvane Audio Quillets for Mac 1.3 ";

void Expect(const ProgramResult& result)
{
    EXPECT_EQ(result.code, 0) << result.out << result.err;
}

// An installation into a folder of its own. One at a time in each build folder, because the
// manifests of what was installed lie there.
class Install : public testing::Test {
protected:
    void SetUp() override
    {
        m_lock = std::fopen(CV_BUILD_DIR "/install-test.lock", "w");
        ASSERT_NE(m_lock, nullptr);
        ASSERT_EQ(flock(fileno(m_lock), LOCK_EX), 0);
        for (const char* const component : kComponents)
            Expect(RunProgram({CV_CMAKE, "--install", CV_BUILD_DIR, "--prefix", m_prefix, "--component", component}));
        ASSERT_FALSE(HasFailure());
    }
    void TearDown() override
    {
        if (m_lock)
            std::fclose(m_lock);
    }

    void Uninstall()
    {
        for (const char* const component : kComponents)
            Expect(
                RunProgram({CV_CMAKE, std::string("-DMANIFEST=" CV_BUILD_DIR "/install_manifest_") + component + ".txt",
                            "-P", CV_SOURCE_DIR "/cmake/Uninstall.cmake"}));
    }

    // Builds the example host as a project of its own; answers its build folder.
    std::string BuildHost()
    {
        const std::string build = m_folder / "host-build";
        Expect(RunProgram({CV_CMAKE, "-S", CV_SOURCE_DIR "/examples/host", "-B", build, "-G", "Ninja",
                           "-DCMAKE_PREFIX_PATH=" + m_prefix, "-DCMAKE_CXX_COMPILER=" CV_CXX}));
        Expect(RunProgram({CV_CMAKE, "--build", build}));
        return build;
    }

    CTemporaryFolder m_folder;
    const std::string m_prefix = m_folder / "the prefix";
    const std::string m_bundle = m_prefix + "/lib/corvane/Quillets.bundle";

private:
    std::FILE* m_lock = nullptr;
};

TEST_F(Install, ProjectOfThreeLinesBuildsRunsAndKeepsASetting)
{
    const std::string build = BuildHost();
    const std::map<std::string, std::string> settings = {{"XDG_CONFIG_HOME", m_folder / "settings"},
                                                         {"XDG_CONFIG_DIRS", m_folder / "machine"}};
    for (const char* const host : {"/host", "/slots"}) {
        const ProgramResult result = RunProgram({build + host}, settings);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(result.out.rfind(kName, 0), 0U) << result.out;
        EXPECT_NE(result.out.find("knobs: circular\n"), std::string::npos) << result.out;
        EXPECT_EQ(result.out.find("seen before: yes\n"), std::string::npos) << result.out;
    }
    EXPECT_NE(RunProgram({build + "/host"}, settings).out.find("seen before: yes\n"), std::string::npos);
}

TEST_F(Install, PkgConfigLeadsToHeadersLibraryAndBundle)
{
    const std::string library = m_prefix + "/" CV_LIBDIR;
    const std::map<std::string, std::string> environment = {
        {"PKG_CONFIG_PATH", library + "/pkgconfig"}, {"PREFIX", m_folder.Path()}, {"LD_LIBRARY_PATH", library}};
    const ProgramResult bundle = RunProgram({"pkg-config", "--variable=bundle", "corvane-product"}, environment);
    Expect(bundle);
    std::string path = bundle.out;
    path.erase(path.find_last_not_of("\n \\") + 1);
    path = std::regex_replace(path, std::regex(R"(\\(.))"), "$1"); // pkg-config escapes the blank for a shell
    EXPECT_TRUE(std::filesystem::equivalent(path, m_bundle)) << path;

    // A program that calls the layer by the Mac's names.
    WriteFile(m_folder / "layer.c", "#include <CVPlatform/CVPlatform.h>\n"
                                    "#include <CoreFoundation/CoreFoundation.h>\n"
                                    "#include <stdio.h>\n"
                                    "int main(void)\n"
                                    "{\n"
                                    "    return puts(CVGetVersion()) < 0 || CFStringGetLength(CFSTR(\"abc\")) != 3;\n"
                                    "}\n");
    Expect(RunProgram(
        {"sh", "-c",
         "cd \"$PREFIX\" && eval cc layer.c -o layer $(pkg-config --cflags --libs corvane-product) && ./layer"},
        environment));
}

TEST_F(Install, EveryHeaderStandsByItself)
{
    const std::string include = m_prefix + "/include/corvane";
    std::string source;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(include)) {
        if (entry.is_regular_file())
            source += "#include <" + std::filesystem::relative(entry.path(), include).string() + ">\n";
    }
    EXPECT_NE(source.find("<frame/IProductManager.h>"), std::string::npos);
    WriteFile(m_folder / "all.cpp", source);
    Expect(RunProgram({CV_CXX, "-std=c++11", "-Wall", "-Wextra", "-Werror", "-Wno-multichar", "-fsyntax-only",
                       "-I" + include, m_folder / "all.cpp"}));
}

TEST_F(Install, ToolFindsTheInstalledBundle)
{
    const ProgramResult result = RunProgram({m_prefix + "/bin/quillets", "identity"});
    Expect(result);
    const std::size_t at = result.out.find("Bundle");
    ASSERT_NE(at, std::string::npos) << result.out;
    std::string path = result.out.substr(result.out.find('/', at));
    path.pop_back();
    EXPECT_TRUE(std::filesystem::equivalent(path, m_bundle)) << path;
}

TEST_F(Install, ModulesLieBesideTheLayerAndInTheBundle)
{
    int modules = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CV_BUILD_DIR)) {
        const std::string name = entry.path().filename().string();
        if (!std::regex_match(name, std::regex(R"(libcvplatform(-.*\.so|\.so\.1))")))
            continue;
        ++modules;
        for (const std::string& folder : {m_prefix + "/" CV_LIBDIR, m_bundle + "/Contents/Frameworks",
                                          std::string(CV_BUILD_DIR "/Quillets.bundle/Contents/Frameworks")})
            EXPECT_TRUE(FileExists(folder + "/" + name)) << folder << "/" << name;
    }
    EXPECT_GT(modules, 0);
}

TEST_F(Install, UninstallLeavesPreferencesAndACopiedBundleThatWorks)
{
    const std::string build = BuildHost();
    const std::string copy = m_folder / "elsewhere/Quillets.bundle";
    std::filesystem::create_directories(m_folder / "elsewhere");
    std::filesystem::copy(m_bundle, copy, std::filesystem::copy_options::recursive);
    WriteFile(m_prefix + "/lib/other.so", "another's");
    Expect(RunProgram({build + "/host"}));
    Uninstall();

    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_prefix)) {
        if (!entry.is_directory() || entry.path().string().find("orvane", m_prefix.size()) != std::string::npos)
            left.push_back(entry.path().string().substr(m_prefix.size()));
    }
    EXPECT_EQ(left, std::vector<std::string>{"/lib/other.so"});
    int settings = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(OwnFolder()))
        settings += entry.path().filename().string().find("com.corvane.examplehost") == 0 ? 1 : 0;
    EXPECT_GT(settings, 0);

    EXPECT_NE(RunProgram({build + "/host"}).code, 0);
    const ProgramResult result = RunProgram({build + "/host", copy});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out.rfind(kName, 0), 0U) << result.out;
}

TEST_F(Install, ManualNamesEveryCommandAndOption)
{
    const ProgramResult manual = RunProgram({"gzip", "-dc", m_prefix + "/share/man/man1/quillets.1.gz"});
    Expect(manual);
    const std::string help = RunProgram({m_prefix + "/bin/quillets", "--help"}).out;
    const std::size_t begin = help.find("Commands:\n") + 10;
    std::istringstream lines(help.substr(begin, help.find("\n\n", begin) - begin));
    int commands = 0;
    for (std::string command, rest; lines >> command && std::getline(lines, rest); ++commands) {
        const std::regex heading("(^|\n)\\.BI?R? \"?" + command + "[ \n]");
        EXPECT_TRUE(std::regex_search(manual.out, heading)) << command << " is not in the manual";
        const std::string usage = RunProgram({m_prefix + "/bin/quillets", command, "--help"}).out;
        const std::regex option(R"(--[a-z][-a-z]*)");
        for (std::sregex_iterator at(usage.begin(), usage.end(), option), end; at != end; ++at) {
            const std::string escaped = std::regex_replace(at->str(), std::regex("-"), R"(\-)");
            EXPECT_NE(manual.out.find(escaped), std::string::npos) << command << " " << at->str();
        }
    }
    EXPECT_GE(commands, 2);
}

} // namespace
