// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/MainWindow.h"

#include <QList>

#include <chrono>

class QChartView;

/// The operator's window, never shown, as what it consists of: the reader, the charts and the
/// playback of a session. What the tools show and play of a sound is what a session would.
class ExperimentWindow : public MainWindow
{
    Q_OBJECT

public:
    explicit ExperimentWindow(QWidget *parent = nullptr);

    /// The charts of the current sound, to be placed in any layout. They belong to this window,
    /// which must be destroyed before the widgets in which they are placed.
    QChartView *waveformView() const { return waveformChart.view; }
    QChartView *spectrumView() const { return spectrumChart.view; }

    /// Stops what is playing, loads the token @p fileName in @p folder as the next one of a session
    /// and draws it. False when a session could not present it: then there is no sound.
    bool loadToken(const QString &folder, const QString &fileName);

    /// Stops what is playing and takes @p samples as the sound, mono at the session's sampling
    /// rate. The charts stay as they are.
    void setSound(const QList<double> &samples);

    /// Stops what is playing and empties the charts: there is no sound then.
    void clearSound();

    /// Opens the stream of silence that a session has from "Go" on, which takes the sound server
    /// a moment; does nothing while it is open.
    void openOutput();
    /// Stops what is playing, and ends that stream. Pending events may be processed meanwhile.
    void closeOutput();
    bool isOutputOpen() const { return silentStream != nullptr; }

    /// Plays the sound after @p pause, by the timer and the playback of a session, and signals
    /// soundPlaying(1), and soundPlaying(tokenHasEnded) when it has been heard. Stops what is
    /// playing before. Does nothing when there is no sound.
    void present(std::chrono::milliseconds pause);

    /// Stops the sound that is playing or is to be played. Nothing more is signalled about it.
    void stopSound();

    /// Whether a sound is playing or is to be played; also while the server has stalled.
    bool isPresenting() const;

    /// When the last sound was due, by the monotonic clock.
    StreamFollower::Time dueTime() const { return presentationDue; }

    /// How accurately the last sound was timed; zeros until it has been heard.
    PresentationTiming lastTiming() const { return presentationTimings.value(0); }

signals:
    /// The sound server takes no more samples: the end of the sound will not be signalled, unless
    /// the server continues.
    void soundFailed();
};
