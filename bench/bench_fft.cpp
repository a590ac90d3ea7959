// SPDX-License-Identifier: GPL-3.0-or-later
// The forward transform of real numbers: this program's compared with those of FFTW, GSL and Eigen.
// Tables and plans are made before the clock starts. All transform the same input from one array
// into another, except GSL, which works in place: its time includes copying the input.

#include "plots/FFTReal.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <gsl/gsl_fft_real.h>
#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <complex>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

namespace {

/// @p length numbers from -1 to 1, the same ones in every call.
std::vector<double> noise(std::size_t length)
{
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> amplitude(-1.0, 1.0);
    std::vector<double> values(length);
    std::generate(values.begin(), values.end(), [&] { return amplitude(generator); });
    return values;
}

void ostrine(benchmark::State &state)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    const std::vector<double> input = noise(length);
    std::vector<double> output(length);
    const FFTReal<double> transform(state.range(0));
    for (auto _ : state) {
        transform.do_fft(output.data(), input.data());
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
}

/// An array that FFTW has allocated.
template<class T>
using FftwArray = std::unique_ptr<T[], decltype(&fftw_free)>;

/// Runs @p plan on noise in @p input, and destroys it.
void runPlan(benchmark::State &state, double *input, fftw_plan plan)
{
    // Measuring a plan overwrites the input.
    std::ranges::copy(noise(static_cast<std::size_t>(state.range(0))), input);
    for (auto _ : state) {
        fftw_execute(plan);
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
}

/// FFTW's transform of real numbers into half of the complex spectrum, with a plan made as
/// @p planning says.
template<unsigned planning>
void fftwComplex(benchmark::State &state)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    const FftwArray<double> input(fftw_alloc_real(length), &fftw_free);
    const FftwArray<fftw_complex> output(fftw_alloc_complex(length / 2 + 1), &fftw_free);
    runPlan(state, input.get(),
            fftw_plan_dft_r2c_1d(static_cast<int>(length), input.get(), output.get(), planning));
}

/// FFTW's transform into as many real numbers as there are in the input, which is the layout of
/// do_fft but for the order and sign of the imaginary parts.
template<unsigned planning>
void fftwHalfComplex(benchmark::State &state)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    const FftwArray<double> input(fftw_alloc_real(length), &fftw_free);
    const FftwArray<double> output(fftw_alloc_real(length), &fftw_free);
    runPlan(
        state, input.get(),
        fftw_plan_r2r_1d(static_cast<int>(length), input.get(), output.get(), FFTW_R2HC, planning));
}

void gsl(benchmark::State &state)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    const std::vector<double> input = noise(length);
    std::vector<double> values(length);
    for (auto _ : state) {
        std::ranges::copy(input, values.begin());
        gsl_fft_real_radix2_transform(values.data(), 1, length);
        benchmark::DoNotOptimize(values.data());
        benchmark::ClobberMemory();
    }
}

void eigen(benchmark::State &state)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    const std::vector<double> input = noise(length);
    std::vector<std::complex<double>> output(length / 2 + 1);
    Eigen::FFT<double> transform;
    transform.SetFlag(Eigen::FFT<double>::HalfSpectrum);
    // The first transform of a length makes its tables.
    transform.fwd(output.data(), input.data(), state.range(0));
    for (auto _ : state) {
        transform.fwd(output.data(), input.data(), state.range(0));
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    for (const int length : {1024, 4096, 16384, 65536, 262144})
        benchmark->Arg(length);
}

BENCHMARK(ostrine)->Name("do_fft/ostrine")->Apply(sizes);
BENCHMARK(fftwComplex<FFTW_ESTIMATE>)->Name("do_fft/fftw-r2c-estimate")->Apply(sizes);
BENCHMARK(fftwComplex<FFTW_MEASURE>)->Name("do_fft/fftw-r2c-measure")->Apply(sizes);
BENCHMARK(fftwHalfComplex<FFTW_ESTIMATE>)->Name("do_fft/fftw-r2hc-estimate")->Apply(sizes);
BENCHMARK(fftwHalfComplex<FFTW_MEASURE>)->Name("do_fft/fftw-r2hc-measure")->Apply(sizes);
BENCHMARK(gsl)->Name("do_fft/gsl")->Apply(sizes);
BENCHMARK(eigen)->Name("do_fft/eigen")->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
