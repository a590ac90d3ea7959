// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

// Test signals, onset and offset ramps, random integers and root-mean-square values.
//
// A signal is a list of samples, sample i at the time i / sampling rate. Sampling rates and
// frequencies are in Hz, durations in seconds, phases in degrees; ramps are measured in samples.
// Amplitudes have no unit and are not limited: a tone of amplitude 1 lies in [-1, 1], the range of
// the program's sounds. Any value is accepted, even a negative frequency, amplitude or modulation
// depth; one that is not finite gives samples that are not finite.
//
// Random values come from the C library's generator, which the whole program shares, and warnings
// are modal boxes: call all functions on the GUI thread.

/// Gives this collection its name; the functions are free functions.
class PelkClasses
{
public:
    PelkClasses() = default;
};

/// @p nSamples values uniform in [0, 1], both ends included: white, but not centred on zero. The
/// generator is seeded with the current second, so a second call within the same second gives the
/// same noise. Empty when @p nSamples is not positive.
QList<double> whiteNoise(int nSamples);

/// A pure tone, amplitude * sin(2 pi frequency t + phase), of as many whole samples as @p duration
/// holds. Empty when that number is not positive, not a number, or too large for an int.
QList<double> sine(double samplingRate, double duration, double frequency, double amplitude,
                   double phase);

/// A sinusoidally amplitude-modulated tone in the usual form that keeps its carrier: sin(2 pi
/// carrierFrequency t + carrierPhase) under the envelope amplitude * (1 + modulationDepth cos(2 pi
/// modulationFrequency t + modulatorPhase)). Carrier and modulator are a sine and a cosine on
/// purpose: with both phases 0 the envelope begins at its maximum. A depth in [0, 1] is the usual
/// modulation, one beyond it overmodulates. With @p normalise everything is divided by 1 +
/// modulationDepth, which takes the envelope's peak to @p amplitude; a depth of -1 cannot be
/// normalised, and no sample is finite then. The length is that of a sine() with the same sampling
/// rate and duration.
QList<double> sam(double samplingRate, double duration, double carrierFrequency,
                  double modulationFrequency, double modulationDepth, double amplitude,
                  double carrierPhase, double modulatorPhase, bool normalise);

/// Ramps @p samples on and off: sample i < @p nPoints and its mirror image at the end are weighted
/// by a raised cosine, the rising half of a Hann window: (1 - cos(pi i / nPoints)) / 2, from 0 to
/// just below 1.
///
/// Two ramps need twice @p nPoints samples. With fewer a warning is shown and the ramps overlap: a
/// sample in both is weighted by both, and weights whose sample lies outside the list are dropped.
/// The samples stay as they are when @p nPoints is not positive. All of this holds for the other
/// ramps too.
QList<double> cosRamp(QList<double> samples, int nPoints);
/// The same in place; @p samples must not be null.
void cosRamp(QList<double> *samples, int nPoints);

/// Ramps as cosRamp() does, but applies each weight twice, so that the samples are multiplied by
/// its square.
QList<double> cos2Ramp(QList<double> samples, int nPoints);
/// The same in place; @p samples must not be null.
void cos2Ramp(QList<double> *samples, int nPoints);

/// Ramps by the weights i / nPoints, a straight line from 0 to just below 1.
QList<double> linearRamp(QList<double> samples, int nPoints);
/// The same in place; @p samples must not be null.
void linearRamp(QList<double> *samples, int nPoints);

/// A random integer in [@p min, @p max], both included: min + draw % (max - min + 1), where the
/// draw is the generator's next value. The generator is not seeded here.
///
/// The number of values, max - min + 1, is a 32-bit int and wraps. The result is in the range all
/// the same, but from a range of n > 2^31 values only the 2^32 - n smallest are drawn, and from the
/// range of all 2^32 values only the negative ones.
///
/// If @p max is below @p min, a warning is shown and both are used as they are: the remainder has
/// the sign of the draw, and the result may lie outside the range. If @p max is @p min - 1, the
/// division would be by zero: a second box reports that, and the result is @p min.
int randomInteger(int min, int max);

/// @p count integers like those of randomInteger(). The generator is seeded with the current second
/// first, so a second call within the same second gives the same list. If @p min is above @p max, a
/// warning is shown and @p min is lowered to @p max. Empty when @p count is not positive.
QList<int> randomIntegers(int count, int min, int max);

/// The square root of the mean of the squares; not a number for an empty list. The squares are
/// 32-bit ints, which wrap for values beyond 46340 and -46340: the mean can then be wrong and even
/// negative, and the root of a negative mean is not a number.
double rms(QList<int> values);

/// The square root of the mean of the squares; not a number for an empty list.
double rms(QList<double> values);
