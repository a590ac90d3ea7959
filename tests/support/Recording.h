#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>

/// Noise that stands nowhere else, so that its place in a recording is unmistakable. Its samples
/// are exact as 32-bit floats and in 16 bits, and none is 0.
QList<double> noise(int nSamples, quint32 seed);

/// @p samples as a 16-bit WAV file at 48 kHz.
QByteArray wavBytes(const QList<double> &samples);

/// @p samples as they stand in a recording.
QByteArray floatBytes(const QList<double> &samples);

/// Whether the beginning and the end of @p token were @p heard, and something between them is
/// missing: that is how a stall of the sound server shows, other than a sound that was cut.
bool hasGap(const QByteArray &heard, const QByteArray &token);

/// Tells how a token that is not in @p heard as a whole was lost.
QString describeLoss(const QByteArray &heard, const QByteArray &token);

/// What a virtual output plays, as 32-bit floats at 48 kHz.
class Recording
{
public:
    explicit Recording(const QString &sink = "out");
    ~Recording();

    /// Waits until sound data arrive: what is played before that is not recorded.
    bool isRunning();

    /// All that has been recorded, @p settle ms after now: the monitor is late by its latency.
    QByteArray bytes(int settle = 300);

private:
    QProcess parec;
    QByteArray recorded;
};
