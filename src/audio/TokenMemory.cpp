// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/TokenMemory.h"

#include "audio/CWav.h"
#include "audio/RegularFile.h"

#include <QByteArray>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <bit>

#ifdef Q_OS_UNIX
#include <sys/mman.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// The places in the header of what is needed of it.
constexpr qsizetype numChannelsAt = 22;
constexpr qsizetype bitsPerSampleAt = 34;
constexpr qsizetype dataSizeAt = 40;

// In bytes. Drawing the waveform takes the most: up to 460 bytes per point were measured, with all
// that is computed before (bench_charts --memory).
constexpr qint64 perSample = sizeof(double);
constexpr qint64 perPoint = 512;
constexpr qint64 perTransformPoint = 64;

} // namespace

qint64 tokenMemory(QByteArrayView header, qint64 fileSize)
{
    if (header.size() < CWav::headerSize)
        return 0;
    const auto numChannels = qFromLittleEndian<quint16>(header.data() + numChannelsAt);
    const auto bitsPerSample = qFromLittleEndian<quint16>(header.data() + bitsPerSampleAt);
    const qint64 dataSize = qFromLittleEndian<quint32>(header.data() + dataSizeAt);
    if (bitsPerSample != 8 && bitsPerSample != 16 && bitsPerSample != 24)
        return 0;
    const qint64 nBytes = std::clamp<qint64>(fileSize - CWav::headerSize, 0, dataSize);
    if (nBytes < dataSize)
        return nBytes; // an incomplete token is read, but not converted
    const qint64 nSamples = dataSize / (bitsPerSample / 8);
    const qint64 nPoints = numChannels > 0 ? nSamples / numChannels : 0;
    const qint64 nFFT =
        nPoints > 0 ? static_cast<qint64>(std::bit_ceil(static_cast<quint64>(nPoints))) : 0;
    return nBytes + nSamples * perSample + nPoints * perPoint + nFFT * perTransformPoint;
}

qint64 tokenMemory(const std::string &path)
{
    std::ifstream file = openRegularFile(path);
    QByteArray header(CWav::headerSize, '\0');
    file.read(header.data(), CWav::headerSize);
    header.truncate(file.gcount());
    file.seekg(0, std::ios::end);
    return tokenMemory(header, file.tellg());
}

qint64 mostTokenMemory(qint64 fileSize)
{
    // A point per byte, and the power of two above is less than twice as many.
    return fileSize * (1 + perSample + perPoint + 2 * perTransformPoint);
}

qint64 reusableMemory(qint64 tokenMemory)
{
    return tokenMemory / 3;
}

std::optional<qint64> availableMemory(QByteArrayView meminfo)
{
    for (const QByteArray &line : meminfo.toByteArray().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        bool isNumber = false;
        const qint64 kilobytes = words.value(1).toLongLong(&isNumber);
        if (words.first() == "MemAvailable:" && isNumber)
            return kilobytes * 1024;
    }
    return std::nullopt;
}

bool canTakeMemory(qint64 bytes)
{
    if (bytes <= 0)
        return true;
    QFile meminfo(u"/proc/meminfo"_s);
    if (meminfo.open(QIODevice::ReadOnly) &&
        availableMemory(meminfo.readAll()).value_or(bytes) < bytes)
        return false;
#ifdef Q_OS_UNIX
    // Memory that is never touched is only counted, against the limit of the process and against
    // what the system allows programs to reserve.
    const auto size = static_cast<std::size_t>(bytes);
    void *const trial =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (trial == MAP_FAILED)
        return false;
    munmap(trial, size);
#endif
    return true;
}
