// tools/quillets/Nib.cpp
//
// `quillets nib`: what a Carbon nib folder holds, for whoever brings a Mac bundle's resources over. It reads with
// the layer's own reader, so what it cannot read the loader cannot either.
#include <Carbon/Carbon.h>
#include <stdlib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>

#include "platform/base/Text.h"
#include "platform/hitoolbox/nib/NibReader.h"
#include "tools/quillets/Command.h"
#include "tools/quillets/Output.h"
#include "tools/quillets/WindowPicture.h"
#include <CVPlatform/CVPlatform.h>

namespace {

constexpr struct {
    int number;
    const char* name;
} kWindowClasses[] = {
    {1, "alert"},        {2, "movable alert"},    {3, "modal"},   {4, "movable modal"},
    {5, "floating"},     {6, "document"},         {8, "utility"}, {10, "help"},
    {11, "sheet"},       {12, "toolbar"},         {13, "plain"},  {14, "overlay"},
    {15, "sheet alert"}, {16, "alternate plain"}, {18, "simple"}, {20, "drawer"},
};

constexpr struct {
    const char* file;
    const char* message;
} kOtherArchives[] = {
    {"keyedobjects.nib", "no objects.xib in it, but a keyedobjects.nib: a nib for Cocoa, not Carbon"},
    {"objects.nib", "no objects.xib in it, but an objects.nib: an old nib for Cocoa, not Carbon"},
};

struct Request {
    std::string folder;
    std::optional<std::string> window; // none for all; a name may be empty
    bool json = false;
    WindowPicture picture;
};

/// Reads the folder's objects.xib.
/// @param problem  out: why nothing is answered.
std::optional<std::string> ReadObjects(const std::string& folder, std::string& problem)
{
    std::error_code ignored;
    if (!std::filesystem::exists(folder, ignored)) {
        problem = "there is no such folder";
        return std::nullopt;
    }
    if (!std::filesystem::is_directory(folder, ignored)) {
        problem = "a file, not a folder: not a Carbon nib";
        return std::nullopt;
    }
    const std::string path = folder + "/objects.xib";
    if (!std::filesystem::is_regular_file(path, ignored)) {
        problem = "no objects.xib in it";
        for (const auto& other : kOtherArchives) {
            if (std::filesystem::exists(folder + "/" + other.file, ignored))
                problem = other.message;
        }
        return std::nullopt;
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    std::string bytes;
    char buffer[65536];
    std::size_t count = 1;
    while (file && count > 0 && bytes.size() <= kMaximumNibBytes) { // what is larger is refused anyway
        count = std::fread(buffer, 1, sizeof buffer, file.get());
        bytes.append(buffer, count);
    }
    if (!file || std::ferror(file.get()) != 0) {
        problem = std::string("objects.xib cannot be read: ") + std::strerror(errno);
        return std::nullopt;
    }
    return bytes;
}

std::string CodeText(std::uint32_t code)
{
    const char bytes[] = {static_cast<char>(code >> 24U), static_cast<char>(code >> 16U), static_cast<char>(code >> 8U),
                          static_cast<char>(code)};
    return Utf8OfMacRoman({bytes, sizeof bytes});
}

/// A code as a source would write it: 'NAME', or 0x00001F40 where it is no text.
std::string CodeLiteral(std::uint32_t code)
{
    char number[16] = "";
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(code));
    const std::string text = CodeText(code);
    const bool isText = Printable(text) == text && text.find('\'') == std::string::npos;
    return isText ? "'" + text + "'" : number;
}

std::string WindowClassText(std::int32_t number)
{
    for (const auto& known : kWindowClasses) {
        if (known.number == number)
            return known.name;
    }
    return "class " + std::to_string(number);
}

std::string RectText(const NibRect& rect)
{
    return "(" + std::to_string(rect.left) + ", " + std::to_string(rect.top) + ") " +
           std::to_string(rect.right - rect.left) + " x " + std::to_string(rect.bottom - rect.top);
}

std::string RectJson(const NibRect& rect)
{
    return "{\"top\": " + std::to_string(rect.top) + ", \"left\": " + std::to_string(rect.left) +
           ", \"bottom\": " + std::to_string(rect.bottom) + ", \"right\": " + std::to_string(rect.right) + "}";
}

bool HasValue(const NibControl& control)
{
    return control.value != 0 || control.minimum != 0 || control.maximum != 0;
}

/// What of a control is on: words that both outputs use.
std::vector<const char*> States(const NibControl& control)
{
    const struct {
        bool holds;
        const char* word;
    } states[] = {
        {control.buttonType == NibButtonType::Default, "default"},
        {control.buttonType == NibButtonType::Cancel, "cancel"},
        {!control.enabled, "disabled"},
        {control.hidden, "hidden"},
        {control.isUnicode, "unicode"},
        {control.isSingleLine, "single-line"},
        {control.isPassword, "password"},
        {control.kind == NibClass::ImageView && control.scaleToFit, "scaled"},
        {control.kind == NibClass::ImageView && !control.opaque, "transparent"},
    };
    std::vector<const char*> words;
    for (const auto& state : states) {
        if (state.holds)
            words.push_back(state.word);
    }
    return words;
}

void PrintControl(const NibControl& control, int depth)
{
    std::string line(static_cast<std::size_t>(depth) * 2, ' ');
    line += Printable(control.className);
    if (control.kind == NibClass::Unknown)
        line += " (not known)";
    if (control.signature != 0 || control.id != 0)
        line +=
            " " + (control.signature != 0 ? CodeLiteral(control.signature) : "0") + " " + std::to_string(control.id);
    line += " at " + RectText(control.bounds);
    if (!control.title.empty())
        line += " " + JsonString(control.title);
    if (control.command != 0)
        line += " command " + CodeLiteral(control.command);
    if (HasValue(control))
        line += " value " + std::to_string(control.value) + " of " + std::to_string(control.minimum) + " to " +
                std::to_string(control.maximum);
    for (const char* word : States(control))
        line += std::string(" ") + word;
    std::printf("%s\n", line.c_str());
    for (const NibControl& child : control.children)
        PrintControl(child, depth + 1);
}

void PrintWindow(const std::string& name, const NibWindow& window)
{
    std::printf("Window %s: %s, at %s, title %s%s\n", JsonString(name).c_str(),
                WindowClassText(window.windowClass).c_str(), RectText(window.content).c_str(),
                JsonString(window.title).c_str(), window.compositing ? ", compositing" : "");
    for (const NibControl& control : window.root.children)
        PrintControl(control, 1);
}

std::string CodeJson(std::uint32_t code)
{
    return code != 0 ? JsonString(CodeText(code)) : "null";
}

void PrintControlsJson(const std::vector<NibControl>& controls);

void PrintControlJson(const NibControl& control)
{
    std::printf("{\"class\": %s, \"known\": %s, \"signature\": %s, \"id\": %d, \"bounds\": %s, \"title\": %s, "
                "\"command\": %s, \"enabled\": %s, \"visible\": %s, \"value\": %d, \"minimum\": %d, \"maximum\": %d, "
                "\"states\": [",
                JsonString(control.className).c_str(), control.kind != NibClass::Unknown ? "true" : "false",
                CodeJson(control.signature).c_str(), static_cast<int>(control.id), RectJson(control.bounds).c_str(),
                JsonString(control.title).c_str(), CodeJson(control.command).c_str(),
                control.enabled ? "true" : "false", control.hidden ? "false" : "true", static_cast<int>(control.value),
                static_cast<int>(control.minimum), static_cast<int>(control.maximum));
    const char* separator = "";
    for (const char* word : States(control)) {
        std::printf("%s\"%s\"", separator, word);
        separator = ", ";
    }
    std::printf("], \"controls\": ");
    PrintControlsJson(control.children);
    std::printf("}");
}

void PrintControlsJson(const std::vector<NibControl>& controls)
{
    std::printf("[");
    const char* separator = "";
    for (const NibControl& control : controls) {
        std::printf("%s", separator);
        PrintControlJson(control);
        separator = ", ";
    }
    std::printf("]");
}

void PrintWindowJson(const std::string& name, const NibWindow& window)
{
    std::printf("{\"name\": %s, \"class\": %d, \"className\": \"%s\", \"title\": %s, \"bounds\": %s, "
                "\"position\": %d, \"compositing\": %s, \"standardHandler\": %s, \"controls\": ",
                JsonString(name).c_str(), static_cast<int>(window.windowClass),
                WindowClassText(window.windowClass).c_str(), JsonString(window.title).c_str(),
                RectJson(window.content).c_str(), static_cast<int>(window.position),
                window.compositing ? "true" : "false", window.standardHandler ? "true" : "false");
    PrintControlsJson(window.root.children);
    std::printf("}");
}

int Print(const Request& request, const NibDocument& document)
{
    NibLookup found = NibLookup::NoSuchObject;
    std::vector<std::string> names = document.WindowNames();
    if (request.window) {
        if (!document.FindWindow(*request.window, found))
            return Failure(request.folder + ": " + *request.window +
                           (found == NibLookup::AnotherClass ? " is no window" : ": no object of that name"));
        names = {*request.window};
    }
    if (request.json)
        std::printf("{\"nib\": %s, \"windows\": [", JsonString(request.folder).c_str());
    const char* separator = "";
    for (const std::string& name : names) {
        const NibWindow& window = *document.FindWindow(name, found);
        if (request.json) {
            std::printf("%s", separator);
            PrintWindowJson(name, window);
            separator = ", ";
        } else {
            PrintWindow(name, window);
        }
    }
    if (request.json)
        std::printf("]}\n");
    return kExitOk;
}

/// A bundle that holds nothing but a link to the nib, since nibs are found in bundles; gone with the object.
class CNibBundle {
public:
    explicit CNibBundle(const std::string& nib)
    {
        std::error_code problem;
        std::string pattern = std::filesystem::temp_directory_path(problem).string() + "/quillets-nib-XXXXXX";
        if (problem || !mkdtemp(pattern.data()))
            return;
        m_folder = pattern;
        std::filesystem::create_directories(m_folder + "/Contents/Resources", problem);
        std::filesystem::create_directory_symlink(std::filesystem::absolute(nib, problem),
                                                  m_folder + "/Contents/Resources/Shown.nib", problem);
    }
    ~CNibBundle()
    {
        std::error_code ignored;
        if (!m_folder.empty())
            std::filesystem::remove_all(m_folder, ignored);
    }
    CNibBundle(const CNibBundle&) = delete;
    CNibBundle& operator=(const CNibBundle&) = delete;

    /// Builds a window of the nib, not shown; null where that fails.
    WindowRef BuildWindow(const std::string& name) const
    {
        const auto* const path = reinterpret_cast<const UInt8*>(m_folder.data());
        const CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, path, CFIndex(m_folder.size()), true);
        const CFBundleRef bundle = url ? CFBundleCreate(nullptr, url) : nullptr;
        const CFStringRef title = CFStringCreateWithCString(nullptr, name.c_str(), kCFStringEncodingUTF8);
        IBNibRef nib = nullptr;
        WindowRef window = nullptr;
        if (bundle && title && CreateNibReferenceWithCFBundle(bundle, CFSTR("Shown"), &nib) == noErr) {
            (void)CreateWindowFromNib(nib, title, &window); // else null
            DisposeNibReference(nib);
        }
        for (const CFTypeRef made : {CFTypeRef(url), CFTypeRef(bundle), CFTypeRef(title)}) {
            if (made)
                CFRelease(made);
        }
        return window;
    }

private:
    std::string m_folder;
};

int Draw(const Request& request, const NibDocument& document)
{
    const std::vector<std::string> names = document.WindowNames();
    if (!request.window && names.size() != 1)
        return Failure(request.folder + ": holds " + std::to_string(names.size()) +
                       " windows; name the one for --picture");
    const CNibBundle bundle(request.folder);
    WindowRef const window = bundle.BuildWindow(request.window ? *request.window : names.front());
    if (!window)
        return Failure(request.folder + ": the window cannot be built");
    const bool saved = Save(request.picture, window);
    DisposeWindow(window);
    return saved ? kExitOk : Failure(request.picture.path + ": cannot be written");
}

int Run(const Arguments& arguments)
{
    std::vector<std::string_view> words = arguments.words;
    Request request;
    request.json = TakeFlag(words, "--json");
    if (const std::string problem = TakePictureOptions(words, request.picture); !problem.empty())
        return UsageError("nib", problem);
    for (const std::string_view word : words) {
        if (word.substr(0, 2) == "--")
            return UsageError("nib", "unknown option " + std::string(word));
    }
    if (words.empty() || words[0].empty())
        return UsageError("nib", "which folder?");
    if (words.size() > 2)
        return UsageError("nib", "unexpected argument " + std::string(words[2]));
    request.folder = words[0];
    if (words.size() == 2)
        request.window.emplace(words[1]);

    std::string reason;
    const std::optional<std::string> bytes = ReadObjects(request.folder, reason);
    if (!bytes)
        return Failure(request.folder + ": " + reason);
    NibProblem problem;
    const std::optional<NibDocument> document = ReadNib(*bytes, problem);
    if (!document)
        return Failure(request.folder + "/objects.xib, line " + std::to_string(problem.line) + ", byte " +
                       std::to_string(problem.offset) + ": " + problem.message);
    const int printed = Print(request, *document);
    if (printed != kExitOk || request.picture.path.empty())
        return printed;
    (void)CVUseHeadlessDesktop(false); // nothing is shown
    return Draw(request, *document);
}

} // namespace

const Command kNibCommand = {
    "nib", "list the windows and controls that a Carbon nib folder holds",
    "Usage: quillets nib FOLDER.nib [WINDOW] [--json] [--picture FILE.png] [--scale N] [--dark]\n"
    "\n"
    "Lists the windows of a nib, or the one named, with their controls: class, identifier,\n"
    "place (left, top) and size in pixels, title, command and state. Places of windows are\n"
    "those of their content on the screen, places of controls count from that content.\n"
    "Texts are quoted and escaped as in JSON.\n"
    "\n"
    "  --json              print one JSON object\n"
    "  --picture FILE.png  draw the window into this file as well\n"
    "  --scale N           pixels per point of the picture, 0.25 to 8; 1 when it is left out\n"
    "  --dark              draw the picture in dark colours\n"
    "\n"
    "Exit status: 0 printed, 1 the nib cannot be read or has no such window, or the picture\n"
    "cannot be written (one line on stderr says what is wrong and where), 2 wrong\n"
    "arguments.\n",
    Run};
