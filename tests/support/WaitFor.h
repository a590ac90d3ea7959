// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QEventLoop>
#include <QTimer>

/// Runs the event loop as the program does, for @p ms or until @p done holds; returns whether it
/// did. Qt Test's own functions sleep between events, which would delay the program.
template<typename Condition>
bool waitFor(Condition done, int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    poll.start(10);
    loop.exec();
    return done();
}
