// tests/support/Screen.h
//
// A screen of one's own: a virtual X server with a window manager, eyes to look at it and hands to
// use it. Knows nothing of the system under test, so that benchmarks and tests of foreign programs
// have it too.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Program.h"

struct ScreenWindow {
    xcb_window_t id = 0;
    int x = 0, y = 0, width = 0, height = 0; ///< Root-relative, without decoration.
};

/// A part of the screen, rows from the top, each pixel 0xRRGGBB.
struct ScreenImage {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t At(int x, int y) const { return pixels.at(static_cast<std::size_t>(y * width + x)); }
};

/// Reads a PNG file; nothing for what is none.
ScreenImage ReadPicture(const std::string& path);

struct ScreenOptions {
    int width = 1024, height = 768;
    bool manager = true;             ///< Whether a window manager runs on it.
    std::vector<std::string> server; ///< More arguments for the server.
};

class CScreen {
public:
    /// Starts the server and the manager, waits until both serve, and names the display in the
    /// environment (DISPLAY). Throws when one does not come up.
    explicit CScreen(const ScreenOptions& options = {});
    ~CScreen();
    CScreen(const CScreen&) = delete;
    CScreen& operator=(const CScreen&) = delete;

    const std::string& Display() const { return m_display; }
    CProgram& Server() { return *m_server; }
    CProgram& Manager() { return *m_manager; }
    xcb_connection_t* Connection() const { return m_connection; }
    xcb_window_t Root() const { return m_root; }
    xcb_atom_t Atom(const std::string& name) const;

    /// Answers the visible windows whose title contains `title`, those further inside last.
    std::vector<ScreenWindow> Find(const std::string& title) const;
    /// Waits for the window furthest inside of those with that title, and until it stands still: window
    /// managers move what they are asked to show.
    std::optional<ScreenWindow> WaitForWindow(const std::string& title) const;
    /// Answers where a window stands; nothing for one that is gone.
    std::optional<ScreenWindow> PlaceOf(xcb_window_t window) const;
    /// Answers whether `inner` lies in `outer` or is it.
    bool IsInside(xcb_window_t inner, xcb_window_t outer) const;
    /// Answers which window has the keyboard.
    xcb_window_t Focus() const;

    /// Answers a property's bytes; empty for none.
    std::string BytesOf(xcb_window_t window, const std::string& property) const;
    std::vector<std::uint32_t> WordsOf(xcb_window_t window, const std::string& property) const;
    /// Answers the first word of a property, a window or an atom often; 0 for none.
    std::uint32_t PropertyOf(xcb_window_t window, const std::string& property) const;
    /// Answers the names of the atoms that a property holds.
    std::vector<std::string> AtomsOf(xcb_window_t window, const std::string& property) const;
    bool HasProperty(xcb_window_t window, const std::string& property) const;
    /// Answers which window owns a selection; 0 for none.
    xcb_window_t OwnerOf(const std::string& selection) const;
    /// Answers whether the window manager holds a window in a state.
    bool HasState(xcb_window_t window, const char* state) const;
    /// Sets a property; the bytes are counted in units of `format` bits.
    void SetProperty(xcb_window_t window, const std::string& property, const std::string& type, int format,
                     const std::string& bytes) const;
    /// Sets the X resources, for example "Xft.dpi:\t192\n".
    void SetResources(const std::string& resources) const;

    void MoveTo(int x, int y) const;
    /// @param button  1 left, 2 middle, 3 right, 4 to 7 steps of a wheel.
    void Press(bool down, int button = 1) const;
    void Click(int x, int y, int button = 1) const;
    void Drag(int fromX, int fromY, int toX, int toY) const;
    /// Presses or releases the key that has a symbol in the keyboard's first layout.
    void Key(std::uint32_t symbol, bool down) const;
    /// Presses and releases a key, with Shift where the symbol needs it, and with others held.
    void Tap(std::uint32_t symbol, const std::vector<std::uint32_t>& held = {}) const;

    /// Makes and shows a plain window, as a program of old that knows nothing of ours.
    xcb_window_t MakeWindow(int x, int y, int width, int height, const std::string& title) const;
    void DestroyWindow(xcb_window_t window) const;
    /// Asks for a window to stand elsewhere.
    void MoveWindow(xcb_window_t window, int x, int y) const;
    /// Asks a window to close as the window manager's button does.
    void Close(xcb_window_t window) const;
    /// Waits until the server has done what was asked of it here.
    void Sync() const;

    ScreenImage Look(int x, int y, int width, int height) const;
    ScreenImage Look(const ScreenWindow& window) const { return Look(window.x, window.y, window.width, window.height); }
    /// Answers a pixel of the screen, 0xRRGGBB.
    std::uint32_t PixelAt(int x, int y) const;
    /// Writes the screen to a PNG file.
    void Save(const std::string& path) const;

private:
    bool ManagerServes() const;
    void SendToRoot(xcb_window_t window, const std::string& type, std::uint32_t source) const;
    void Visit(xcb_window_t window, const std::string& title, std::vector<ScreenWindow>& found) const;
    xcb_keycode_t CodeOf(std::uint32_t symbol, bool& shifted) const;
    void SendKey(xcb_keycode_t code, bool down) const;

    std::string m_display;
    std::optional<CProgram> m_server, m_manager;
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = 0;
    xcb_window_t m_leader = 0; ///< Never shown.
    int m_width, m_height;
};
