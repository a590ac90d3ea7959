// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <optional>

/// Something that can be recorded.
struct SoundSource
{
    QString name;           ///< by which the server knows it
    QString description;    ///< for the user
    bool isMonitor = false; ///< what an output plays; otherwise an input, such as a microphone
};

/// The sound server, as it describes itself.
struct SoundServerInfo
{
    QString name;    ///< and version, as in "PulseAudio (on PipeWire 0.3.65)"
    QString output;  ///< the default output, for the user; empty when there is none
    QString monitor; ///< the source that is its monitor; empty when there is none
    QList<SoundSource> sources;
};

/// Asks the sound server. Nothing when there is none, or when it has not answered for three
/// seconds.
std::optional<SoundServerInfo> askSoundServer();
