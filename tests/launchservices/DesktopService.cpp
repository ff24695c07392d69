// tests/launchservices/DesktopService.cpp
//
// Stands in for what a session bus starts: the desktop portal and an application. It writes down
// what it is asked for, and answers a portal's request as the file "answer" says.
//
//   desktopservice FOLDER NAME
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <string>

namespace {

constexpr char kInterfaces[] =
    "<node>"
    "<interface name='org.freedesktop.portal.OpenURI'>"
    "<method name='OpenURI'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>"
    "<method name='OpenFile'><arg type='s' direction='in'/><arg type='h' direction='in'/>"
    "<arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>"
    "</interface>"
    "<interface name='org.freedesktop.Application'>"
    "<method name='Open'><arg type='as' direction='in'/><arg type='a{sv}' direction='in'/></method>"
    "</interface></node>";

std::string g_folder;

void Record(const std::string& line)
{
    std::ofstream(g_folder + "/asked", std::ios::app) << line << '\n';
}

std::string OpenedFile(GDBusMethodInvocation* call)
{
    GUnixFDList* const files = g_dbus_message_get_unix_fd_list(g_dbus_method_invocation_get_message(call));
    const int file = files ? g_unix_fd_list_get(files, 0, nullptr) : -1;
    char path[PATH_MAX] = "";
    const ssize_t length = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path - 1);
    close(file);
    return std::string(path, length < 0 ? 0 : static_cast<std::size_t>(length));
}

void AnswerRequest(GDBusConnection* connection, const char* sender, GVariant* options, GDBusMethodInvocation* call)
{
    const char* token = "none";
    g_variant_lookup(options, "handle_token", "&s", &token);
    std::string name = sender + 1;
    for (char& byte : name) {
        if (byte == '.')
            byte = '_';
    }
    const std::string path = "/org/freedesktop/portal/desktop/request/" + name + "/" + token;
    unsigned answer = 0;
    std::ifstream(g_folder + "/answer") >> answer;
    // Before the reply, as a quick portal may.
    g_dbus_connection_emit_signal(connection, sender, path.c_str(), "org.freedesktop.portal.Request", "Response",
                                  g_variant_new("(ua{sv})", answer, nullptr), nullptr);
    g_dbus_method_invocation_return_value(call, g_variant_new("(o)", path.c_str()));
}

void OnCall(GDBusConnection* connection, const char* sender, const char*, const char*, const char* method,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer)
{
    if (std::string(method) == "Open") {
        const char** uris = nullptr;
        g_variant_get_child(parameters, 0, "^a&s", &uris);
        for (const char** uri = uris; *uri; ++uri)
            Record(std::string("Open ") + *uri);
        g_free(uris);
        g_dbus_method_invocation_return_value(call, nullptr);
        return;
    }
    const char* uri = "";
    if (std::string(method) == "OpenURI")
        g_variant_get_child(parameters, 1, "&s", &uri);
    Record(std::string(method) + " " + (*uri ? uri : OpenedFile(call)));
    GVariant* const options = g_variant_get_child_value(parameters, 2);
    AnswerRequest(connection, sender, options, call);
    g_variant_unref(options);
}

const GDBusInterfaceVTable kTable = {OnCall, nullptr, nullptr, {}};

void OnBus(GDBusConnection* connection, const char*, gpointer)
{
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    g_dbus_connection_register_object(connection, "/org/freedesktop/portal/desktop", node->interfaces[0], &kTable,
                                      nullptr, nullptr, nullptr);
    g_dbus_connection_register_object(connection, "/org/example/On_bus", node->interfaces[1], &kTable, nullptr, nullptr,
                                      nullptr);
}

} // namespace

int main(int count, char** words)
{
    if (count < 3)
        return 2;
    g_folder = words[1];
    g_bus_own_name(G_BUS_TYPE_SESSION, words[2], G_BUS_NAME_OWNER_FLAGS_NONE, OnBus, nullptr, nullptr, nullptr,
                   nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE)); // until the bus is gone
    return 0;
}
