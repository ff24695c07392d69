// tests/desktop/x11/hosts/QtHost.cpp
//
// A Qt program: its loop serves our windows without knowing it.
#include <QGuiApplication>
#include <QTimer>

#include "tests/desktop/x11/hosts/Host.h"

int main(int count, char** words)
{
    const QGuiApplication application(count, words);
    CHost host(words[1], [] { QGuiApplication::quit(); });
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&host] { host.Tick(); });
    timer.start(20);
    return QGuiApplication::exec();
}
