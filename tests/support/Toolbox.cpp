// tests/support/Toolbox.cpp
//
// Posting input at coordinates, on windows of real nibs.
#include "tests/support/Toolbox.h"

#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {

void Require(bool good, const char* what)
{
    if (!good)
        throw std::runtime_error(what);
}

} // namespace

void UseHeadlessDesktop()
{
    Require(CVUseHeadlessDesktop(true) == noErr, "no headless desktop");
}

CDataBundle::CDataBundle(const std::string& resources)
{
    const std::string target = m_folder / "Contents/Resources";
    std::filesystem::create_directories(target);
    std::filesystem::copy(DataFile(resources), target, std::filesystem::copy_options::recursive);
    const std::string path = m_folder.Path();
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                           static_cast<CFIndex>(path.size()), true);
    m_bundle = CFBundleCreate(nullptr, url);
    CFRelease(url);
    Require(m_bundle != nullptr, "no bundle");
}

CDataBundle::~CDataBundle()
{
    CFRelease(m_bundle);
}

WindowRef BuildWindow(CFBundleRef bundle, const char* nib, const char* window)
{
    CFStringRef nibName = MakeString(nib);
    CFStringRef windowName = MakeString(window);
    IBNibRef reference = nullptr;
    WindowRef built = nullptr;
    const OSStatus opened = CreateNibReferenceWithCFBundle(bundle, nibName, &reference);
    const OSStatus made = CreateWindowFromNib(reference, windowName, &built);
    DisposeNibReference(reference);
    CFRelease(windowName);
    CFRelease(nibName);
    Require(opened == noErr && made == noErr && built, "no window");
    return built;
}

CDialog::CDialog(Stand stand)
{
    if (stand == Stand::InMemory)
        UseHeadlessDesktop();
    static const CDataBundle& bundle = *new CDataBundle("windows");
    m_window = BuildWindow(bundle.Get(), "Dialog", "Dialog");
    ShowWindow(m_window);
    SelectWindow(m_window);
    Pump();
}

CDialog::~CDialog()
{
    DisposeWindow(m_window);
    Pump();
    CVAdvanceTime(10); // so that the next test's click is no double click
}

ControlRef CDialog::Control(OSType signature, SInt32 id) const
{
    const ControlID wanted = {signature, id};
    ControlRef control = nullptr;
    (void)GetControlByID(m_window, &wanted, &control);
    Require(control != nullptr, "no control");
    return control;
}

std::string CDialog::Text(OSType signature, SInt32 id) const
{
    CFStringRef text = nullptr;
    const OSErr status = GetControlData(Control(signature, id), kControlEntireControl, kControlEditTextCFStringTag,
                                        sizeof text, &text, nullptr);
    Require(status == noErr, "no text");
    std::string utf8 = TextOf(text);
    CFRelease(text);
    return utf8;
}

void CDialog::SetText(OSType signature, SInt32 id, const char* text) const
{
    CFStringRef string = MakeString(text);
    Require(SetControlData(Control(signature, id), kControlEntireControl, kControlEditTextCFStringTag, sizeof string,
                           &string) == noErr,
            "not set");
    CFRelease(string);
}

ControlEditTextSelectionRec CDialog::Selection(OSType signature, SInt32 id) const
{
    ControlEditTextSelectionRec selection = {-1, -1};
    (void)GetControlData(Control(signature, id), kControlEntireControl, kControlEditTextSelectionTag, sizeof selection,
                         &selection, nullptr);
    return selection;
}

Point MiddleOf(ControlRef control)
{
    HIRect frame = {};
    Require(HIViewGetFrame(control, &frame) == noErr, "no such control");
    double x = frame.origin.x + frame.size.width / 2;
    double y = frame.origin.y + frame.size.height / 2;
    for (HIViewRef view = HIViewGetSuperview(control); view; view = HIViewGetSuperview(view)) {
        (void)HIViewGetFrame(view, &frame); // it holds a view, so it is one
        x += frame.origin.x;
        y += frame.origin.y;
    }
    return {static_cast<short>(y), static_cast<short>(x)};
}

void Pump()
{
    Require(CVPump() == noErr, "not pumped");
}

void MoveTo(WindowRef window, double x, double y)
{
    Require(CVPostPointer(window, kCVPointerMove, x, y, 0, 0) == noErr, "not posted");
    Pump();
}

void PressAt(WindowRef window, double x, double y, UInt32 modifiers)
{
    Require(CVPostPointer(window, kCVPointerPress, x, y, kCVButtonLeft, modifiers) == noErr, "not posted");
    Pump();
}

void ReleaseAt(WindowRef window, double x, double y)
{
    Require(CVPostPointer(window, kCVPointerRelease, x, y, kCVButtonLeft, 0) == noErr, "not posted");
    Pump();
}

void ClickAt(WindowRef window, double x, double y, UInt32 modifiers)
{
    // Both at once: the press may dispose of the window.
    Require(CVPostPointer(window, kCVPointerPress, x, y, kCVButtonLeft, modifiers) == noErr, "not posted");
    Require(CVPostPointer(window, kCVPointerRelease, x, y, kCVButtonLeft, modifiers) == noErr, "not posted");
    Pump();
}

void ClickOn(ControlRef control)
{
    const Point middle = MiddleOf(control);
    CVAdvanceTime(1);
    ClickAt(GetControlOwner(control), middle.h, middle.v);
}

void PressKey(UInt32 symbol, UInt32 modifiers, const char* text)
{
    Require(CVPostKey(symbol, text, modifiers) == noErr, "not posted");
    Pump();
}

void TypeKeys(const std::string& text)
{
    for (const char character : text)
        PressKey(static_cast<unsigned char>(character), 0, std::string(1, character).c_str());
}

CListener::CListener(EventTargetRef target, std::vector<EventTypeSpec> types, Answer answer)
    : m_answer(std::move(answer)),
      m_status(InstallEventHandler(target, Call, static_cast<ItemCount>(types.size()), types.data(), this, &m_handler))
{
}

CListener::~CListener()
{
    (void)RemoveEventHandler(m_handler); // gone already where its target is
}

OSStatus CListener::Call(EventHandlerCallRef call, EventRef event, void* self)
{
    return static_cast<CListener*>(self)->m_answer(call, event);
}

CCommands::CCommands()
    : m_listener(GetApplicationEventTarget(), {{kEventClassCommand, kEventCommandProcess}},
                 [this](EventHandlerCallRef, EventRef event) {
                     const auto command = ParameterOf<HICommand>(event, kEventParamDirectObject, typeHICommand);
                     m_commands += (m_commands.empty() ? "" : " ") + CodeText(command.commandID);
                     return OSStatus{noErr};
                 })
{
}

std::string CCommands::Take()
{
    return std::exchange(m_commands, {});
}

std::string CodeText(OSType code)
{
    std::string text;
    for (const unsigned shift : {24U, 16U, 8U, 0U})
        text += static_cast<char>(code >> shift);
    return text;
}
