// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's tones and ramps compared with the same loops over std::vector.

#include "audio/PelkClasses.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

constexpr double pi = 3.141592653589793;
constexpr double degree = pi / 180;
constexpr double samplingRate = 50000;
constexpr double frequency = 1000;
constexpr double modulationFrequency = 40;
constexpr double depth = 0.5;
constexpr double amplitude = 0.7;
constexpr double phase = 30;

std::vector<double> sineVector(double rate, double duration, double f, double a, double phi)
{
    const int n = static_cast<int>(std::floor(rate * duration));
    std::vector<double> tone(static_cast<std::size_t>(n));
    double *sample = tone.data();
    for (int i = 0; i < n; ++i)
        sample[i] = std::sin(i * (2 * pi * f) / rate + phi * degree) * a;
    return tone;
}

std::vector<double> samVector(double rate, double duration, double fc, double fm, double m,
                              double a, double phiC, double phiM, bool normalise)
{
    const int n = static_cast<int>(std::floor(rate * duration));
    const double scale = normalise ? 1 / (m + 1) : 1;
    std::vector<double> tone(static_cast<std::size_t>(n));
    double *sample = tone.data();
    for (int i = 0; i < n; ++i) {
        const double carrier = std::sin(i * (2 * pi * fc) / rate + phiC * degree);
        const double modulator = std::cos(i * (2 * pi * fm) / rate + phiM * degree);
        sample[i] = carrier * ((modulator * m + 1) * a) * scale;
    }
    return tone;
}

void cosRampVector(std::vector<double> *samples, int nPoints)
{
    double *first = samples->data();
    double *last = first + samples->size() - 1;
    for (int i = 0; i < nPoints; ++i) {
        const double w = (1 - std::cos(static_cast<double>(i) / nPoints * pi)) * 0.5;
        first[i] *= w;
        last[-i] *= w;
    }
}

void cos2RampVector(std::vector<double> *samples, int nPoints)
{
    double *first = samples->data();
    double *last = first + samples->size() - 1;
    for (int i = 0; i < nPoints; ++i) {
        const double w = (1 - std::cos(static_cast<double>(i) / nPoints * pi)) * 0.5;
        first[i] *= w;
        last[-i] *= w;
        first[i] *= w;
        last[-i] *= w;
    }
}

void linearRampVector(std::vector<double> *samples, int nPoints)
{
    double *first = samples->data();
    double *last = first + samples->size() - 1;
    for (int i = 0; i < nPoints; ++i) {
        const double w = static_cast<double>(i) / nPoints;
        first[i] *= w;
        last[-i] *= w;
    }
}

template<auto makeSine>
void sineBenchmark(benchmark::State &state)
{
    const double duration = static_cast<double>(state.range(0)) / samplingRate;
    for (auto _ : state) {
        auto tone = makeSine(samplingRate, duration, frequency, amplitude, phase);
        benchmark::DoNotOptimize(tone.data());
        benchmark::ClobberMemory();
    }
}

template<auto makeSam>
void samBenchmark(benchmark::State &state)
{
    const double duration = static_cast<double>(state.range(0)) / samplingRate;
    for (auto _ : state) {
        auto tone = makeSam(samplingRate, duration, frequency, modulationFrequency, depth,
                            amplitude, phase, phase, true);
        benchmark::DoNotOptimize(tone.data());
        benchmark::ClobberMemory();
    }
}

/// Ramps a list of zeros over and over; the samples of any other sound would shrink to subnormal
/// numbers, with which processors are slow.
template<typename Samples, void (*ramp)(Samples *, int)>
void rampBenchmark(benchmark::State &state)
{
    Samples samples(static_cast<typename Samples::size_type>(state.range(0)));
    const int nPoints = static_cast<int>(state.range(0) / 2);
    for (auto _ : state) {
        ramp(&samples, nPoints);
        benchmark::DoNotOptimize(samples.data());
        benchmark::ClobberMemory();
    }
}

using List = QList<double>;
using Vector = std::vector<double>;

BENCHMARK(sineBenchmark<sine>)->Name("sine/ostrine")->Arg(1'000'000);
BENCHMARK(sineBenchmark<sineVector>)->Name("sine/vector")->Arg(1'000'000);
BENCHMARK(samBenchmark<sam>)->Name("sam/ostrine")->Arg(1'000'000);
BENCHMARK(samBenchmark<samVector>)->Name("sam/vector")->Arg(1'000'000);
BENCHMARK((rampBenchmark<List, cosRamp>))->Name("cosRamp/ostrine")->Arg(1'000'000);
BENCHMARK((rampBenchmark<Vector, cosRampVector>))->Name("cosRamp/vector")->Arg(1'000'000);
BENCHMARK((rampBenchmark<List, cos2Ramp>))->Name("cos2Ramp/ostrine")->Arg(1'000'000);
BENCHMARK((rampBenchmark<Vector, cos2RampVector>))->Name("cos2Ramp/vector")->Arg(1'000'000);
BENCHMARK((rampBenchmark<List, linearRamp>))->Name("linearRamp/ostrine")->Arg(1'000'000);
BENCHMARK((rampBenchmark<Vector, linearRampVector>))->Name("linearRamp/vector")->Arg(1'000'000);

} // namespace

BENCHMARK_MAIN();
