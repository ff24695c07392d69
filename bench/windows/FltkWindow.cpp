// bench/windows/FltkWindow.cpp
//
// The dialog in FLTK.
#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Return_Button.H>
#include <FL/Fl_Window.H>

#include "bench/windows/Peer.h"

namespace {

Fl_Window* g_window;

template <typename Widget>
Widget* Make(const PeerPlace& place, const char* text)
{
    return new Widget(place.x, place.y, place.width, place.height, text);
}

void AddLabel(const char* text, const PeerPlace& place, Fl_Font font)
{
    Fl_Box* const label = Make<Fl_Box>(place, text);
    label->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    label->labelfont(font);
}

} // namespace

void OpenDialog()
{
    g_window = new Fl_Window(kPeerWidth, kPeerHeight, kPeerTitle);
    AddLabel(kPeerTitle, kTitlePlace, FL_HELVETICA_BOLD);
    AddLabel(kPeerVersion, kVersionPlace, FL_HELVETICA);
    AddLabel(kPeerNotice, kNoticePlace, FL_HELVETICA);
    AddLabel(kPeerOptions, kOptionsPlace, FL_HELVETICA_BOLD);
    (void)Make<Fl_Check_Button>(kKnobsPlace, kPeerKnobs);
    (void)Make<Fl_Button>(kHelpPlace, kPeerHelp);
    (void)Make<Fl_Button>(kCancelPlace, kPeerCancel);
    (void)Make<Fl_Return_Button>(kOkPlace, kPeerOk);
    g_window->end();
    g_window->show();
}

void CloseDialog()
{
    delete g_window;
}

void RunLoop(double seconds)
{
    static bool over;
    over = false;
    Fl::add_timeout(seconds, [](void*) { over = true; });
    while (!over)
        (void)Fl::wait(seconds); // without a bound it does nothing at all while no window is open
}
