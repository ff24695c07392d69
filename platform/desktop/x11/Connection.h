// platform/desktop/x11/Connection.h
//
// The connection to the X server: atoms, the visual that windows use, answers that come later. No
// call here waits for the server but Open and Fetch.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <csignal>
#include <xcb/xcb.h>

/// Gives back what malloc gave.
struct CFree {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using CReply = std::unique_ptr<T, CFree>;

/// Every atom that we use; their names stand in the same order in Connection.cpp.
enum class Atom {
    WmProtocols,
    WmDeleteWindow,
    WmClientLeader,
    WmState,
    NetWmName,
    NetWmPing,
    NetWmPid,
    NetWmIcon,
    NetWmWindowType,
    NetWmWindowTypeDialog,
    NetWmWindowTypePopupMenu,
    NetWmState,
    NetWmStateModal,
    NetActiveWindow,
    NetWmUserTime,
    NetSupportingWmCheck,
    MotifWmHints,
    Manager,
    XSettings,
    XSettingsOwner,
    Utf8String,
    Text,
    PlainUtf8,
    Plain,
    Targets,
    Timestamp,
    Incr,
    Clipboard,
    ClipboardText,
    SelectionText,
    ServerTime,
    Count
};

/// Keeps a server that dies from ending the process: while one of these lives, a write to its
/// closed connection is an error of that write alone.
class CQuietPipe {
public:
    CQuietPipe();
    ~CQuietPipe();
    CQuietPipe(const CQuietPipe&) = delete;
    CQuietPipe& operator=(const CQuietPipe&) = delete;

private:
    sigset_t m_before;
    bool m_waiting = false; ///< The signal was there before us, and is somebody else's.
};

class CConnection {
public:
    /// Connects to the display of the environment; null when there is none or it cannot show our
    /// pixels. Waits for the server a few times.
    static std::unique_ptr<CConnection> Open();
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    xcb_connection_t* Get() const { return m_connection; }
    const xcb_screen_t& Screen() const { return *m_screen; }
    xcb_atom_t operator[](Atom atom) const { return m_atoms[static_cast<std::size_t>(atom)]; }
    /// A window of ours that is never shown: leader of the others, owner of selections.
    xcb_window_t Leader() const { return m_leader; }
    xcb_visualid_t Visual() const { return m_visual; }
    std::uint8_t Depth() const { return m_depth; }
    xcb_colormap_t Colormap() const { return m_colormap; }
    xcb_gcontext_t Gc() const { return m_gc; }
    /// The longest request, in bytes.
    std::size_t LongestRequest() const { return m_longestRequest; }
    bool IsDead() const { return xcb_connection_has_error(m_connection) != 0; }
    void Flush() { (void)xcb_flush(m_connection); } // failure shows in IsDead
    /// Writing and waiting read as well what the server has sent. Answers whether something came so
    /// since NoteTaken: no descriptor shows it any more.
    bool HasUntaken() const { return xcb_total_read(m_connection) != m_taken; }
    /// All that was read has been taken.
    void NoteTaken() { m_taken = xcb_total_read(m_connection); }

    void SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view bytes);
    void SetWords(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& words);
    void SendToRoot(xcb_window_t window, Atom type, const std::uint32_t (&words)[5]);

    /// Has `done` called with the answer to a request, or with null for an error, once it is there.
    using Done = std::function<void(void* reply)>;
    void Await(unsigned sequence, Done done);
    /// Calls back for the answers that came before an event that was read with them; for null, for all
    /// that have come.
    void TakeAnswers(const xcb_generic_event_t* next);

    /// Asks for a whole property, without its end where it is longer than `longest` bytes.
    xcb_get_property_cookie_t AskProperty(xcb_window_t window, xcb_atom_t property, bool remove = false,
                                          std::size_t longest = 1U << 24) const;
    static std::string BytesOf(const xcb_get_property_reply_t* reply);

private:
    explicit CConnection(xcb_connection_t* connection) : m_connection(connection) {}
    bool FindVisual();
    bool Prepare();

    struct Answer {
        unsigned sequence;
        Done done;
    };

    xcb_connection_t* const m_connection;
    xcb_screen_t* m_screen = nullptr;
    xcb_atom_t m_atoms[static_cast<std::size_t>(Atom::Count)] = {};
    xcb_window_t m_leader = 0;
    xcb_visualid_t m_visual = 0;
    xcb_colormap_t m_colormap = 0;
    xcb_gcontext_t m_gc = 0;
    std::uint8_t m_depth = 0;
    std::size_t m_longestRequest = 0;
    std::uint64_t m_taken = 0; ///< Of the bytes that were read.
    std::list<Answer> m_answers;
    int m_screenNumber = 0;
};
