// SPDX-License-Identifier: GPL-3.0-or-later
// Loading a WAV file: this program's reader compared with libsndfile's. Both turn all samples into
// doubles of about -1 .. +1. The files are in the page cache: the reader is measured, not the disk.

#include "audio/CWav.h"
#include "support/WavFile.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

/// The path in @p folder of a token of @p size samples of noise with @p bits bits each. Writes the
/// file if it is not there; returns an empty path when that fails.
std::string token(const QTemporaryDir &folder, int bits, std::int64_t size)
{
    const QString path = folder.filePath(QString("%1-%2.wav").arg(bits).arg(size));
    if (!QFile::exists(path)) {
        std::mt19937 generator(1);
        WavBytes file{.bitsPerSample = static_cast<std::uint16_t>(bits),
                      .data = QByteArray(size * bits / 8, Qt::Uninitialized)};
        for (char &byte : file.data)
            byte = static_cast<char>(generator());
        if (!writeFile(path, file.bytes()))
            return {};
    }
    return path.toStdString();
}

/// One reader for every file, as in the program. A first load, before the time starts, makes its
/// buffers large enough.
void ostrine(benchmark::State &state, const std::string &path)
{
    static CWav reader;
    if (!reader.LoadWav(path) || std::ssize(reader.sampleVector) != state.range(0))
        state.SkipWithError("not loaded");
    for (auto _ : state) {
        reader.LoadWav(path);
        benchmark::DoNotOptimize(reader.samples);
        benchmark::ClobberMemory();
    }
}

/// A new reader for each file.
void ostrineFirst(benchmark::State &state, const std::string &path)
{
    for (auto _ : state) {
        CWav reader;
        if (!reader.LoadWav(path) || std::ssize(reader.sampleVector) != state.range(0))
            state.SkipWithError("not loaded");
        benchmark::DoNotOptimize(reader.samples);
        benchmark::ClobberMemory();
        std::free(reader.rawData); // the reader's destructor does not free it
    }
}

/// Opens @p path, reads all its samples into the memory that @p memoryFor returns for their number,
/// and closes it. False when there are other than @p size samples.
template<typename MemoryFor>
bool readWithSndfile(const std::string &path, MemoryFor memoryFor, std::int64_t size)
{
    SF_INFO info = {};
    SNDFILE *const file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        return false;
    const sf_count_t count = info.frames * info.channels;
    const sf_count_t nRead =
        sf_read_double(file, memoryFor(static_cast<std::size_t>(count)), count);
    sf_close(file);
    return nRead == size;
}

/// libsndfile into one buffer which is kept.
void sndfileIntoKept(benchmark::State &state, const std::string &path)
{
    std::vector<double> samples;
    const auto memoryFor = [&samples](std::size_t count) {
        samples.resize(count);
        return samples.data();
    };
    if (!readWithSndfile(path, memoryFor, state.range(0)))
        state.SkipWithError("not loaded");
    for (auto _ : state) {
        readWithSndfile(path, memoryFor, state.range(0));
        benchmark::DoNotOptimize(samples.data());
        benchmark::ClobberMemory();
    }
}

/// libsndfile into a new vector for each file.
void sndfileIntoNewVector(benchmark::State &state, const std::string &path)
{
    for (auto _ : state) {
        std::vector<double> samples;
        const auto memoryFor = [&samples](std::size_t count) {
            samples.resize(count);
            return samples.data();
        };
        if (!readWithSndfile(path, memoryFor, state.range(0)))
            state.SkipWithError("not loaded");
        benchmark::DoNotOptimize(samples.data());
        benchmark::ClobberMemory();
    }
}

/// libsndfile into new memory for each file, which is not filled with zeros first.
void sndfileIntoNewMemory(benchmark::State &state, const std::string &path)
{
    for (auto _ : state) {
        std::unique_ptr<double[]> samples;
        const auto memoryFor = [&samples](std::size_t count) {
            samples = std::make_unique_for_overwrite<double[]>(count);
            return samples.get();
        };
        if (!readWithSndfile(path, memoryFor, state.range(0)))
            state.SkipWithError("not loaded");
        benchmark::DoNotOptimize(samples.get());
        benchmark::ClobberMemory();
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    for (const int bits : {8, 16, 24}) {
        const auto add = [&](const char *what, const char *who, auto contestant) {
            const std::string name =
                std::string(what) + ' ' + std::to_string(bits) + " bits/" + who;
            const auto run = [&folder, bits, contestant](benchmark::State &state) {
                contestant(state, token(folder, bits, state.range(0)));
            };
            for (const std::int64_t size : {12'000, 480'000, 28'800'000})
                benchmark::RegisterBenchmark(name.c_str(), run)->Arg(size);
        };
        add("load", "ostrine", ostrine);
        add("load", "libsndfile, kept buffer", sndfileIntoKept);
        add("first load", "ostrine", ostrineFirst);
        add("first load", "libsndfile, new vector", sndfileIntoNewVector);
        add("first load", "libsndfile, new memory", sndfileIntoNewMemory);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
