// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/SilentStream.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QMediaDevices>

#include <chrono>

using namespace std::chrono_literals;

namespace {

/// Longer than a sink's buffer, because a server may start only when that is full.
constexpr std::chrono::microseconds duration = 500ms;

} // namespace

SilentStream::SilentStream(const QAudioFormat &format)
    : m_sink(std::make_unique<QAudioSink>(QMediaDevices::defaultAudioOutput(), format))
{
    m_silence.setData(QByteArray(format.bytesForDuration(duration.count()), '\0'));
    m_silence.open(QIODevice::ReadOnly);
    m_sink->start(&m_silence);
}

SilentStream::~SilentStream()
{
    m_sink->reset(); // stop() may wait until the rest has been played
}
