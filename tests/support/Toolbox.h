// tests/support/Toolbox.h
//
// What tests of windows need: a window built from a nib on the headless desktop, and hands to use
// it as people do.
#pragma once

#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Support.h"

/// Has windows stand in memory and the clock driven; once for the process.
void UseHeadlessDesktop();

/// A bundle whose resources are a folder under tests/data.
class CDataBundle {
public:
    explicit CDataBundle(const std::string& resources);
    ~CDataBundle();
    CDataBundle(const CDataBundle&) = delete;
    CDataBundle& operator=(const CDataBundle&) = delete;

    CFBundleRef Get() const { return m_bundle; }
    const std::string& Path() const { return m_folder.Path(); }

private:
    CTemporaryFolder m_folder;
    CFBundleRef m_bundle = nullptr;
};

/// Builds a window from a nib of the bundle; throws on failure.
WindowRef BuildWindow(CFBundleRef bundle, const char* nib, const char* window);

/// Where a test's windows stand.
enum class Stand { InMemory, OnScreen };

/// The window of tests/data/windows/Dialog.nib, shown, selected and pumped.
class CDialog {
public:
    explicit CDialog(Stand stand = Stand::InMemory);
    ~CDialog();
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;

    WindowRef Window() const { return m_window; }
    ControlRef Control(OSType signature, SInt32 id = 0) const;
    std::string Text(OSType signature, SInt32 id = 0) const;
    void SetText(OSType signature, SInt32 id, const char* text) const;
    ControlEditTextSelectionRec Selection(OSType signature, SInt32 id = 0) const;

private:
    WindowRef m_window;
};

/// The middle of a control, in points from the top left of its window's content.
Point MiddleOf(ControlRef control);

// Hands. Each posts and pumps.
void Pump();
void MoveTo(WindowRef window, double x, double y);
void PressAt(WindowRef window, double x, double y, UInt32 modifiers = 0);
void ReleaseAt(WindowRef window, double x, double y);
void ClickAt(WindowRef window, double x, double y, UInt32 modifiers = 0);
void ClickOn(ControlRef control);
void PressKey(UInt32 symbol, UInt32 modifiers = 0, const char* text = nullptr);
/// Presses the key of each ASCII character.
void TypeKeys(const std::string& text);

constexpr UInt32 kReturnKey = 0xFF0D;
constexpr UInt32 kEscapeKey = 0xFF1B;
constexpr UInt32 kTabKey = 0xFF09;
constexpr UInt32 kBackspaceKey = 0xFF08;
constexpr UInt32 kDeleteKey = 0xFFFF;
constexpr UInt32 kLeftKey = 0xFF51;
constexpr UInt32 kRightKey = 0xFF53;
constexpr UInt32 kHomeKey = 0xFF50;
constexpr UInt32 kEndKey = 0xFF57;

/// A handler made of a function, on a target until the end of the scope.
class CListener {
public:
    using Answer = std::function<OSStatus(EventHandlerCallRef, EventRef)>;
    CListener(EventTargetRef target, std::vector<EventTypeSpec> types, Answer answer);
    ~CListener();
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;

    EventHandlerRef Get() const { return m_handler; }
    OSStatus Status() const { return m_status; }

private:
    static OSStatus Call(EventHandlerCallRef call, EventRef event, void* self);

    Answer m_answer;
    EventHandlerRef m_handler = nullptr;
    OSStatus m_status;
};

/// Collects the commands that reach the application's target.
class CCommands {
public:
    CCommands();
    /// The four characters of each, in order, with blanks between them; forgotten then.
    std::string Take();

private:
    std::string m_commands;
    CListener m_listener;
};

/// Reads a parameter of a type that must be there; throws otherwise.
template <typename T>
T ParameterOf(EventRef event, EventParamName name, EventParamType type)
{
    T value = {};
    if (GetEventParameter(event, name, type, nullptr, sizeof value, nullptr, &value) != noErr)
        throw std::runtime_error("no such parameter");
    return value;
}

std::string CodeText(OSType code);
