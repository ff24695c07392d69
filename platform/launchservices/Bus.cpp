// platform/launchservices/Bus.cpp
//
// Calls over a connection of our own to the session bus. The shared one of GIO would end the host
// with the session, unless everybody remembers to tell it not to.
#include "platform/launchservices/Bus.h"

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/launchservices/Gio.h"

namespace {

constexpr char kPortalName[] = "org.freedesktop.portal.Desktop";
constexpr char kPortalPath[] = "/org/freedesktop/portal/desktop";
constexpr char kRequestPath[] = "/org/freedesktop/portal/desktop/request/";
constexpr guint32 kEndedOtherwise = 2; // a Response's third kind: neither done nor the user's refusal
constexpr int kDefaultTimeout = -1;

// The addresses that a session gives; one that has neither gets no bus started on its behalf.
std::string SessionBusAddress()
{
    const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address)
        return address;
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (!folder || *folder != '/')
        return "";
    const std::string socket = std::string(folder) + "/bus";
    const GText escaped(g_dbus_address_escape_value(socket.c_str()));
    return access(socket.c_str(), F_OK) == 0 ? std::string("unix:path=") + escaped.get() : "";
}

GOwned<GDBusConnection> Connect()
{
    const std::string address = SessionBusAddress();
    if (address.empty())
        return nullptr;
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return GOwned<GDBusConnection>(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
}

// Signals come to the main context that was the thread's own when they were asked for.
class CThreadContext {
public:
    CThreadContext() : m_context(g_main_context_new()) { g_main_context_push_thread_default(m_context.get()); }
    ~CThreadContext() { g_main_context_pop_thread_default(m_context.get()); }
    CThreadContext(const CThreadContext&) = delete;
    CThreadContext& operator=(const CThreadContext&) = delete;

    void Wait() { g_main_context_iteration(m_context.get(), TRUE); }

private:
    const GContext m_context;
};

struct Request {
    bool ended = false;
    guint32 response = kEndedOtherwise;
};

void OnResponse(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* parameters,
                gpointer data)
{
    Request& request = *static_cast<Request*>(data);
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})")))
        g_variant_get_child(parameters, 0, "u", &request.response);
    request.ended = true;
}

void OnClosed(GDBusConnection*, gboolean, GError*, gpointer data)
{
    static_cast<Request*>(data)->ended = true;
}

// The portal names a request after who asks and a word of the asker's choice; knowing the name
// beforehand, we cannot miss the answer.
std::string RequestPath(GDBusConnection* connection, const std::string& token)
{
    std::string sender = g_dbus_connection_get_unique_name(connection);
    sender.erase(0, 1);
    for (char& byte : sender) {
        if (byte == '.')
            byte = '_';
    }
    return kRequestPath + sender + "/" + token;
}

GVariant* Options(const std::string& token)
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    if (!token.empty())
        g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
    return g_variant_builder_end(&options);
}

bool AskPortal(GDBusConnection* connection, const LaunchItem& item, const std::string& token)
{
    const char* method = "OpenURI";
    GVariant* parameters = nullptr;
    GOwned<GUnixFDList> files;
    if (item.path.empty()) {
        parameters = g_variant_new("(ss@a{sv})", "", item.uri.c_str(), Options(token));
    } else {
        // The portal takes no file by its name: the sandbox's files have other names outside.
        const int file = open(item.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (file < 0)
            return false;
        files.reset(g_unix_fd_list_new_from_array(&file, 1)); // takes the descriptor over
        method = "OpenFile";
        parameters = g_variant_new("(sh@a{sv})", "", 0, Options(token));
    }
    const GValueOwned answer(g_dbus_connection_call_with_unix_fd_list_sync(
        connection, kPortalName, kPortalPath, "org.freedesktop.portal.OpenURI", method, parameters,
        G_VARIANT_TYPE("(o)"), G_DBUS_CALL_FLAGS_NONE, kDefaultTimeout, files.get(), nullptr, nullptr, nullptr));
    return answer != nullptr;
}

} // namespace

bool OpenThroughPortal(const LaunchItem& item)
{
    CThreadContext context;
    const GOwned<GDBusConnection> connection = Connect();
    if (!connection)
        return false;
    const GText random(g_uuid_string_random());
    std::string token = std::string("corvane_") + random.get();
    for (char& byte : token) {
        if (byte == '-')
            byte = '_';
    }
    Request request;
    const std::string path = RequestPath(connection.get(), token);
    const guint subscription = g_dbus_connection_signal_subscribe(
        connection.get(), kPortalName, "org.freedesktop.portal.Request", "Response", path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, OnResponse, &request, nullptr);
    const gulong closed = g_signal_connect(connection.get(), "closed", G_CALLBACK(OnClosed), &request);
    const bool asked = AskPortal(connection.get(), item, token);
    while (asked && !request.ended)
        context.Wait(); // the portal drops a request whose asker leaves
    g_signal_handler_disconnect(connection.get(), closed);
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
    g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
    return asked && request.response != kEndedOtherwise;
}

bool OpenThroughActivation(const std::string& id, const std::vector<LaunchItem>& items)
{
    CThreadContext context;
    const GOwned<GDBusConnection> connection = Connect();
    if (!connection || !g_dbus_is_name(id.c_str()))
        return false;
    std::string path = "/" + id;
    for (char& byte : path) {
        if (byte == '.')
            byte = '/';
        else if (byte == '-')
            byte = '_';
    }
    GVariantBuilder uris;
    g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
    for (const LaunchItem& item : items)
        g_variant_builder_add(&uris, "s", item.uri.c_str());
    const GValueOwned answer(g_dbus_connection_call_sync(connection.get(), id.c_str(), path.c_str(),
                                                         "org.freedesktop.Application", "Open",
                                                         g_variant_new("(as@a{sv})", &uris, Options("")), nullptr,
                                                         G_DBUS_CALL_FLAGS_NONE, kDefaultTimeout, nullptr, nullptr));
    g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
    return answer != nullptr;
}
