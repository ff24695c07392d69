// bench/windows/QtInfo.cpp
//
// What QMessageBox::about shows, with the contents of the information dialog; made in the same way
// but without waiting in it.
#include <QIcon>
#include <QMessageBox>

#include "bench/windows/Peer.h"
#include "bench/windows/QtLoop.h"

namespace {

QMessageBox* g_window;

} // namespace

void OpenDialog()
{
    StartQt();
    const QString text =
        QString::fromUtf8("<b>%1</b><p>%2<p>%3<p><a href=\"https://www.corvane.example/\">Web site</a>")
            .arg(kPeerTitle, kPeerVersion, QString::fromUtf8(kPeerNotice));
    g_window = new QMessageBox(QMessageBox::NoIcon, kPeerTitle, text, QMessageBox::Ok);
    g_window->setIconPixmap(QPixmap(CV_LOGO_PNG).scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    g_window->show();
}

void CloseDialog()
{
    delete g_window;
}
