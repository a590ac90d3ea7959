// SPDX-License-Identifier: GPL-3.0-or-later
// The check of a folder of tokens, compared with the reader alone over the same files, in turns:
//
//   token_check [NUMBER-OF-TOKENS [SECONDS-OF-EACH [ROUNDS]]]
//
// The files are noise, 48 kHz, mono, 16 bits, and stay in the page cache if there is room. Each
// line tells the median time in seconds with the shortest and the longest, and the most memory that
// was used beyond what was there before, in MiB.

#include "audio/CWav.h"
#include "data/TokenList.h"
#include "support/WavFile.h"
#include "tools/TokenCheck.h"

#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int sampleRate = 48000;

bool writeTokens(const QTemporaryDir &folder, int nTokens, int seconds)
{
    std::mt19937 generator(1);
    WavBytes token{.data = QByteArray(qsizetype{2} * sampleRate * seconds, Qt::Uninitialized)};
    auto *const samples = reinterpret_cast<std::int16_t *>(token.data.data());
    for (int i = 0; i < nTokens; ++i) {
        std::generate(samples, samples + qsizetype{sampleRate} * seconds,
                      [&] { return static_cast<std::int16_t>(generator() % 16384 - 8192); });
        samples[qsizetype{sampleRate} * seconds - 1] = 0;
        const QString category = i % 2 == 0 ? "001" : "002";
        if (!writeFile(folder.filePath(QString("%1_%2.wav").arg(category).arg(i, 6)),
                       token.bytes()))
            return false;
    }
    return true;
}

/// The line @p key of /proc/self/status in MiB.
double memory(const std::string &key)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == key + ':') {
            double kilobytes = 0;
            status >> kilobytes;
            return kilobytes / 1024;
        }
    }
    return 0;
}

/// Makes the most memory used so far that of now.
void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

/// Times and peaks of one contestant.
struct Contestant
{
    const char *name;
    std::function<bool()> run;
    std::vector<double> seconds = {};
    double peak = 0;

    bool measure()
    {
        forgetPeak();
        const double before = memory("VmRSS");
        const auto begin = std::chrono::steady_clock::now();
        const bool done = run();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        seconds.push_back(time.count());
        peak = std::max(peak, memory("VmHWM") - before);
        return done;
    }

    double median()
    {
        std::ranges::sort(seconds);
        return seconds[seconds.size() / 2];
    }

    void print()
    {
        const double middle = median();
        std::printf("%-14s %7.3f (%.3f to %.3f) s, %.1f MiB\n", name, middle, seconds.front(),
                    seconds.back(), peak);
    }
};

bool readAll(const std::vector<std::string> &paths)
{
    CWav wav;
    bool all = true;
    for (const std::string &path : paths)
        all = wav.LoadWav(path) && all;
    std::free(wav.rawData); // the reader's destructor does not free it
    return all;
}

bool checkAll(const QString &folder, qsizetype nTokens)
{
    const FolderCheck check =
        checkFolder(folder, "X001", 1, [](qsizetype, qsizetype) { return true; });
    return !check.hasFindings() && check.tokens.size() == nTokens;
}

} // namespace

int main(int argc, char **argv)
{
    const int nTokens = argc > 1 ? std::atoi(argv[1]) : 10'000;
    const int seconds = argc > 2 ? std::atoi(argv[2]) : 1;
    const int rounds = argc > 3 ? std::atoi(argv[3]) : 9;
    const QTemporaryDir folder;
    if (!folder.isValid() || !writeTokens(folder, nTokens, seconds)) {
        std::fputs("the tokens cannot be written\n", stderr);
        return EXIT_FAILURE;
    }
    std::vector<std::string> paths;
    for (const Record &token : tokensIn(folder.path()))
        paths.push_back((token.filePath + '/' + token.filename).toStdString());
    Contestant reader{"reader alone", [&] { return readAll(paths); }};
    Contestant check{"check", [&] { return checkAll(folder.path(), nTokens); }};
    if (!readAll(paths)) // so that the files are in the page cache
        return EXIT_FAILURE;
    for (int round = 0; round < rounds; ++round) {
        if (!reader.measure() || !check.measure()) {
            std::fputs("a token has not been read, or has findings\n", stderr);
            return EXIT_FAILURE;
        }
    }
    std::printf("%d tokens of %d s, %d rounds\n", nTokens, seconds, rounds);
    reader.print();
    check.print();
    std::printf("speed of the check: %.0f %% of the reader's\n",
                100 * reader.median() / check.median());
    return EXIT_SUCCESS;
}
