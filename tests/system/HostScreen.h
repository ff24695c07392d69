// tests/system/HostScreen.h
//
// A screen of its own for host programs that are not ours: a virtual X server, a window manager and
// a sound server without sound hardware, with hands to click and eyes to look.
#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Support.h"

/// A program that runs beside the test; ended, if need be by force, at the end of the scope.
class CProgram {
public:
    /// @param log  where what it prints goes.
    CProgram(const std::vector<std::string>& words, const std::string& log);
    ~CProgram();
    CProgram(const CProgram&) = delete;
    CProgram& operator=(const CProgram&) = delete;

    bool IsRunning();
    /// Asks it to end and waits, at most 10 seconds.
    /// @return its exit status, 128 and the signal's number where one ended it, -1 where it had to be killed.
    int End();
    std::string Log() const { return ReadFile(m_log); }

private:
    std::string m_log;
    pid_t m_process = 0;
    std::optional<int> m_status;
};

/// Asks `condition` until it holds, at most `seconds`.
bool WaitFor(const std::function<bool()>& condition, double seconds = 60.0);

struct ScreenWindow {
    xcb_window_t id = 0;
    int x = 0, y = 0, width = 0, height = 0; ///< Root-relative, without decoration.
};

class CHostScreen {
public:
    /// Starts the servers; throws when one does not come up.
    CHostScreen();
    ~CHostScreen();
    CHostScreen(const CHostScreen&) = delete;
    CHostScreen& operator=(const CHostScreen&) = delete;

    /// Answers the visible windows whose title contains `title`, those further inside last.
    std::vector<ScreenWindow> Find(const std::string& title) const;
    /// Waits for the window furthest inside of those with that title, and until it stands still: window
    /// managers move what they are asked to show.
    std::optional<ScreenWindow> WaitForWindow(const std::string& title) const;
    /// Answers the value of a property that holds one window or atom; 0 for none.
    xcb_window_t PropertyOf(xcb_window_t window, const char* property) const;
    /// Answers whether the window manager holds a window in a state.
    bool HasState(xcb_window_t window, const char* state) const;
    /// Answers whether `inner` lies in `outer` or is it.
    bool IsInside(xcb_window_t inner, xcb_window_t outer) const;

    void MoveTo(int x, int y) const;
    void Press(bool down) const;
    void Click(int x, int y) const;
    void Drag(int fromX, int fromY, int toX, int toY) const;
    /// Asks for a window to stand elsewhere.
    void MoveWindow(xcb_window_t window, int x, int y) const;
    /// Asks a window to close as the window manager's button does.
    void Close(xcb_window_t window) const;

    /// Answers a pixel of the screen, 0xRRGGBB.
    unsigned PixelAt(int x, int y) const;
    /// Writes the screen to a PNG file.
    void Save(const std::string& path) const;

private:
    void Visit(xcb_window_t window, const std::string& title, std::vector<ScreenWindow>& found) const;
    xcb_atom_t Atom(const char* name) const;

    CTemporaryFolder m_folder;
    std::optional<CProgram> m_server, m_manager, m_sound;
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = 0;
};
