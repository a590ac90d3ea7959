// SPDX-License-Identifier: GPL-3.0-or-later
// The way from a file to the sound that is presented. One reader loads all the files of an input,
// one after the other, as the program's does; after each, all that the reader holds is compared
// with what a second, plain implementation holds.

#include "FuzzInput.h"
#include "MemoryFile.h"
#include "audio/CWav.h"
#include "audio/PresentationDelay.h"
#include "audio/TokenSound.h"
#include "support/WavFile.h"

#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <vector>

namespace {

constexpr int headerSize = 44;

/// What one call of LoadWav answers and prints.
struct Loading
{
    bool result;
    std::string message; ///< without the file's name
};

/// What a reader is to hold: the header's bytes, and what was made of those behind them.
struct Expected
{
    QByteArray header = QByteArray(headerSize, '\0');
    QByteArray raw;
    std::uint32_t numSamples = 0;
    std::vector<double> samples;

    std::uint32_t field(int offset, int width) const
    {
        std::uint32_t value = 0;
        for (int i = 0; i < width; ++i)
            value |= std::uint32_t{static_cast<std::uint8_t>(header[offset + i])} << 8 * i;
        return value;
    }
    std::uint32_t channels() const { return field(22, 2); }
    std::uint32_t rate() const { return field(24, 4); }
    std::uint32_t bits() const { return field(34, 2); }
    std::uint32_t dataSize() const { return field(40, 4); }

    Loading load(const QByteArray &file)
    {
        if (file.isEmpty())
            return {false, "Header size is zero. "};
        const QByteArray start = file.first(std::min<qsizetype>(file.size(), headerSize));
        header.replace(0, start.size(), start);
        if (header.mid(8, 4) != "WAVE")
            return {false, "Not a WAV file: "};
        if (field(20, 2) != 1)
            return {false, "Not a PCM (linear quantitation) WAV file: "};
        if (bits() != 8 && bits() != 16 && bits() != 24)
            return {false, "Not a 8-bit, 16-bit, or 24-bit WAV file: "};
        numSamples = dataSize() / (bits() / 8);
        if (dataSize() != 0) {
            raw = file.mid(headerSize, dataSize());
            convert();
        }
        return {true, {}};
    }

    std::string convert()
    {
        samples.clear();
        if (bits() == 32)
            return "32-bit PCM is not working yet.";
        if (bits() != 8 && bits() != 16 && bits() != 24)
            return "Not recognizable bits per sample. ";
        if (raw.isEmpty() || raw.size() != dataSize())
            return {};
        const qsizetype width = bits() / 8;
        const qsizetype count = bits() == 24 ? (raw.size() + 2) / 3 : qsizetype{numSamples};
        if (bits() != 24 && count * width > raw.size())
            return {};
        for (qsizetype start = 0; start < count * width; start += width)
            samples.push_back(sample(
                QByteArrayView(raw).sliced(start).first(std::min(width, raw.size() - start))));
        return {};
    }

    double sample(QByteArrayView code) const
    {
        std::uint32_t unsignedCode = 0;
        for (int i = 0; i < code.size(); ++i)
            unsignedCode |= std::uint32_t{static_cast<std::uint8_t>(code[i])} << 8 * i;
        const double value = unsignedCode / static_cast<double>(1U << (bits() - 1));
        if (bits() == 8)
            return value - 1;
        const bool negative = bits() == 16 ? value >= 1 : value > 1;
        return negative ? value - 2 : value;
    }
};

/// The program's reader leaves its raw bytes to the end of the program, and so to nobody here.
struct Reader : CWav
{
    ~Reader() { std::free(rawData); }
};

/// Collects what is written to the standard error stream, as long as it lives.
class Errors
{
public:
    Errors()
        : m_before(std::cerr.rdbuf(&m_text))
    {
    }
    ~Errors() { std::cerr.rdbuf(m_before); }
    Errors(const Errors &) = delete;
    Errors &operator=(const Errors &) = delete;

    /// What has been written since the last call.
    std::string take()
    {
        const std::string text = m_text.str();
        m_text.str({});
        return text;
    }

private:
    std::stringbuf m_text;
    std::streambuf *m_before;
};

/// A file whose header is in order but for what the input says.
QByteArray orderlyFile(FuzzInput &input)
{
    WavBytes file;
    file.bitsPerSample = static_cast<std::uint16_t>(8 * (1 + input.byte() % 4));
    file.numChannels = input.byte() % 4;
    file.sampleRate = input.flag() ? 48000 : input.number<std::uint32_t>();
    const int undeclared = input.number<std::int8_t>();
    const int repetitions = input.byte() < 250 ? 1 : 40; // more than a stream buffers
    file.data = input.bytes(input.byte()).repeated(repetitions);
    file.declaredSize = static_cast<std::uint32_t>(file.data.size() - undeclared);
    return file.bytes();
}

/// The program's objects on this way, beside what they are to hold.
class Session
{
public:
    void load(const QByteArray &file, FuzzInput &input);
    void loadNoFile(const std::string &path);
    void convert();
    void write();

private:
    void compare() const;
    void present(qsizetype before, qsizetype behind);

    Errors m_errors;
    Reader m_wav;
    Expected m_expected;
    QList<double> m_soundWave;
    QList<double> m_expectedWave;
};

void Session::load(const QByteArray &file, FuzzInput &input)
{
    const qsizetype before = input.byte();
    const qsizetype behind = input.byte();
    static MemoryFile memory;
    memory.hold(file);
    const bool result = m_wav.LoadWav(memory.path());
    const Loading expected = m_expected.load(file);
    require(result == expected.result);
    require(m_errors.take() == (result ? "" : expected.message + memory.path() + "\n"));
    compare();
    if (result)
        present(before, behind);
}

/// What is no file is refused in one line that ends in its path, and changes nothing.
void Session::loadNoFile(const std::string &path)
{
    require(!m_wav.LoadWav(path));
    const std::string message = m_errors.take();
    require(message.ends_with(path + "\n") &&
            std::count(message.begin(), message.end(), '\n') == 1);
    compare();
}

void Session::convert()
{
    const double *const samples = m_wav.ConvertData();
    const std::string message = m_expected.convert();
    require(samples == m_wav.samples);
    require(m_errors.take() == (message.empty() ? "" : message + "\n"));
    compare();
}

/// The header as it stands and the bytes behind it, as far as both declared and read, are appended.
void Session::write()
{
    static MemoryFile memory;
    memory.hold("before");
    require(m_wav.WriteWav(memory.path()));
    const QByteArray written = m_expected.raw.left(m_expected.dataSize());
    require(memory.contents() == "before" + m_expected.header + written);
    require(m_errors.take().empty());
    compare();
}

void Session::compare() const
{
    require(m_expected.header ==
            QByteArrayView(reinterpret_cast<const char *>(&m_wav), headerSize));
    require(m_wav.bytesRead == m_expected.raw.size());
    require(m_expected.raw == QByteArrayView(m_wav.rawData, m_wav.bytesRead));
    require(m_wav.numSamples == m_expected.numSamples);
    require(m_wav.sampleVector == m_expected.samples);
    require(m_wav.samples == m_wav.sampleVector.data());
    for (const double sample : m_wav.sampleVector)
        require(sample >= -1 && sample <= 1);
}

/// What the window makes of a file that was loaded, with silence around it.
void Session::present(qsizetype before, qsizetype behind)
{
    const std::optional<TokenSize> size = tokenSize(m_wav);
    const std::uint32_t channels = m_expected.channels();
    const std::uint32_t nPoints = channels == 0 ? 0 : m_expected.numSamples / channels;
    require(size.has_value() ==
            (nPoints > 0 && m_expected.rate() > 0 && nPoints <= 3600.0 * m_expected.rate() &&
             m_expected.samples.size() >= m_expected.numSamples));
    if (!size)
        return;
    require(std::cmp_equal(size->nPoints, nPoints));
    require(size->duration == static_cast<double>(nPoints) / m_expected.rate());

    takeFirstChannel(m_wav, size->nPoints, m_soundWave);
    m_expectedWave.resize(nPoints);
    if (channels <= 2) {
        for (qsizetype i = 0; i < m_expectedWave.size(); ++i)
            m_expectedWave[i] = m_expected.samples[static_cast<std::size_t>(i * channels)];
    }
    require(m_soundWave == m_expectedWave);

    const QByteArray bytes = playbackBytes(before, m_soundWave, behind);
    QByteArray expected(before * 4, '\0');
    for (const double sample : m_expectedWave) {
        const auto played = static_cast<float>(sample);
        expected.append(reinterpret_cast<const char *>(&played), sizeof(played));
    }
    require(bytes == expected + QByteArray(behind * 4, '\0'));
}

/// The delay of any token that a file can hold.
void checkDelay(FuzzInput &input)
{
    const auto nPoints = std::max(1U, input.number<std::uint32_t>() / 2);
    const auto rate = std::max(1U, input.number<std::uint32_t>());
    const double silentInterval = input.byte() / 100.0;
    const double duration = static_cast<double>(nPoints) / rate;
    const double expected = std::min(std::trunc((duration + silentInterval) * 1000),
                                     double{std::numeric_limits<int>::max()});
    require(static_cast<double>(presentationDelay(duration, silentInterval).count()) == expected);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr int mostSteps = 8; // so that a long input does not take long
    FuzzInput input(data, size);
    Session session;
    for (int step = 0; step < mostSteps && !input.atEnd(); ++step) {
        switch (input.byte() % 8) {
        case 0:
        case 1:
        case 2:
            session.load(orderlyFile(input), input);
            break;
        case 3:
            session.load(input.bytes(input.number<std::uint16_t>()), input);
            break;
        case 4:
            session.loadNoFile(input.flag() ? "/proc/self/fd" : "/proc/self/fd/none");
            break;
        case 5:
            session.convert();
            break;
        case 6:
            session.write();
            break;
        default:
            checkDelay(input);
            break;
        }
    }
    return 0;
}
