// bench/windows/QtLoop.cpp
//
// Qt's application, and its event loop run for a while.
#include "bench/windows/QtLoop.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>

#include "bench/windows/Peer.h"

void StartQt()
{
    static int count = 1;
    static char name[] = "peer";
    static char* words[] = {name, nullptr};
    static QApplication& application = *new QApplication(count, words);
    application.setQuitOnLastWindowClosed(false);
}

void RunLoop(double seconds)
{
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}
