// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timing/StampedRecording.h"

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <optional>
#include <vector>

struct pa_simple;

/// Opens a recording of the sound server's @p source, mono at recordingRate, which hands over
/// @p fragmentSize samples at a time; null when the server refuses it. The server knows the program
/// as @p program. To be ended by the end of the process.
pa_simple *openRecording(const char *program, const char *source, size_t fragmentSize);

/// Records in a process of its own, so that what this program does meanwhile affects neither the
/// sound nor the stamps. The process is a second one of this executable, whose main() must
/// therefore begin with recorderMain(). It writes to a temporary file, and so never waits for this
/// program.
class SoundRecorder
{
public:
    /// Starts to record the sound server's @p source, such as "out.monitor".
    explicit SoundRecorder(const QString &source);
    ~SoundRecorder();
    Q_DISABLE_COPY_MOVE(SoundRecorder)

    /// What has been recorded since the last call.
    std::vector<Fragment> newFragments();

    /// Whether the process has ended, which it does only when the server refuses or ends the
    /// recording.
    bool hasFailed() const { return m_process.state() == QProcess::NotRunning; }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    QFile m_file;
};

/// Records and returns the exit status when SoundRecorder has started this process to do that;
/// otherwise returns nothing. Records until that program ends it or has ended itself.
std::optional<int> recorderMain(int argc, char *argv[]);
