// The forward transform of real numbers: this program's against those of FFTW, GSL and Eigen.
// Tables and plans are made before the clock starts. All transform the same input from one array
// into another, except GSL, which works in place: copying the input belongs to its transform.

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

/// FFTW with a plan made as @p planning says.
void fftw(benchmark::State &state, unsigned planning)
{
    const auto length = static_cast<std::size_t>(state.range(0));
    using Array = std::unique_ptr<double[], decltype(&fftw_free)>;
    const Array input(fftw_alloc_real(length), &fftw_free);
    const Array output(fftw_alloc_real(length), &fftw_free);
    const fftw_plan plan =
        fftw_plan_r2r_1d(static_cast<int>(length), input.get(), output.get(), FFTW_R2HC, planning);
    // Measuring a plan overwrites the input.
    std::ranges::copy(noise(length), input.get());
    for (auto _ : state) {
        fftw_execute(plan);
        benchmark::DoNotOptimize(output.get());
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
}

void fftwEstimate(benchmark::State &state)
{
    fftw(state, FFTW_ESTIMATE);
}

void fftwMeasure(benchmark::State &state)
{
    fftw(state, FFTW_MEASURE);
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
BENCHMARK(fftwEstimate)->Name("do_fft/fftw-estimate")->Apply(sizes);
BENCHMARK(fftwMeasure)->Name("do_fft/fftw-measure")->Apply(sizes);
BENCHMARK(gsl)->Name("do_fft/gsl")->Apply(sizes);
BENCHMARK(eigen)->Name("do_fft/eigen")->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
