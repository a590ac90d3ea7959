// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timing/TimingReport.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class MeasuredWindow;
class SoundRecorder;
class StampedRecording;

/// Measures when tokens are heard and when the reaction clock starts: plays tokens of noise of
/// several lengths on the default output, as a session does, and finds them in a recording of that
/// output or of an input. Runs in the event loop.
class TimingMeasurement : public QObject
{
    Q_OBJECT

public:
    static constexpr int defaultPlays = 20;
    static constexpr int mostPlays = 1000;

    struct Options
    {
        int playsPerLength = defaultPlays; ///< 1 .. mostPlays
        QString input;                     ///< a source of the server; the output itself if empty
    };

    explicit TimingMeasurement(QObject *parent = nullptr);
    ~TimingMeasurement() override;

    /// Starts anew. The sound server is asked at once, which may take some seconds if it hangs.
    void start(const Options &options);

    /// Stops; nothing more is signalled. The report is then about the plays until now.
    void stop();

    bool isRunning() const { return m_window != nullptr; }

    /// The plays until now. The first one is left out: it opens the connection to the server.
    const TimingReport &report() const { return m_report; }

    /// How many plays the report will be about.
    int nPlays() const;

signals:
    /// One more play is in the report.
    void played();
    /// All plays are in the report.
    void finished();
    /// The measurement could not be made or ended, for a reason that is one or more sentences.
    void failed(const QString &reason);

private:
    bool prepare();
    void fail(const QString &reason);
    void giveUp();
    void takeStep();
    void playNext();
    void takeSignal(int index);
    void evaluate();

    Options m_options;
    TimingReport m_report;
    int m_nBegun = 0;     ///< plays, with the first one
    Play m_play;          ///< the current one
    QTimer m_next;        ///< to the next step
    QTimer m_deadline;    ///< by which the current step must be over
    QString m_sourceName; ///< what is recorded
    std::unique_ptr<SoundRecorder> m_recorder;
    std::unique_ptr<StampedRecording> m_recording;
    std::unique_ptr<MeasuredWindow> m_window;
};
