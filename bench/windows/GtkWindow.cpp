// bench/windows/GtkWindow.cpp
//
// The dialog in GTK 3.
#include <gtk/gtk.h>

#include "bench/windows/Peer.h"

namespace {

GtkWidget* g_window;

void Place(GtkWidget* area, GtkWidget* widget, const PeerPlace& place)
{
    gtk_widget_set_size_request(widget, place.width, place.height);
    gtk_fixed_put(GTK_FIXED(area), widget, place.x, place.y);
}

GtkWidget* Label(const char* text, bool bold)
{
    GtkWidget* const label = gtk_label_new(text);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    if (bold) {
        PangoAttrList* const attributes = pango_attr_list_new();
        pango_attr_list_insert(attributes, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
        gtk_label_set_attributes(GTK_LABEL(label), attributes);
        pango_attr_list_unref(attributes);
    }
    return label;
}

} // namespace

void OpenDialog()
{
    gtk_init(nullptr, nullptr);
    g_window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(g_window), kPeerTitle);
    gtk_window_set_type_hint(GTK_WINDOW(g_window), GDK_WINDOW_TYPE_HINT_DIALOG);
    gtk_window_set_default_size(GTK_WINDOW(g_window), kPeerWidth, kPeerHeight);
    GtkWidget* const area = gtk_fixed_new();
    gtk_container_add(GTK_CONTAINER(g_window), area);
    Place(area, Label(kPeerTitle, true), kTitlePlace);
    Place(area, Label(kPeerVersion, false), kVersionPlace);
    Place(area, Label(kPeerNotice, false), kNoticePlace);
    Place(area, Label(kPeerOptions, true), kOptionsPlace);
    Place(area, gtk_check_button_new_with_label(kPeerKnobs), kKnobsPlace);
    Place(area, gtk_button_new_with_label(kPeerHelp), kHelpPlace);
    Place(area, gtk_button_new_with_label(kPeerCancel), kCancelPlace);
    Place(area, gtk_button_new_with_label(kPeerOk), kOkPlace);
    gtk_widget_show_all(g_window);
}

void CloseDialog()
{
    gtk_widget_destroy(g_window);
}
