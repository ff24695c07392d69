// tests/support/Support.cpp
//
// Helpers for tests.
#include "tests/support/Support.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern char** environ;
#if CV_COUNTS
extern "C" void __gcov_dump(); // the compiler's own
#endif

namespace {

int StatusOf(int waited)
{
    return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

int WaitFor(pid_t child)
{
    int waited = 0;
    while (waitpid(child, &waited, 0) < 0 && errno == EINTR) {
    }
    return StatusOf(waited);
}

struct Pipe {
    int ends[2] = {-1, -1};
    Pipe()
    {
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
    }
    ~Pipe()
    {
        Close(0);
        Close(1);
    }
    void Close(int end)
    {
        if (ends[end] >= 0)
            close(ends[end]);
        ends[end] = -1;
    }
};

// Reads both pipes until both writers are gone.
void Drain(Pipe& out, std::string& outText, Pipe& err, std::string& errText)
{
    Pipe* const pipes[] = {&out, &err};
    std::string* const texts[] = {&outText, &errText};
    while (out.ends[0] >= 0 || err.ends[0] >= 0) {
        pollfd waits[2] = {{out.ends[0], POLLIN, 0}, {err.ends[0], POLLIN, 0}};
        (void)poll(waits, 2, -1);
        for (std::size_t index = 0; index < 2; ++index) {
            if (waits[index].revents == 0)
                continue;
            char buffer[4096];
            const ssize_t count = read(pipes[index]->ends[0], buffer, sizeof buffer);
            if (count > 0)
                texts[index]->append(buffer, static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                pipes[index]->Close(0);
        }
    }
}

std::vector<std::string> EnvironmentWith(const std::map<std::string, std::string>& changes)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (changes.find(text.substr(0, text.find('='))) == changes.end())
            result.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty())
            result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char*> PointersTo(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

// A process that ends at once counts nothing of what it did. The program and the bundle count apart.
void KeepCounts()
{
#if CV_COUNTS
    __gcov_dump();
    void* const bundle = dlopen((BuiltBundle() + "/Contents/MacOS/Quillets").c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (const auto dump = bundle ? reinterpret_cast<void (*)()>(dlsym(bundle, "__gcov_dump")) : nullptr)
        dump();
#endif
}

} // namespace

CTemporaryFolder::CTemporaryFolder() : m_path(OwnFolder() + "/XXXXXX")
{
    if (!mkdtemp(m_path.data()))
        throw std::runtime_error("no temporary folder");
}

CTemporaryFolder::~CTemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool FileExists(const std::string& path)
{
    return std::filesystem::exists(path);
}

std::string BuiltBundle()
{
    return CV_BUILD_DIR "/Quillets.bundle";
}

std::string BuiltTool()
{
    return CV_BUILD_DIR "/quillets";
}

std::string DataFile(const std::string& name)
{
    return CV_SOURCE_DIR "/tests/data/" + name;
}

ProgramResult RunProgram(const std::vector<std::string>& words, const std::map<std::string, std::string>& environment)
{
    std::vector<std::string> arguments = words;
    std::vector<std::string> variables = EnvironmentWith(environment);
    Pipe out;
    Pipe err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err.ends[1], 2);
    pid_t child = 0;
    const int error = posix_spawnp(&child, words.front().c_str(), &actions, nullptr, PointersTo(arguments).data(),
                                   PointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    out.Close(1);
    err.Close(1);
    ProgramResult result;
    if (error != 0)
        throw std::runtime_error("cannot start " + words.front());
    Drain(out, result.out, err, result.err);
    result.code = WaitFor(child);
    return result;
}

CEnvironment::CEnvironment(const char* name, const char* value) : m_name(name), m_had(std::getenv(name) != nullptr)
{
    if (m_had)
        m_old = std::getenv(name);
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

CEnvironment::~CEnvironment()
{
    if (m_had)
        setenv(m_name.c_str(), m_old.c_str(), 1);
    else
        unsetenv(m_name.c_str());
}

int RunInChild(const std::function<int()>& work)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int code = work();
        std::fflush(nullptr);
        KeepCounts();
        _exit(testing::Test::HasFailure() ? 99 : code);
    }
    return WaitFor(child);
}

CLoadedBundle::CLoadedBundle(const std::string& bundlePath)
    : m_code(dlopen((bundlePath + "/Contents/MacOS/Quillets").c_str(), RTLD_NOW | RTLD_LOCAL))
{
}

CLoadedBundle::~CLoadedBundle()
{
    if (m_code)
        dlclose(m_code);
}

void* CLoadedBundle::Symbol(const char* name) const
{
    return m_code ? dlsym(m_code, name) : nullptr;
}

IProductManager* CLoadedBundle::Manager() const
{
    const auto factory = reinterpret_cast<GetLibProductManagerProc>(Symbol("GetLibProductManager"));
    return factory ? factory() : nullptr;
}

std::string TextOf(CFStringRef string)
{
    if (!string)
        return "(null)";
    std::string text(
        static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8)) +
            1,
        '\0');
    if (!CFStringGetCString(string, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8))
        return "(not UTF-8)";
    text.resize(text.find('\0'));
    return text;
}

CFStringRef MakeString(const std::string& utf8)
{
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
                                   static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false);
}
