// tests/launchservices/Recorder.cpp
//
// A program that stands in for a viewer: it writes down how it was started and ends.
//
//   recorder FOLDER [ARGUMENT ...]
//
// The record lies in FOLDER, under the process's number; a file "hold" there, a FIFO, is read to
// its end first. A record is a list of texts, each with its kind and its length before it.
#include <dirent.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

extern char** environ;

namespace {

std::string g_record;

void Add(char kind, const std::string& text)
{
    g_record += kind + std::to_string(text.size()) + ":" + text;
}

std::string ReadAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void AddDescriptors()
{
    DIR* const folder = opendir("/proc/self/fd");
    if (!folder)
        return;
    while (const dirent* entry = readdir(folder)) {
        const std::string name = entry->d_name;
        char target[PATH_MAX] = "";
        if (name[0] == '.' || name == std::to_string(dirfd(folder)))
            continue;
        const ssize_t length = readlink(("/proc/self/fd/" + name).c_str(), target, sizeof target - 1);
        Add('d', name + " " + std::string(target, length < 0 ? 0 : static_cast<std::size_t>(length)));
    }
    closedir(folder);
}

} // namespace

int main(int count, char** words)
{
    if (count < 2)
        return 2;
    AddDescriptors(); // before anything here opens one
    const std::string folder = words[1];
    for (int index = 2; index < count; ++index)
        Add('a', words[index]);
    for (char** variable = environ; *variable; ++variable)
        Add('e', *variable);
    Add('s', ReadAll("/proc/self/status"));
    char* const place = getcwd(nullptr, 0);
    Add('f', place ? place : "");
    std::free(place);
    Add('l', getsid(0) == getpid() ? "leads its session" : "in another's session");
    if (access((folder + "/hold").c_str(), F_OK) == 0)
        (void)ReadAll(folder + "/hold");
    const std::string path = folder + "/" + std::to_string(getpid());
    std::ofstream record(path, std::ios::binary);
    record << g_record;
    record.close();
    return record && std::rename(path.c_str(), (path + ".record").c_str()) == 0 ? 0 : 1; // whole, or not there
}
