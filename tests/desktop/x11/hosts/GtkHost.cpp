// tests/desktop/x11/hosts/GtkHost.cpp
//
// A GTK program: its loop serves our windows without knowing it.
#include <gtk/gtk.h>

#include "tests/desktop/x11/hosts/Host.h"

int main(int count, char** words)
{
    gtk_init(&count, &words);
    CHost host(words[1], gtk_main_quit);
    g_timeout_add(
        20,
        [](gpointer self) -> gboolean {
            static_cast<CHost*>(self)->Tick();
            return G_SOURCE_CONTINUE;
        },
        &host);
    gtk_main();
    return 0;
}
