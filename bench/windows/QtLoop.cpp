// bench/windows/QtLoop.cpp
//
// Qt's event loop, run for a while.
#include <QEventLoop>
#include <QTimer>

#include "bench/windows/Peer.h"

void RunLoop(double seconds)
{
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}
