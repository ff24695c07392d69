// fuzz/ExecLineFuzz.cpp
//
// Command lines of desktop entries: the first byte says how many things are opened, NULs part the
// words. What is opened has to arrive whole, as an argument or a part of one; where the argument is
// the text of a command, nothing of it may be left for a shell to read.
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"
#include "platform/launchservices/ExecLine.h"

namespace {

constexpr char kMark = '\1'; // stands in what is opened alone

bool HasBlank(const std::string& text)
{
    return text.find_first_of(" \t\n") != std::string::npos;
}

void Remove(std::string& text, const std::string& part)
{
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at))
        text.erase(at, part.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    Arguments words(1);
    for (std::size_t at = 1; at < size; ++at) {
        if (data[at] == 0)
            words.emplace_back();
        else if (data[at] != kMark)
            words.back().push_back(static_cast<char>(data[at]));
    }
    const std::string path = "/\1 $(touch x);`id`'\"%u\n";
    const LaunchItem file = {"file:///%01%20%24(touch%20x)\1", path};
    const LaunchItem address = {"scheme:\1'$(id)'", ""};
    const std::vector<LaunchItem> all = {file, address, file};
    const std::vector<LaunchItem> items(all.begin(), all.begin() + data[0] % 4);
    const auto lines = ExpandExecLine(words, items, {"Name", "icon", "/entry.desktop"});
    Require(lines.size() == 1 || lines.size() == items.size());
    for (const Arguments& arguments : lines) {
        Require(arguments.size() <= words.size() * (items.size() + 2) + 1);
        for (const std::string& argument : arguments) {
            std::string rest = argument;
            for (const std::string& whole : {file.path, file.uri, address.uri})
                Remove(rest, whole);
            Require(rest.find(kMark) == std::string::npos); // nothing was taken apart
            Require(rest == argument || !HasBlank(rest));   // no command's text holds it as it is
        }
    }
    return 0;
}
