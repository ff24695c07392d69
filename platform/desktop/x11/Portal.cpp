// platform/desktop/x11/Portal.cpp
//
// Uses a connection of its own: the process's shared one belongs to the host, and would end the
// process with the session bus.
#include "platform/desktop/x11/Portal.h"

#include <cstdlib>
#include <string>

#include <unistd.h>

#include "platform/base/Guard.h"

namespace {

constexpr const char* kName = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

/// The session bus that runs, empty without one. Looking for it in GLib's way may start one.
std::string BusAddress()
{
    if (const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return address;
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    const std::string socket = folder ? std::string(folder) + "/bus" : std::string();
    return !socket.empty() && access(socket.c_str(), R_OK | W_OK) == 0 ? "unix:path=" + socket : std::string();
}

} // namespace

CPortal::CPortal(std::function<void(Preference)> changed) : m_changed(std::move(changed))
{
    const std::string address = BusAddress();
    if (!address.empty() && g_dbus_is_supported_address(address.c_str(), nullptr))
        g_dbus_connection_new_for_address(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &Connected, this);
}

void CPortal::Connected(GObject*, GAsyncResult* result, gpointer self)
{
    GDBusConnection* const bus = g_dbus_connection_new_for_address_finish(result, nullptr);
    if (!bus)
        return; // no bus, no preference
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    g_dbus_connection_signal_subscribe(bus, kName, kInterface, "SettingChanged", kPath, kNamespace,
                                       G_DBUS_SIGNAL_FLAGS_NONE, &Changed, self, nullptr);
    constexpr int kPatience = 5000; // milliseconds
    g_dbus_connection_call(bus, kName, kPath, kInterface, "Read", g_variant_new("(ss)", kNamespace, kKey),
                           G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, kPatience, nullptr, &Answered, self);
}

void CPortal::Answered(GObject* source, GAsyncResult* result, gpointer self)
{
    GVariant* const answer = g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection*>(source), result, nullptr);
    if (!answer)
        return; // no portal, or one without this setting
    GVariant* value = nullptr;
    g_variant_get(answer, "(v)", &value);
    static_cast<CPortal*>(self)->Take(value);
    g_variant_unref(value);
    g_variant_unref(answer);
}

void CPortal::Changed(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters,
                      gpointer self)
{
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")))
        return;
    const gchar *space = nullptr, *key = nullptr;
    GVariant* value = nullptr;
    g_variant_get(parameters, "(&s&sv)", &space, &key, &value);
    if (g_str_equal(space, kNamespace) && g_str_equal(key, kKey))
        static_cast<CPortal*>(self)->Take(value);
    g_variant_unref(value);
}

void CPortal::Take(GVariant* value)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARIANT)) { // "Read" wraps it twice
        GVariant* const inner = g_variant_get_variant(value);
        Take(inner);
        g_variant_unref(inner);
        return;
    }
    if (!g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32))
        return;
    const guint32 scheme = g_variant_get_uint32(value);
    Guarded(0, [&] {
        m_changed(scheme == 1 ? Preference::Dark : scheme == 2 ? Preference::Light : Preference::None);
        return 0;
    });
}
