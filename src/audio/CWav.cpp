// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"

#include "audio/RegularFile.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// The header members are the file's bytes as they stand.
static_assert(std::endian::native == std::endian::little);
static_assert(offsetof(CWav, riffHeader) == 0);
static_assert(offsetof(CWav, dataSize) + sizeof(CWav::dataSize) == CWav::headerSize);

void reportError(const char *message, const std::string &filename)
{
    std::cerr << message << filename << std::endl;
}

/// How many bytes follow the read position of @p file; 0 if that cannot be found out.
std::int64_t remainingBytes(std::ifstream &file)
{
    const auto position = file.tellg();
    file.seekg(0, std::ios::end);
    const auto end = file.tellg();
    file.seekg(position);
    return std::max<std::int64_t>(end - position, 0);
}

/// The little-endian integer at @p bytes, which need not be aligned.
template<typename Integer>
Integer integerAt(const char *bytes)
{
    Integer value;
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

double fromUnsigned8(std::uint8_t value)
{
    return (value - 128) * 0.0078125;
}

double fromSigned16(std::int16_t value)
{
    return value * 3.0517578125e-05;
}

/// Uses the lowest 24 bits of @p value. The most negative code yields +1.0 on purpose: the sign is
/// extended after 1 has been subtracted, which turns that code into the most positive one. Nothing
/// is compared: no processor can predict the sign of a sample, and wrong predictions cost time.
double fromSigned24(std::uint32_t value)
{
    const auto oneLower = static_cast<std::int32_t>((value - 1) << 8) >> 8;
    return (oneLower + 1) * 1.1920928955078125e-07;
}

/// Has the system provide @p size bytes of memory at once: page by page, at the first access to
/// each, that takes longer than reading and converting what the memory is for. Does nothing for
/// little memory, and where the system cannot do it.
void provide(void *memory, std::size_t size)
{
    constexpr std::size_t leastSize = std::size_t{4} << 20;
    const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    if (size >= leastSize && std::align(pageSize, pageSize, memory, size) != nullptr)
        madvise(memory, size, MADV_POPULATE_WRITE);
}

/// Makes @p samples the values of @p sample for 0 .. @p count - 1.
template<typename Sample>
void setSamples(std::vector<double> &samples, std::size_t count, Sample sample)
{
    samples.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = sample(i);
}

/// How many samples the raw bytes of @p wav make; 0 when they are incomplete.
std::size_t convertibleSamples(const CWav &wav)
{
    if (wav.bytesRead < 1 || wav.bytesRead != wav.dataSize)
        return 0;
    switch (wav.bitsPerSample) {
    case 8:
    case 16:
        // After a rejected header, numSamples is still that of the previous file, whose samples may
        // have had another size.
        return std::int64_t{wav.numSamples} * (wav.bitsPerSample / 8) <= wav.bytesRead
                   ? wav.numSamples
                   : 0;
    case 24:
        return (std::size_t{wav.dataSize} + 2) / 3; // a trailing fragment counts
    default:
        return 0;
    }
}

} // namespace

// formatTag is not initialised on purpose: nothing in this class gives it a value.
CWav::CWav() = default;

// The raw bytes are not freed: the program's only reader lives as long as its window.
CWav::~CWav()
{
    rawData = nullptr;
    samples = nullptr;
}

bool CWav::LoadWav(std::string filename)
{
    const char *const refusal = loadQuietly(*this, filename);
    if (refusal != nullptr)
        reportError(refusal, filename);
    return refusal == nullptr;
}

const char *loadQuietly(CWav &wav, const std::string &filename)
{
    std::ifstream file = openRegularFile(filename);
    if (!file.is_open())
        return "Unable to open WAV file: ";
    file.read(reinterpret_cast<char *>(&wav), CWav::headerSize);
    if (file.gcount() == 0)
        return "Header size is zero. ";
    if (std::memcmp(wav.waveHeader, "WAVE", sizeof(wav.waveHeader)) != 0)
        return "Not a WAV file: ";
    if (wav.audioFormat != 1)
        return "Not a PCM (linear quantitation) WAV file: ";
    if (wav.bitsPerSample != 8 && wav.bitsPerSample != 16 && wav.bitsPerSample != 24)
        return "Not a 8-bit, 16-bit, or 24-bit WAV file: ";
    wav.numSamples = wav.dataSize / (wav.bitsPerSample / 8U);

    if (wav.dataSize != 0) {
        // A header may declare up to 4 GiB that the file does not hold. Only the bytes that exist
        // are allocated and read; the conversion then finds them incomplete.
        file.clear();
        wav.bytesRead = std::min<std::int64_t>(wav.dataSize, remainingBytes(file));
        if (wav.bytesRead > 0) {
            void *grown = std::realloc(wav.rawData, static_cast<std::size_t>(wav.bytesRead));
            if (grown == nullptr)
                throw std::bad_alloc();
            wav.rawData = static_cast<char *>(grown);
            provide(wav.rawData, static_cast<std::size_t>(wav.bytesRead));
            file.read(wav.rawData, wav.bytesRead);
            wav.bytesRead = file.gcount();
        }
        wav.ConvertData();
    }
    return nullptr;
}

double *CWav::ConvertData()
{
    const std::size_t count = convertibleSamples(*this);
    if (sampleVector.capacity() < count) {
        sampleVector.clear(); // so that nothing is copied into the new memory
        sampleVector.reserve(count);
        provide(sampleVector.data(), count * sizeof(double));
    }

    switch (bitsPerSample) {
    case 8:
        setSamples(sampleVector, count, [this](std::size_t i) {
            return fromUnsigned8(integerAt<std::uint8_t>(rawData + i));
        });
        break;
    case 16:
        setSamples(sampleVector, count, [this](std::size_t i) {
            return fromSigned16(integerAt<std::int16_t>(rawData + 2 * i));
        });
        break;
    case 24: {
        // Each sample is read as four bytes; for the last one that may be more than there are.
        const std::size_t last = std::max<std::size_t>(count, 1) - 1;
        setSamples(sampleVector, last, [this](std::size_t i) {
            return fromSigned24(integerAt<std::uint32_t>(rawData + 3 * i));
        });
        if (count > 0) {
            char padded[4] = {};
            std::memcpy(padded, rawData + 3 * last, dataSize - 3 * last);
            sampleVector.push_back(fromSigned24(integerAt<std::uint32_t>(padded)));
        }
        break;
    }
    case 32:
        sampleVector.clear();
        std::cerr << "32-bit PCM is not working yet." << std::endl;
        break;
    default:
        sampleVector.clear();
        std::cerr << "Not recognizable bits per sample. " << std::endl;
        break;
    }
    samples = sampleVector.data();
    return samples;
}

std::uint16_t CWav::GetAudioFormat() const
{
    return formatTag;
}

int CWav::GetHeaderSize() const
{
    return headerSize;
}

void CWav::DisplayHeader() const
{
    const auto printText = [](const char *label, const char(&text)[4]) {
        std::cout << label;
        std::cout.write(text, sizeof(text));
        std::cout << std::endl;
    };
    const auto printNumber = [](const char *label, std::uint32_t value) {
        std::cout << label << value << std::endl;
    };
    printText("RIFF header                : ", riffHeader);
    printText("WAVE header                : ", waveHeader);
    printText("FMT                        : ", fmtHeader);
    printNumber("Data size                  : ", riffSize);
    printNumber("Sampling Rate              : ", sampleRate);
    printNumber("Number of bits per sample  : ", bitsPerSample);
    printNumber("Number of channels         : ", numChannels);
    printNumber("Number of bytes per second : ", byteRate);
    printNumber("Data length (bytes)        : ", dataSize);
    printNumber("Audio Format               : ", audioFormat);
    printNumber("Block align                : ", blockAlign);
    printText("Data string                : ", dataHeader);
}

void CWav::DisplayData() const
{
    for (const double sample : sampleVector)
        std::cout << sample << std::endl;
}

bool CWav::WriteWav(std::string filename)
{
    std::ofstream file(filename, std::ios::binary | std::ios::app);
    if (!file.is_open()) {
        reportError("Unable to write wave file: ", filename);
        return false;
    }
    file.write(reinterpret_cast<const char *>(this), headerSize);
    file.write(rawData, std::min<std::int64_t>(dataSize, bytesRead));
    return true;
}
