// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/SoundMeasures.h"

#include <algorithm>
#include <cmath>

namespace {

/// Two samples that the processor handles at once: a loop over single ones takes three times as
/// long, because the compiler may not change the order of sums by itself.
using Pair [[gnu::vector_size(2 * sizeof(double))]] = double;

struct Sums
{
    Pair sum = {};
    Pair squares = {};
    Pair largest = {}; ///< square

    void add(Pair values)
    {
        const Pair square = values * values;
        sum += values;
        squares += square;
        largest = square > largest ? square : largest;
    }

    void add(const Sums &other)
    {
        sum += other.sum;
        squares += other.squares;
        largest = other.largest > largest ? other.largest : largest;
    }
};

template<typename At>
Sums sumUp(qsizetype n, At at)
{
    Sums sums;
    Sums others; // so that one addition need not wait for the other
    qsizetype i = 0;
    for (; i + 4 <= n; i += 4) {
        sums.add(Pair{at(i), at(i + 1)});
        others.add(Pair{at(i + 2), at(i + 3)});
    }
    sums.add(others);
    for (; i < n; ++i)
        sums.add(Pair{at(i), 0});
    return sums;
}

template<typename At>
qsizetype clippedSamples(qsizetype n, At at, double limit)
{
    qsizetype clipped = 0;
    qsizetype run = 0;
    for (qsizetype i = 0; i <= n; ++i) {
        if (i < n && std::abs(at(i)) >= limit) {
            ++run;
            continue;
        }
        if (run >= shortestClip)
            clipped += run;
        run = 0;
    }
    return clipped;
}

template<typename At>
SoundMeasures measure(qsizetype n, At at, double limit)
{
    if (n == 0)
        return {};
    const Sums sums = sumUp(n, at);
    const auto count = static_cast<double>(n);
    SoundMeasures result;
    result.nSamples = n;
    result.peak = std::sqrt(std::max(sums.largest[0], sums.largest[1])); // squares are exact
    result.mean = (sums.sum[0] + sums.sum[1]) / count;
    result.rms = std::sqrt((sums.squares[0] + sums.squares[1]) / count);
    result.last = at(n - 1);
    const auto isSilence = [&](qsizetype i) { return std::abs(at(i)) < silenceLimit; };
    while (result.silentAtStart < n && isSilence(result.silentAtStart))
        ++result.silentAtStart;
    while (result.silentAtEnd < n && isSilence(n - 1 - result.silentAtEnd))
        ++result.silentAtEnd;
    if (result.peak >= limit)
        result.clipped = clippedSamples(n, at, limit);
    return result;
}

} // namespace

SoundMeasures measureSound(std::span<const double> samples, qsizetype stride, double limit)
{
    const double *const first = samples.data();
    if (stride == 1)
        return measure(
            std::ssize(samples), [=](qsizetype i) { return first[i]; }, limit);
    return measure((std::ssize(samples) + stride - 1) / stride,
                   [=](qsizetype i) { return first[i * stride]; }, limit);
}

double sampleLimit(int bits)
{
    return 1 - std::ldexp(1.0, 1 - bits);
}

double decibels(double value)
{
    return 20 * std::log10(value);
}
