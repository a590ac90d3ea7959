// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/UnendingBuffer.h"

#include <memory>

class QAudioFormat;
class QAudioSink;

/// A stream of silence on the default output. While it exists, the sound server stays awake and at
/// the period that requestServerPeriod() asks for.
///
/// A server that changes its period at each token loses or shifts some of the sound: with PipeWire
/// 1.6 the first 43 ms of each token were missing from a recording, and with all versions of Qt the
/// times of sounds before and after a change differ by up to 60 ms. An output that has to wake up
/// first also starts late. Only the first half second is fed; after that the server fills in
/// silence.
class SilentStream
{
public:
    explicit SilentStream(const QAudioFormat &format);

    /// Ends the stream. Pending events may be processed meanwhile.
    ~SilentStream();
    SilentStream(const SilentStream &) = delete;
    SilentStream &operator=(const SilentStream &) = delete;

private:
    UnendingBuffer m_silence;
    std::unique_ptr<QAudioSink> m_sink; ///< reads m_silence
};
