// bench/windows/QtWindow.cpp
//
// The dialog in Qt.
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include "bench/windows/Peer.h"
#include "bench/windows/QtLoop.h"

namespace {

QDialog* g_window;

void Place(QWidget* widget, const PeerPlace& place)
{
    widget->setGeometry(place.x, place.y, place.width, place.height);
}

void AddLabel(const char* text, const PeerPlace& place, bool bold)
{
    QLabel* const label = new QLabel(QString::fromUtf8(text), g_window);
    QFont font = label->font();
    font.setBold(bold);
    label->setFont(font);
    Place(label, place);
}

} // namespace

void OpenDialog()
{
    StartQt();
    g_window = new QDialog;
    g_window->setWindowTitle(kPeerTitle);
    g_window->resize(kPeerWidth, kPeerHeight);
    AddLabel(kPeerTitle, kTitlePlace, true);
    AddLabel(kPeerVersion, kVersionPlace, false);
    AddLabel(kPeerNotice, kNoticePlace, false);
    AddLabel(kPeerOptions, kOptionsPlace, true);
    Place(new QCheckBox(kPeerKnobs, g_window), kKnobsPlace);
    Place(new QPushButton(kPeerHelp, g_window), kHelpPlace);
    Place(new QPushButton(kPeerCancel, g_window), kCancelPlace);
    QPushButton* const ok = new QPushButton(kPeerOk, g_window);
    ok->setDefault(true);
    Place(ok, kOkPlace);
    g_window->show();
}

void CloseDialog()
{
    delete g_window;
}
