// tools/quillets/Info.cpp
//
// `quillets info`: opens the information dialog as a plug-in would, and tells what happens to it.
#include <Carbon/Carbon.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "tools/quillets/Bundle.h"
#include "tools/quillets/Help.h"
#include "tools/quillets/Output.h"
#include "tools/quillets/WindowPicture.h"
#include <CVPlatform/CVPlatform.h>

namespace {

// What --press names.
struct Pressed {
    std::string_view name;
    ControlID control;
    bool endsTheDialog;
};
constexpr Pressed kPresses[] = {
    {"ok", {'CLOS', 0}, true},
    {"cancel", {'CLOS', 1}, true},
    {"help", {'HELP', 0}, false},
    {"logo", {'LOGO', 0}, false},
};
constexpr ControlID kCancelButton = {'CLOS', 1};

struct Request {
    bool hideKnobOption = false;
    bool headless = false;
    unsigned long long parent = 0;
    WindowPicture picture;
    const Pressed* press = nullptr;
};

// What the callbacks share while the dialog is open.
struct Session {
    IProductManager& manager;
    const Request& request;
    WindowRef window = nullptr;
    bool pictureFailed = false;
};

void Say(const char* subject, std::string_view text)
{
    std::printf("%s: %s\n", subject, Printable(text).c_str());
    std::fflush(stdout); // whoever reads along is to see it when it happens
}

void SayPreference(const char* when, IProductManager& manager)
{
    Say(when, manager.KnobsDragVertical() ? "knobs follow up and down drags" : "knobs follow circular drags");
}

OSStatus OnEnded(EventHandlerCallRef, EventRef, void*)
{
    Say("ended", "the host was told");
    QuitApplicationEventLoop();
    return noErr;
}

void InstallLaunchHandler(Session& session);

// Tells what the component opens, then has it opened as it would have been.
OSStatus OnLaunch(CFURLRef url, CFURLRef application, void* data)
{
    Session& session = *static_cast<Session*>(data);
    CVSetLaunchHandler(nullptr, nullptr);
    OSStatus status = noErr;
    HelpPage page;
    page.path = TakePath(static_cast<CFURLRef>(CFRetain(url)));
    if (page.path.empty()) {
        char address[2048] = "";
        (void)CFStringGetCString(CFURLGetString(url), address, sizeof address, kCFStringEncodingUTF8); // else ""
        Say("address", address);
        status = LSOpenCFURLRef(url, nullptr);
    } else {
        Say("help page", page.path);
        if (application)
            page.viewer = TakePath(static_cast<CFURLRef>(CFRetain(application)));
        status = OpenHelpPage(page);
    }
    if (status != noErr)
        Say("not opened", "no application for it was found, or it did not start");
    InstallLaunchHandler(session);
    return status;
}

void InstallLaunchHandler(Session& session)
{
    CVSetLaunchHandler(OnLaunch, &session);
}

void Press(WindowRef window, const ControlID& id)
{
    ControlRef control = nullptr;
    if (GetControlByID(window, &id, &control) == noErr)
        (void)HIViewSimulateClick(control, kControlButtonPart, 0, nullptr);
}

// Runs once the event loop does, when the dialog stands on the screen.
void OnShown(EventLoopTimerRef, void* data)
{
    Session& session = *static_cast<Session*>(data);
    const Request& request = session.request;
    if (!request.picture.path.empty()) {
        session.pictureFailed = !Save(request.picture, session.window);
        if (!session.pictureFailed)
            Say("picture", request.picture.path);
    }
    if (request.press) {
        Say("pressed", request.press->name);
        Press(session.window, request.press->control);
    }
    // Nobody can answer a dialog that stands on no screen.
    const bool unattended = session.pictureFailed || (request.press && !request.press->endsTheDialog) ||
                            (!request.press && request.headless);
    if (unattended && IsValidWindowPtr(session.window))
        Press(session.window, kCancelButton);
}

int Show(IProductManager& manager, const Request& request)
{
    Session session = {manager, request};
    WindowRef parent = nullptr;
    if (request.parent != 0 && CVCreateForeignWindow(request.parent, &parent) != noErr)
        return Failure("there is no window with the id of --parent");
    static const EventTypeSpec kEnded = {'cvev', 'iend'};
    (void)InstallApplicationEventHandler(OnEnded, 1, &kEnded, nullptr, nullptr);
    InstallLaunchHandler(session);

    SayPreference("preference before", manager);
    manager.InfoDialog(parent, request.hideKnobOption);
    session.window = FrontNonFloatingWindow();
    if (!session.window)
        return Failure("the dialog cannot be opened; quillets doctor tells what is missing");
    CFStringRef title = nullptr;
    char text[1024] = "";
    if (CopyWindowTitleAsCFString(session.window, &title) == noErr) {
        (void)CFStringGetCString(title, text, sizeof text, kCFStringEncodingUTF8); // else it stays empty
        CFRelease(title);
    }
    Say("shown", text);
    EventLoopTimerRef timer = nullptr;
    (void)InstallEventLoopTimer(GetMainEventLoop(), 0, 0, OnShown, &session, &timer);
    RunApplicationEventLoop();
    CVSetLaunchHandler(nullptr, nullptr);
    SayPreference("preference after", manager);
    if (session.pictureFailed)
        return Failure(request.picture.path + ": cannot be written");
    return kExitOk;
}

bool ReadWindowId(std::string_view word, unsigned long long& number)
{
    const bool hexadecimal = word.substr(0, 2) == "0x";
    if (hexadecimal)
        word.remove_prefix(2);
    const auto result = std::from_chars(word.data(), word.data() + word.size(), number, hexadecimal ? 16 : 10);
    return result.ec == std::errc() && result.ptr == word.data() + word.size() && number != 0;
}

// Answers what is wrong with an option's value; empty when nothing is.
std::string ReadOption(std::string_view option, std::string_view value, Request& request)
{
    if (option == "--parent")
        return ReadWindowId(value, request.parent) ? "" : "--parent needs the id of a window";
    for (const Pressed& press : kPresses) {
        if (press.name == value)
            request.press = &press;
    }
    return request.press ? "" : "--press needs ok, cancel, help or logo";
}

int Run(const Arguments& arguments)
{
    Request request;
    std::vector<std::string_view> words = arguments.words;
    request.hideKnobOption = TakeFlag(words, "--hide-knob-option");
    if (const std::string problem = TakePictureOptions(words, request.picture); !problem.empty())
        return UsageError("info", problem);
    for (std::size_t at = 0; at < words.size(); at += 2) {
        const std::string_view option = words[at];
        if (option != "--parent" && option != "--press")
            return UsageError("info", "unexpected argument " + std::string(option));
        const std::string problem = ReadOption(option, at + 1 < words.size() ? words[at + 1] : "", request);
        if (!problem.empty())
            return UsageError("info", problem);
    }
    const char* const display = std::getenv("DISPLAY");
    if (!request.picture.path.empty() && (!display || *display == '\0'))
        request.headless = CVUseHeadlessDesktop(false) == noErr;
    const LoadedBundle loaded = LoadBundle(arguments);
    return loaded.manager ? Show(*loaded.manager, request) : Failure(loaded.problem);
}

} // namespace

const Command kInfoCommand = {
    "info", "open the information dialog and tell what happens",
    "Usage: quillets [--bundle PATH] info [--hide-knob-option] [--parent XID] [--press BUTTON]\n"
    "                     [--picture FILE.png] [--scale N] [--dark]\n"
    "\n"
    "Opens the information dialog as a plug-in would, prints what happens line by line, and ends\n"
    "when the dialog does.\n"
    "\n"
    "  --hide-knob-option  leave the option for circular knobs out\n"
    "  --parent XID        be modal to the X11 window with this id\n"
    "  --press BUTTON      press ok, cancel, help or logo; after help and logo, cancel too\n"
    "  --picture FILE.png  draw the dialog into this file; without a display, on none\n"
    "  --scale N           pixels per point of the picture, 0.25 to 8; 1 when it is left out\n"
    "  --dark              draw the picture in dark colours\n"
    "  --bundle PATH       use this bundle instead of the one beside the program\n"
    "\n"
    "Exit status: 0 the dialog ended, 1 it cannot be opened or the picture not be written, 2 wrong\n"
    "arguments.\n",
    Run};
