// tests/desktop/x11/SettingsPortal.cpp
//
// Stands in for the desktop's portal where light or dark is asked for: dark at first, light after
// the first SIGUSR1, which is announced. Prints a line when it serves.
#include <gio/gio.h>
#include <glib-unix.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr char kInterfaces[] = "<node><interface name='org.freedesktop.portal.Settings'>"
                               "<method name='Read'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
                               "<arg type='v' direction='out'/></method>"
                               "<signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal>"
                               "</interface></node>";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kNamespace[] = "org.freedesktop.appearance";
constexpr char kKey[] = "color-scheme";

guint32 g_scheme = 1;
GDBusConnection* g_bus = nullptr;

void OnCall(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* parameters,
            GDBusMethodInvocation* call, gpointer)
{
    const char *space = "", *key = "";
    g_variant_get(parameters, "(&s&s)", &space, &key);
    if (std::strcmp(space, kNamespace) != 0 || std::strcmp(key, kKey) != 0)
        return g_dbus_method_invocation_return_dbus_error(call, "org.freedesktop.portal.Error.NotFound", "no such key");
    g_dbus_method_invocation_return_value(call,
                                          g_variant_new("(v)", g_variant_new_variant(g_variant_new_uint32(g_scheme))));
}

gboolean OnSignal(gpointer)
{
    g_scheme = 2;
    g_dbus_connection_emit_signal(g_bus, nullptr, kPath, "org.freedesktop.portal.Settings", "SettingChanged",
                                  g_variant_new("(ssv)", kNamespace, kKey, g_variant_new_uint32(g_scheme)), nullptr);
    return G_SOURCE_CONTINUE;
}

const GDBusInterfaceVTable kTable = {OnCall, nullptr, nullptr, {}};

void OnBus(GDBusConnection* connection, const char*, gpointer)
{
    g_bus = connection;
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    g_dbus_connection_register_object(connection, kPath, node->interfaces[0], &kTable, nullptr, nullptr, nullptr);
}

void OnName(GDBusConnection*, const char*, gpointer)
{
    std::puts("serves");
    std::fflush(stdout);
}

} // namespace

int main()
{
    g_unix_signal_add(SIGUSR1, OnSignal, nullptr);
    g_bus_own_name(G_BUS_TYPE_SESSION, "org.freedesktop.portal.Desktop", G_BUS_NAME_OWNER_FLAGS_NONE, OnBus, OnName,
                   nullptr, nullptr, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE)); // until the bus is gone
    return 0;
}
