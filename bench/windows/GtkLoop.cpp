// bench/windows/GtkLoop.cpp
//
// GTK's main loop, run for a while.
#include <gtk/gtk.h>

#include "bench/windows/Peer.h"

void RunLoop(double seconds)
{
    g_timeout_add(
        static_cast<guint>(seconds * 1000),
        [](gpointer) -> gboolean {
            gtk_main_quit();
            return G_SOURCE_REMOVE;
        },
        nullptr);
    gtk_main();
}
