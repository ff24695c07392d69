// platform/desktop/x11/Keyboard.cpp
//
// The layout comes from the server, the state from each event: so nothing has to be followed.
#include "platform/desktop/x11/Keyboard.h"

#include <cstdlib>
#include <cstring>

#include "platform/desktop/x11/Xkb.h"
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include "platform/desktop/IDesktop.h"
#include "platform/desktop/x11/Connection.h"

namespace {

constexpr unsigned kRealModifiers = 0xFF;
constexpr int kLayoutShift = 13; ///< Where a core event's state has the layout.

/// The locale for compose sequences, as the C library would find it; the process's own setting
/// belongs to the host.
const char* ComposeLocale()
{
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (!value || !*value)
            continue;
        const bool plain = std::strcmp(value, "C") == 0 || std::strcmp(value, "POSIX") == 0;
        return plain ? "en_US.UTF-8" : value; // plain C has no sequences
    }
    return "en_US.UTF-8";
}

/// Keys of the number pad act as their namesakes do.
std::uint32_t WithoutKeypad(std::uint32_t symbol)
{
    switch (symbol) {
    case XKB_KEY_KP_Home:
        return kKeyHome;
    case XKB_KEY_KP_Left:
        return kKeyLeft;
    case XKB_KEY_KP_Up:
        return kKeyUp;
    case XKB_KEY_KP_Right:
        return kKeyRight;
    case XKB_KEY_KP_Down:
        return kKeyDown;
    case XKB_KEY_KP_Page_Up:
        return kKeyPageUp;
    case XKB_KEY_KP_Page_Down:
        return kKeyPageDown;
    case XKB_KEY_KP_End:
        return kKeyEnd;
    case XKB_KEY_KP_Insert:
        return kKeyInsert;
    case XKB_KEY_KP_Delete:
        return kKeyDelete;
    case XKB_KEY_KP_Tab:
        return kKeyTab;
    default:
        return symbol;
    }
}

bool BeginsSequence(std::uint32_t symbol)
{
    constexpr std::uint32_t kFirstDead = 0xFE50, kLastDead = 0xFE93;
    return symbol == XKB_KEY_Multi_key || (symbol >= kFirstDead && symbol <= kLastDead);
}

bool IsControlText(const std::string& text)
{
    return text.size() == 1 && (static_cast<unsigned char>(text[0]) < 0x20 || text[0] == 0x7F);
}

} // namespace

unsigned CKeyboard::ModifiersOf(std::uint16_t state)
{
    unsigned modifiers = 0;
    if (state & XCB_MOD_MASK_SHIFT)
        modifiers |= kModifierShift;
    if (state & XCB_MOD_MASK_CONTROL)
        modifiers |= kModifierControl;
    if (state & XCB_MOD_MASK_1)
        modifiers |= kModifierAlt;
    if (state & XCB_MOD_MASK_4)
        modifiers |= kModifierSuper;
    return modifiers;
}

bool CKeyboard::Load()
{
    if (m_state && !m_stale)
        return true;
    xcb_connection_t* const display = m_connection.Get();
    if (!m_context)
        m_context.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!m_context)
        return false;
    if (m_firstEvent == 0 &&
        !xkb_x11_setup_xkb_extension(display, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &m_firstEvent, nullptr))
        return false;
    const std::int32_t device = xkb_x11_get_core_keyboard_device_id(display);
    if (device < 0)
        return false;
    CXkb<xkb_keymap, xkb_keymap_unref> keymap(
        xkb_x11_keymap_new_from_device(m_context.get(), display, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap)
        return m_state != nullptr; // the one of before does
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t kMapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                        XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                        XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    xcb_xkb_select_events(display, static_cast<xcb_xkb_device_spec_t>(device), kEvents, 0, kEvents, kMapParts,
                          kMapParts, nullptr);
    m_keymap = std::move(keymap);
    m_state.reset(xkb_state_new(m_keymap.get()));
    m_stale = false;
    return m_state != nullptr;
}

bool CKeyboard::LoadCompose()
{
    if (!m_composeTried) {
        m_composeTried = true;
        m_table.reset(
            xkb_compose_table_new_from_locale(m_context.get(), ComposeLocale(), XKB_COMPOSE_COMPILE_NO_FLAGS));
        if (m_table)
            m_compose.reset(xkb_compose_state_new(m_table.get(), XKB_COMPOSE_STATE_NO_FLAGS));
    }
    return m_compose != nullptr;
}

std::uint32_t CKeyboard::LatinSymbolOf(xcb_keycode_t key) const
{
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(m_keymap.get(), key);
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        const xkb_keysym_t* symbols = nullptr;
        if (xkb_keymap_key_get_syms_by_level(m_keymap.get(), key, layout, 0, &symbols) == 1 && symbols[0] < 0x80)
            return symbols[0];
    }
    return 0;
}

KeyMeaning CKeyboard::Press(xcb_keycode_t key, std::uint16_t state)
{
    KeyMeaning meaning;
    meaning.waited = !m_state || m_stale;
    if (!Load())
        return meaning;
    xkb_state_update_mask(m_state.get(), state & kRealModifiers, 0, 0, 0, 0,
                          static_cast<xkb_layout_index_t>(state >> kLayoutShift & 3));
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(m_state.get(), key);
    meaning.symbol = WithoutKeypad(symbol);

    const bool composing = m_compose && xkb_compose_state_get_status(m_compose.get()) == XKB_COMPOSE_COMPOSING;
    if ((composing || BeginsSequence(symbol)) && LoadCompose() &&
        xkb_compose_state_feed(m_compose.get(), symbol) == XKB_COMPOSE_FEED_ACCEPTED) {
        const xkb_compose_status status = xkb_compose_state_get_status(m_compose.get());
        if (status == XKB_COMPOSE_COMPOSING) {
            meaning.swallowed = true;
            return meaning;
        }
        if (status == XKB_COMPOSE_COMPOSED) {
            char text[64];
            const int size = xkb_compose_state_get_utf8(m_compose.get(), text, sizeof text);
            meaning.symbol = xkb_compose_state_get_one_sym(m_compose.get());
            if (size > 0 && size < static_cast<int>(sizeof text))
                meaning.text.assign(text, static_cast<std::size_t>(size));
            Reset();
            return meaning;
        }
        Reset();
        meaning.swallowed = status == XKB_COMPOSE_CANCELLED;
        if (meaning.swallowed)
            return meaning;
    }
    const unsigned modifiers = ModifiersOf(state);
    if (modifiers & (kModifierControl | kModifierAlt | kModifierSuper)) {
        if (symbol >= 0x80 && symbol < 0xFD00)
            if (const std::uint32_t latin = LatinSymbolOf(key))
                meaning.symbol = latin;
        return meaning;
    }
    char text[64];
    const int size = xkb_state_key_get_utf8(m_state.get(), key, text, sizeof text);
    if (size > 0 && size < static_cast<int>(sizeof text))
        meaning.text.assign(text, static_cast<std::size_t>(size));
    if (IsControlText(meaning.text))
        meaning.text.clear();
    return meaning;
}

void CKeyboard::Reset()
{
    if (m_compose)
        xkb_compose_state_reset(m_compose.get());
}

bool CKeyboard::TakeEvent(const xcb_generic_event_t& event)
{
    if (m_firstEvent == 0 || (event.response_type & 0x7F) != m_firstEvent)
        return false;
    m_stale = true;
    return true;
}
