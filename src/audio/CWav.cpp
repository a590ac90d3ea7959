#include "audio/CWav.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <new>

namespace {

constexpr std::streamsize headerSize = 44;

// The header members are the file's bytes as they stand.
static_assert(std::endian::native == std::endian::little);
static_assert(offsetof(CWav, riffHeader) == 0);
static_assert(offsetof(CWav, dataSize) + sizeof(CWav::dataSize) == headerSize);

void reportError(const char *message, const std::string &filename)
{
    std::cerr << message << filename << std::endl;
}

/// How many bytes follow the read position of @p file; 0 where that cannot be told.
std::int64_t remainingBytes(std::ifstream &file)
{
    const auto position = file.tellg();
    file.seekg(0, std::ios::end);
    const auto end = file.tellg();
    file.seekg(position);
    return std::max<std::int64_t>(end - position, 0);
}

double fromUnsigned8(const unsigned char *bytes)
{
    return (bytes[0] - 128) * 0.0078125;
}

double fromSigned16(const unsigned char *bytes)
{
    const auto value = static_cast<std::int16_t>(bytes[0] | bytes[1] << 8);
    return value * 3.0517578125e-05;
}

/// The most negative code yields +1.0: the strict comparison is intended.
double fromSigned24(const unsigned char *bytes)
{
    const double value = (bytes[0] | bytes[1] << 8 | bytes[2] << 16) * 1.1920928955078125e-07;
    return value > 1.0 ? value - 2.0 : value;
}

} // namespace

// formatTag is left alone on purpose: nothing in this class gives it a value.
CWav::CWav()
    : riffHeader{}
    , riffSize(0)
    , waveHeader{}
    , fmtHeader{}
    , fmtSize(0)
    , audioFormat(0)
    , numChannels(0)
    , sampleRate(0)
    , byteRate(0)
    , blockAlign(0)
    , bitsPerSample(0)
    , dataHeader{}
    , dataSize(0)
    , rawData(nullptr)
    , bytesRead(0)
    , numSamples(0)
    , samples(nullptr)
{
}

// The raw bytes are not released: the one reader lives as long as the program's window.
CWav::~CWav()
{
    rawData = nullptr;
    samples = nullptr;
}

bool CWav::LoadWav(std::string filename)
{
    std::ifstream file(filename, std::ios::binary);
    if (!file.is_open()) {
        reportError("Unable to open WAV file: ", filename);
        return false;
    }
    file.read(reinterpret_cast<char *>(this), headerSize);
    if (file.gcount() == 0) {
        reportError("Header size is zero. ", filename);
        return false;
    }
    if (std::memcmp(waveHeader, "WAVE", sizeof(waveHeader)) != 0) {
        reportError("Not a WAV file: ", filename);
        return false;
    }
    if (audioFormat != 1) {
        reportError("Not a PCM (linear quantitation) WAV file: ", filename);
        return false;
    }
    if (bitsPerSample != 8 && bitsPerSample != 16 && bitsPerSample != 24) {
        reportError("Not a 8-bit, 16-bit, or 24-bit WAV file: ", filename);
        return false;
    }
    numSamples = dataSize / (bitsPerSample / 8U);

    if (dataSize != 0) {
        // A header may declare up to 4 GiB that the file does not hold; only what is there is
        // allocated and read, and the conversion then finds the bytes incomplete.
        file.clear();
        bytesRead = std::min<std::int64_t>(dataSize, remainingBytes(file));
        if (bytesRead > 0) {
            void *grown = std::realloc(rawData, static_cast<std::size_t>(bytesRead));
            if (grown == nullptr)
                throw std::bad_alloc();
            rawData = static_cast<char *>(grown);
            file.read(rawData, bytesRead);
            bytesRead = file.gcount();
        }
        ConvertData();
    }
    return true;
}

double *CWav::ConvertData()
{
    sampleVector.clear();
    // After a rejected header numSamples still counts the file before it, whose samples may have
    // been of another size.
    const bool complete = bytesRead >= 1 && bytesRead == dataSize &&
                          std::int64_t{numSamples} * (bitsPerSample / 8) <= bytesRead;
    const auto *bytes = reinterpret_cast<const unsigned char *>(rawData);
    if (complete && sampleVector.capacity() < numSamples)
        sampleVector.reserve(numSamples);

    switch (bitsPerSample) {
    case 8:
        for (std::uint32_t i = 0; complete && i < numSamples; ++i)
            sampleVector.push_back(fromUnsigned8(bytes + i));
        break;
    case 16:
        for (std::uint32_t i = 0; complete && i < numSamples; ++i)
            sampleVector.push_back(fromSigned16(bytes + std::size_t{2} * i));
        break;
    case 24:
        for (std::uint64_t start = 0; complete && start < dataSize; start += 3) {
            unsigned char sample[3] = {}; // zeros complete a trailing fragment
            std::memcpy(sample, bytes + start, std::min<std::uint64_t>(3, dataSize - start));
            sampleVector.push_back(fromSigned24(sample));
        }
        break;
    case 32:
        std::cerr << "32-bit PCM is not working yet." << std::endl;
        break;
    default:
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
