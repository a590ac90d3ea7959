// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

// Test signals, onset and offset ramps, random integers and root-mean-square values.
//
// A signal is a list of samples, sample i at the time i / sampling rate. Sampling rates and
// frequencies are in Hz, durations in seconds, phases in degrees; ramps are measured in samples.
// Amplitudes have no unit and are not limited: a tone of amplitude 1 lies in [-1, 1], the range of
// the program's sounds. Any value is taken as it is, a negative frequency, amplitude or modulation
// depth too, and one that is not finite makes samples that are not finite.
//
// Random values come from the C library's generator, which is shared by the whole program, and
// warnings are modal boxes: all functions belong on the GUI thread.

/// Names this collection; the functions are free ones.
class PelkClasses
{
public:
    PelkClasses() = default;
};

/// @p nSamples values uniform in [0, 1], both ends included: white, but not centred on zero. The
/// generator is seeded with the current second, so that a repetition within the same second is the
/// same noise. Empty when @p nSamples is not positive.
QList<double> whiteNoise(int nSamples);

/// A pure tone, amplitude * sin(2 pi frequency t + phase), of as many whole samples as @p duration
/// holds. Empty when that is none, not a number, or more than an int counts.
QList<double> sine(double samplingRate, double duration, double frequency, double amplitude,
                   double phase);

/// A sinusoidally amplitude-modulated tone in the usual form that keeps its carrier: sin(2 pi
/// carrierFrequency t + carrierPhase) under the envelope amplitude * (1 + modulationDepth cos(2 pi
/// modulationFrequency t + modulatorPhase)). Carrier and modulator are a sine and a cosine on
/// purpose: with both phases 0 the envelope begins at its maximum. A depth in [0, 1] is the usual
/// modulation, one beyond it overmodulates. With @p normalise everything is divided by 1 +
/// modulationDepth, which takes the envelope's peak to @p amplitude; a depth of -1 cannot be
/// normalised, no sample is finite then. As long as a sine() of this sampling rate and duration.
QList<double> sam(double samplingRate, double duration, double carrierFrequency,
                  double modulationFrequency, double modulationDepth, double amplitude,
                  double carrierPhase, double modulatorPhase, bool normalise);

/// Ramps @p samples on and off: sample i < @p nPoints and its mirror image at the end are weighted
/// by a raised cosine, the rising half of a Hann window: (1 - cos(pi i / nPoints)) / 2, from 0 to
/// just below 1.
///
/// Two ramps need twice @p nPoints samples. With fewer a warning is shown and the ramps overlap: a
/// sample in both is weighted by both, and weights whose sample lies outside the list are dropped.
/// The samples stay as they are when @p nPoints is not positive. All of this holds for every ramp.
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
/// The number of values, max - min + 1, is a 32-bit int and wraps. The result is in the range even
/// so, but one of more than 2^31 values is not covered whole: of n values only the 2^32 - n
/// smallest are drawn, and of all 2^32 only the negative ones.
///
/// A @p max below @p min is warned of and used as it is: the remainder takes the sign of the draw,
/// and the result may lie outside. One that is just 1 below would divide by zero; that is reported
/// in a second box, and the result is @p min.
int randomInteger(int min, int max);

/// @p count integers like those of randomInteger(), the generator being seeded with the current
/// second before: a repetition within the same second gives the same list. A @p min above @p max is
/// warned of and lowered to @p max. Empty when @p count is not positive.
QList<int> randomIntegers(int count, int min, int max);

/// The square root of the mean of the squares; not a number for an empty list. Squares are 32-bit
/// ints and wrap beyond an absolute value of 46340, so that their mean can be wrong and even
/// negative, which makes the result not a number.
double rms(QList<int> values);

/// The square root of the mean of the squares; not a number for an empty list.
double rms(QList<double> values);
