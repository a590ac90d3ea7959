// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/StreamFollower.h"

#include <utility>

using namespace std::chrono_literals;

StreamFollower::StreamFollower(QObject *parent, Clock clock)
    : QObject(parent)
    , m_clock(clock ? std::move(clock)
                    : [] { return std::chrono::steady_clock::now().time_since_epoch(); })
{
    m_nextLook.setSingleShot(true);
    m_nextLook.setTimerType(Qt::PreciseTimer);
    connect(&m_nextLook, &QTimer::timeout, this, &StreamFollower::look);
}

void StreamFollower::follow(qint64 tokenEnd, Reader reader)
{
    m_reader = std::move(reader);
    m_state = State::Following;
    m_progress.start(tokenEnd, now());
    m_nextLook.start(1ms);
}

void StreamFollower::look()
{
    if (m_state != State::Following && m_state != State::Stalled)
        return;
    const Reading reading = m_reader();
    if (reading.stopped) {
        m_nextLook.stop();
        interrupt(State::Stopped);
        return;
    }

    const Time time = now();
    const qint64 takenBefore = m_progress.taken();
    m_progress.look(time, reading.taken, reading.played);
    const std::optional<Time> heardAt = m_progress.tokenHeardAt();
    if (heardAt && *heardAt <= time) {
        release();
        emit tokenHeard();
        return;
    }
    m_nextLook.start(heardAt ? std::chrono::ceil<std::chrono::milliseconds>(*heardAt - time) : 1ms);
    if (m_progress.taken() > takenBefore)
        m_state = State::Following;
    else if (time - m_progress.lastTakenAt() >= longestStall)
        interrupt(State::Stalled);
}

void StreamFollower::interrupt(State state)
{
    const State before = std::exchange(m_state, state);
    if (before == State::Following)
        emit stalled();
}

void StreamFollower::release()
{
    m_nextLook.stop();
    m_state = State::Idle;
}
