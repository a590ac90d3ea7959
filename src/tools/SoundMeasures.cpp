// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/SoundMeasures.h"

#include "plots/Vectorization.h"

#include <algorithm>
#include <cmath>

namespace {

/// So many samples, which the processor handles at once.
template<qsizetype width>
using Lanes [[gnu::vector_size(width * sizeof(double))]] = double;

struct Sums
{
    double sum = 0;
    double squares = 0;
    double largestSquare = 0;

    void add(double sumOfSome, double squaresOfSome, double largestOfSome)
    {
        sum += sumOfSome;
        squares += squaresOfSome;
        largestSquare = std::max(largestSquare, largestOfSome);
    }
};

/// Sums up @p width samples at once, in two parts so that one addition need not wait for the other.
/// A loop over single samples takes several times as long, because the compiler may not change the
/// order of additions by itself.
template<qsizetype width, typename At>
[[gnu::always_inline]] inline Sums sumUpBy(qsizetype n, At at)
{
    Lanes<width> sum[2] = {};
    Lanes<width> squares[2] = {};
    Lanes<width> largest[2] = {};
    qsizetype i = 0;
    for (; i + 2 * width <= n; i += 2 * width) {
        for (qsizetype part = 0; part < 2; ++part) {
            Lanes<width> values;
            for (qsizetype lane = 0; lane < width; ++lane)
                values[lane] = at(i + part * width + lane);
            const Lanes<width> square = values * values;
            sum[part] += values;
            squares[part] += square;
            largest[part] = square > largest[part] ? square : largest[part];
        }
    }
    Sums sums;
    for (qsizetype part = 0; part < 2; ++part) {
        for (qsizetype lane = 0; lane < width; ++lane)
            sums.add(sum[part][lane], squares[part][lane], largest[part][lane]);
    }
    for (; i < n; ++i)
        sums.add(at(i), at(i) * at(i), at(i) * at(i));
    return sums;
}

#ifdef OSTRINE_HAS_AVX2_TARGET
template<typename At>
OSTRINE_TARGET_AVX2 Sums sumUpByAvx2(qsizetype n, At at)
{
    return sumUpBy<4>(n, at);
}
#endif

template<typename At>
Sums sumUp(qsizetype n, At at)
{
#ifdef OSTRINE_HAS_AVX2_TARGET
    if (runs_avx2())
        return sumUpByAvx2(n, at);
#endif
    return sumUpBy<2>(n, at);
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
    result.peak = std::sqrt(sums.largestSquare); // squares are exact
    result.mean = sums.sum / count;
    result.rms = std::sqrt(sums.squares / count);
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
