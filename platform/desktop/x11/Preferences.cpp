// platform/desktop/x11/Preferences.cpp
//
// The user's scale, font and choice of light or dark, from whoever publishes them: XSETTINGS, the X
// resources, the settings portal. What the portal says of light and dark outweighs a theme's name.
#include "platform/desktop/x11/X11Desktop.h"
#include "platform/drawing/cairo/Fonts.h"

void CX11Desktop::ReadPreferences()
{
    xcb_connection_t* const display = m_connection->Get();
    const CConnection& names = *m_connection;
    const xcb_window_t root = names.Screen().root;
    const auto askedResources = names.AskProperty(root, XCB_ATOM_RESOURCE_MANAGER);
    const auto askedManager = names.AskProperty(root, names[Atom::NetSupportingWmCheck]);
    const auto askedOwner = xcb_get_selection_owner(display, names[Atom::XSettingsOwner]);
    const CReply<xcb_get_property_reply_t> resources(xcb_get_property_reply(display, askedResources, nullptr));
    const CReply<xcb_get_property_reply_t> manager(xcb_get_property_reply(display, askedManager, nullptr));
    const CReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(display, askedOwner, nullptr));
    m_resources = CConnection::BytesOf(resources.get());
    m_hasManager = manager && manager->type != XCB_NONE;
    if (owner && owner->owner != XCB_NONE) {
        m_settingsOwner = owner->owner;
        constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        xcb_change_window_attributes(display, m_settingsOwner, XCB_CW_EVENT_MASK, kEvents);
        const auto asked = names.AskProperty(m_settingsOwner, names[Atom::XSettings]);
        const CReply<xcb_get_property_reply_t> settings(xcb_get_property_reply(display, asked, nullptr));
        if (const auto read = ReadXSettings(CConnection::BytesOf(settings.get())))
            m_settings = *read;
    }
    Apply();
}

void CX11Desktop::AskSettings()
{
    const auto asked = xcb_get_selection_owner(m_connection->Get(), (*m_connection)[Atom::XSettingsOwner]);
    m_connection->Await(asked.sequence, [this](void* reply) {
        const auto* const answer = static_cast<const xcb_get_selection_owner_reply_t*>(reply);
        if (!answer || answer->owner == XCB_NONE)
            return;
        if (m_settingsOwner != answer->owner) {
            m_settingsOwner = answer->owner;
            constexpr std::uint32_t kEvents[] = {XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
            xcb_change_window_attributes(m_connection->Get(), m_settingsOwner, XCB_CW_EVENT_MASK, kEvents);
        }
        const auto bytes = m_connection->AskProperty(m_settingsOwner, (*m_connection)[Atom::XSettings]);
        m_connection->Await(bytes.sequence, [this](void* property) {
            TakeSettings(CConnection::BytesOf(static_cast<const xcb_get_property_reply_t*>(property)));
        });
        Flush();
    });
    Flush();
}

void CX11Desktop::TakeSettings(const std::string& bytes)
{
    if (auto settings = ReadXSettings(bytes)) { // damaged ones leave what was
        m_settings = std::move(*settings);
        Apply();
    }
}

void CX11Desktop::TakePreference(CPortal::Preference preference)
{
    m_preference = preference;
    Apply();
}

void CX11Desktop::Apply()
{
    const double scale = ScaleFrom(m_settings, m_resources);
    const bool dark =
        m_preference == CPortal::Preference::None ? IsDarkTheme(m_settings) : m_preference == CPortal::Preference::Dark;
    const Appearance appearance = dark ? Appearance::Dark : Appearance::Light;
    const auto font = m_settings.texts.find("Gtk/FontName");
    const bool otherFont = font != m_settings.texts.end() && CUserFont::Get().Set(font->second);
    const bool otherLook = otherFont || appearance != m_appearance;
    const bool otherScale = scale != m_scale;
    m_appearance = appearance;
    m_scale = scale;
    if (!m_sink)
        return;
    if (otherScale) {
        std::vector<SurfaceId> all;
        for (const auto& entry : m_surfaces)
            all.push_back(entry.first);
        for (const SurfaceId surface : all) {
            ++m_delivered;
            m_sink->ScaleChanged(surface);
        }
    }
    if (otherLook) {
        ++m_delivered;
        m_sink->AppearanceChanged();
    }
}
