// platform/desktop/x11/Portal.h
//
// Asks the desktop's settings portal whether the user prefers dark windows, and listens to changes.
// Never waits: what the portal says arrives by the main loop, and nothing arrives without one.
// @source org.freedesktop.portal.Settings, namespace org.freedesktop.appearance.
#pragma once

#include <functional>

#include <gio/gio.h>

class CPortal {
public:
    enum class Preference { None, Dark, Light };

    /// Begins to ask. The portal is never destroyed, for answers may come at any time.
    explicit CPortal(std::function<void(Preference)> changed);
    CPortal(const CPortal&) = delete;
    CPortal& operator=(const CPortal&) = delete;

private:
    static void Connected(GObject* source, GAsyncResult* result, gpointer self);
    static void Answered(GObject* source, GAsyncResult* result, gpointer self);
    static void Changed(GDBusConnection* bus, const gchar* sender, const gchar* path, const gchar* interface,
                        const gchar* signal, GVariant* parameters, gpointer self);
    void Take(GVariant* value);

    const std::function<void(Preference)> m_changed;
};
