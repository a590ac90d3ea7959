// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PelkClasses.h"

#include <QMessageBox>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr double pi = 3.141592653589793;
constexpr double radiansPerDegree = 0.017453292519943295;
constexpr double largestDraw = 2147483647.0; ///< of std::rand()

void warn(const QString &text)
{
    QMessageBox::warning(nullptr, u"Warning"_s, text, QMessageBox::Ok);
}

/// Seeds the generator with the current second.
void seedFromClock()
{
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
}

/// As many zeros as whole samples fit into @p duration.
QList<double> silence(double samplingRate, double duration)
{
    const double nSamples = std::floor(samplingRate * duration);
    const bool countable = nSamples > 0.0 && nSamples <= std::numeric_limits<int>::max();
    return QList<double>(countable ? static_cast<int>(nSamples) : 0);
}

/// The phase of sample @p i in radians; @p phase, in degrees, is that of sample 0.
double phaseAt(qsizetype i, double samplingRate, double frequency, double phase)
{
    return static_cast<double>(i) * (twoPi * frequency) / samplingRate + phase * radiansPerDegree;
}

/// A raised cosine, from 0 at 0 to 1 at 1.
double raisedCosine(double x)
{
    return (1.0 - std::cos(x * pi)) * 0.5;
}

double straightLine(double x)
{
    return x;
}

/// Weights @p samples from both ends inwards, each one @p nTimes times. The argument of @p weight
/// is the part of the ramp that lies behind the sample, from 0 to below 1.
template<double (*weight)(double), int nTimes = 1>
void ramp(QList<double> &samples, int nPoints)
{
    const qsizetype nSamples = samples.size();
    if (nPoints > nSamples / 2) // twice nPoints could exceed an int
        warn(u"Vector size must be at least twice of nPoints"_s);
    double *sample = samples.data();
    const qsizetype nInside = std::min<qsizetype>(nPoints, nSamples);
    for (qsizetype i = 0; i < nInside; ++i) {
        const double w = weight(static_cast<double>(i) / nPoints);
        for (int time = 0; time < nTimes; ++time) {
            sample[i] *= w;
            sample[nSamples - 1 - i] *= w;
        }
    }
}

/// @p min plus the remainder of the next draw, divided by the number of values, all in 32 bits. The
/// sums are unsigned because these wrap, while the overflow of an int is undefined. A draw is never
/// negative, so the one remainder that overflows (of the smallest int by -1) does not occur. The
/// count of all 2^32 values wraps to 0; the remainder is then the draw itself.
int drawFrom(int min, int max)
{
    const int nValues = static_cast<int>(static_cast<quint32>(max) - static_cast<quint32>(min) + 1);
    const int draw = std::rand();
    const int remainder = nValues == 0 ? draw : draw % nValues;
    return static_cast<int>(static_cast<quint32>(min) + static_cast<quint32>(remainder));
}

double rootOfMean(double sum, qsizetype count)
{
    return std::sqrt(sum / static_cast<double>(count));
}

} // namespace

QList<double> whiteNoise(int nSamples)
{
    seedFromClock();
    QList<double> noise(std::max(nSamples, 0));
    for (double &sample : noise)
        sample = std::rand() / largestDraw;
    return noise;
}

QList<double> sine(double samplingRate, double duration, double frequency, double amplitude,
                   double phase)
{
    QList<double> tone = silence(samplingRate, duration);
    double *sample = tone.data();
    for (qsizetype i = 0; i < tone.size(); ++i)
        sample[i] = std::sin(phaseAt(i, samplingRate, frequency, phase)) * amplitude;
    return tone;
}

QList<double> sam(double samplingRate, double duration, double carrierFrequency,
                  double modulationFrequency, double modulationDepth, double amplitude,
                  double carrierPhase, double modulatorPhase, bool normalise)
{
    QList<double> tone = silence(samplingRate, duration);
    const double scale = normalise ? 1.0 / (modulationDepth + 1.0) : 1.0;
    double *sample = tone.data();
    for (qsizetype i = 0; i < tone.size(); ++i) {
        const double carrier = std::sin(phaseAt(i, samplingRate, carrierFrequency, carrierPhase));
        const double modulator =
            std::cos(phaseAt(i, samplingRate, modulationFrequency, modulatorPhase));
        sample[i] = carrier * ((modulator * modulationDepth + 1.0) * amplitude) * scale;
    }
    return tone;
}

QList<double> cosRamp(QList<double> samples, int nPoints)
{
    cosRamp(&samples, nPoints);
    return samples;
}

void cosRamp(QList<double> *samples, int nPoints)
{
    ramp<raisedCosine>(*samples, nPoints);
}

QList<double> cos2Ramp(QList<double> samples, int nPoints)
{
    cos2Ramp(&samples, nPoints);
    return samples;
}

void cos2Ramp(QList<double> *samples, int nPoints)
{
    ramp<raisedCosine, 2>(*samples, nPoints);
}

QList<double> linearRamp(QList<double> samples, int nPoints)
{
    linearRamp(&samples, nPoints);
    return samples;
}

void linearRamp(QList<double> *samples, int nPoints)
{
    ramp<straightLine>(*samples, nPoints);
}

int randomInteger(int min, int max)
{
    if (max < min)
        warn(u"min cannot be larger than max"_s);
    if (max == qint64{min} - 1) {
        warn(u"max cannot be min - 1; return min"_s);
        return min;
    }
    return drawFrom(min, max);
}

QList<int> randomIntegers(int count, int min, int max)
{
    if (min > max) {
        warn(u"min cannot be larger than max; force min = max"_s);
        min = max;
    }
    seedFromClock();
    QList<int> integers(std::max(count, 0));
    for (int &integer : integers)
        integer = drawFrom(min, max);
    return integers;
}

double rms(QList<int> values)
{
    qint64 sum = 0;
    for (const int value : std::as_const(values)) {
        const auto factor = static_cast<quint32>(value);
        sum += static_cast<qint32>(factor * factor);
    }
    return rootOfMean(static_cast<double>(sum), values.size());
}

double rms(QList<double> values)
{
    double sum = 0.0;
    for (const double value : std::as_const(values))
        sum += value * value;
    return rootOfMean(sum, values.size());
}
