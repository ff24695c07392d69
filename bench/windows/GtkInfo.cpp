// bench/windows/GtkInfo.cpp
//
// GtkAboutDialog with the contents of the information dialog.
#include <gtk/gtk.h>

#include "bench/windows/Peer.h"

namespace {

GtkWidget* g_window;

} // namespace

void OpenDialog()
{
    gtk_init(nullptr, nullptr);
    g_window = gtk_about_dialog_new();
    GtkAboutDialog* const about = GTK_ABOUT_DIALOG(g_window);
    GdkPixbuf* const logo = gdk_pixbuf_new_from_file_at_size(CV_LOGO_PNG, 96, 96, nullptr);
    gtk_about_dialog_set_logo(about, logo);
    g_object_unref(logo);
    gtk_about_dialog_set_program_name(about, kPeerTitle);
    gtk_about_dialog_set_version(about, kPeerVersion);
    gtk_about_dialog_set_copyright(about, kPeerNotice);
    gtk_about_dialog_set_website(about, "https://www.corvane.example/");
    gtk_widget_show(g_window);
}

void CloseDialog()
{
    gtk_widget_destroy(g_window);
}
