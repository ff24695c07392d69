// platform/desktop/x11/Keyboard.h
//
// From key codes to symbols and text: the user's layout, dead keys and compose sequences. All of it
// is loaded when the first key is pressed.
#pragma once

#include <memory>
#include <string>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

class CConnection;

/// What a key press means.
struct KeyMeaning {
    std::uint32_t symbol = 0;
    std::string text;
    bool swallowed = false; ///< Part of a sequence that goes on.
    bool waited = false;    ///< The server had to be asked.
};

class CKeyboard {
public:
    explicit CKeyboard(CConnection& connection) : m_connection(connection) {}
    CKeyboard(const CKeyboard&) = delete;
    CKeyboard& operator=(const CKeyboard&) = delete;

    /// @param state  the modifiers and the layout, as a core event has them.
    KeyMeaning Press(xcb_keycode_t key, std::uint16_t state);
    /// Gives up a sequence that was begun, as when the keyboard goes elsewhere.
    void Reset();
    /// Takes an event of the keyboard extension; false for any other event.
    bool TakeEvent(const xcb_generic_event_t& event);
    /// The bits of `Modifier` in a core event's state.
    static unsigned ModifiersOf(std::uint16_t state);

private:
    bool Load();
    bool LoadCompose();
    std::uint32_t LatinSymbolOf(xcb_keycode_t key) const;

    template <typename T, void (*Unref)(T*)>
    struct CDelete {
        void operator()(T* object) const { Unref(object); }
    };
    template <typename T, void (*Unref)(T*)>
    using CXkb = std::unique_ptr<T, CDelete<T, Unref>>;

    CConnection& m_connection;
    CXkb<xkb_context, xkb_context_unref> m_context;
    CXkb<xkb_keymap, xkb_keymap_unref> m_keymap;
    CXkb<xkb_state, xkb_state_unref> m_state;
    CXkb<xkb_compose_table, xkb_compose_table_unref> m_table;
    CXkb<xkb_compose_state, xkb_compose_state_unref> m_compose;
    std::uint8_t m_firstEvent = 0; ///< Of the extension; 0 before it is set up.
    bool m_composeTried = false;
    bool m_stale = false;
};
