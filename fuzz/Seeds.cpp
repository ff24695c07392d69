// fuzz/Seeds.cpp
//
// Writes the seed corpora: a folder for each target, a file for each input.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/corefoundation/BinaryList.h"

namespace {

void Write(const std::filesystem::path& folder, const std::vector<std::string>& inputs)
{
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& input : inputs)
        std::ofstream(folder / std::to_string(++number), std::ios::binary) << input;
}

std::string Xml(const std::string& value)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"a\" \"b\">\n<plist version=\"1.0\">" +
           value + "</plist>\n";
}

std::vector<std::string> PropertyLists()
{
    return {Xml("<string>a&lt;&#233;&#xE9;<![CDATA[x]]><!-- c --></string>"),
            Xml("<array><integer>-42</integer><integer>0x1F</integer><real>1.5e3</real><true/><false/></array>"),
            Xml("<dict><key>k</key><date>2011-03-11T12:30:00Z</date><key>CF$UID</key><data>AAEC</data></dict>"),
            Xml("<dict><key>CF$UID</key><integer>3</integer></dict>"),
            BinaryList({String("key"), String("twenty characters ab"), Dictionary({0}, {1})}, 2),
            BinaryList({Array({1, 2, 3, 4, 1}), std::string("\x10\x2A", 2), std::string("\x62\0\xE9\x20\xAC", 5),
                        std::string("\x33\x41\xB3\x2D\0\0\0\0\0", 9), std::string("\x23\x3F\xF8\0\0\0\0\0\0", 9)},
                       0),
            BinaryList({Array({1, 1}), Array({2, 2}), std::string("\x80\x03", 2)}, 0),
            BinaryList({std::string("\x42\0\1", 3)}, 0),
            BinaryList({"\x09"}, 0)};
}

std::string Words(const std::vector<unsigned>& words)
{
    std::string bytes;
    for (const unsigned word : words)
        AppendNumber(bytes, word, 2);
    return bytes;
}

// A picture of 2 by 2 pixels with these operations.
std::string Picture(const std::string& operations)
{
    return Words({0, 0, 0, 2, 2, 0x0011, 0x02FF, 0x0C00}) + std::string(24, '\0') + operations + Words({0x00FF});
}

std::vector<std::string> Pictures()
{
    const std::string paint = Words({0x0031, 0, 0, 2, 2});
    std::string modes = Words({0x001F, 0x8000, 0x4000, 0x2000}) + paint;
    for (const bool coloured : {true, false}) {
        modes += Words({0x0013, 2, 0xAA55, 0xAA55, 0xAA55, 0xAA55, 0xFF00, 0x8000, 0});
        if (!coloured)
            modes += Words({0x0009, 0xAA55, 0xAA55, 0xAA55, 0xAA55});
        for (unsigned mode = 0; mode < 40; ++mode)
            modes += Words({0x0008, mode}) + paint;
    }
    // One operation for each way in which a length is told.
    const std::string skipped = Words({0x0024, 2, 0}) + Words({0x0028, 0, 0, 0x0100}) +
                                Words({0x0070, 10, 0, 0, 2, 2}) + Words({0x00D0, 0, 2, 0}) + Words({0x0200, 0, 0}) +
                                Words({0x00A1, 1, 2, 0});
    return {Picture(modes), Picture(skipped)};
}

} // namespace

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    const std::filesystem::path folder = words[1];
    Write(folder / "PropertyListFuzz", PropertyLists());
    Write(folder / "PictFuzz", Pictures());
    Write(folder / "StringFuzz", {std::string("\0text \xC3\xA9 \xF0\x9F\x98\x80", 13), std::string("\1\x80\xDB\xF0", 4),
                                  "\2plain", "\4\xEF\xBB\xBFx", std::string("\3a\0=\xD8\0\xDE", 7),
                                  std::string("\0%d %5.2f %1$x %% %-8ld|%+i", 27), std::string("\0%2$d %1$*2$u", 13)});
    Write(folder / "UrlFuzz", {"http://a/b/c/d;p?q\n../g?y#s", "file://localhost/a%20b/\nc/../d", "/a b/\xC3\xA9/#?%41",
                               "file:///a\n//h/p", "mailto:a@b\n?q", "http://[::1]:80/\n."});
    Write(folder / "ExecLineFuzz", {std::string("\1viewer\0%u", 10), std::string("\3viewer\0%F\0--class=%c", 21),
                                    std::string("\2sh\0-c\0exec viewer %u", 21), std::string("\3a\0%i\0%k%%%x", 12)});
    return 0;
}
