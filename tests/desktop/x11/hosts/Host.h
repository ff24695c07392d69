// tests/desktop/x11/hosts/Host.h
//
// What every host program does, whichever loop it runs: it shows a dialog, says in lines what
// happens, runs an alert where one is asked for, and ends with the dialog's OK button.
#pragma once

#include <CVPlatform/CVPlatform.h>
#include <Carbon/Carbon.h>

#include <cstdio>
#include <cstring>
#include <functional>

class CHost {
public:
    /// @param bundle  the path of the bundle with the dialog's nib.
    /// @param quit    ends the host's loop.
    CHost(const char* bundle, std::function<void()> quit) : m_quit(std::move(quit))
    {
        const auto* const bytes = reinterpret_cast<const UInt8*>(bundle);
        CFURLRef url =
            CFURLCreateFromFileSystemRepresentation(nullptr, bytes, static_cast<CFIndex>(std::strlen(bundle)), true);
        CFBundleRef resources = CFBundleCreate(nullptr, url);
        IBNibRef nib = nullptr;
        (void)CreateNibReferenceWithCFBundle(resources, CFSTR("Dialog"), &nib);
        (void)CreateWindowFromNib(nib, CFSTR("Dialog"), &m_window); // without it nobody finds the dialog
        DisposeNibReference(nib);
        CFRelease(resources);
        CFRelease(url);
        static constexpr EventTypeSpec kCommand = {kEventClassCommand, kEventCommandProcess};
        EventHandlerRef handler = nullptr;
        (void)InstallEventHandler(GetWindowEventTarget(m_window), Command, 1, &kCommand, this, &handler);
        EventLoopTimerRef timer = nullptr;
        (void)InstallEventLoopTimer(GetMainEventLoop(), 0.05, 0, Timer, this, &timer);
        ShowWindow(m_window);
        SelectWindow(m_window);
    }

    /// To be called by a repeating source of the host's own.
    void Tick()
    {
        constexpr int kEnough = 3;
        if (m_inAlert && ++m_ticks == kEnough)
            Say("the host runs in the alert");
    }

private:
    static void Say(const char* line)
    {
        std::puts(line);
        std::fflush(stdout);
    }
    static void Timer(EventLoopTimerRef, void*) { Say("timer"); }
    static OSStatus Command(EventHandlerCallRef, EventRef event, void* self)
    {
        HICommand command = {};
        (void)GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command, nullptr,
                                &command); // nothing is no command of ours
        static_cast<CHost*>(self)->Obey(command.commandID);
        return noErr;
    }
    void Obey(UInt32 command)
    {
        if (command == 'help')
            Say("help");
        else if (command == 'innr')
            RunAlert();
        else if (command == 'ok  ')
            m_quit();
    }
    void RunAlert()
    {
        DialogRef alert = nullptr;
        DialogItemIndex hit = 0;
        (void)CreateStandardAlert(kAlertNoteAlert, CFSTR("Alert"), nullptr, nullptr, &alert);
        m_inAlert = true;
        const OSStatus status = RunStandardAlert(alert, nullptr, &hit);
        m_inAlert = false;
        Say(status == noErr && hit == kAlertStdAlertOKButton ? "alert answered" : "alert failed");
    }

    const std::function<void()> m_quit;
    WindowRef m_window = nullptr;
    bool m_inAlert = false;
    int m_ticks = 0;
};
