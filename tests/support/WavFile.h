// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <initializer_list>
#include <optional>

/// The bytes of a WAV file, right or wrong in any field: what is not named has the value of a
/// 48 kHz mono file of 16 bits.
struct WavBytes
{
    QByteArray riff = "RIFF";
    QByteArray wave = "WAVE";
    QByteArray fmt = "fmt ";
    std::uint32_t fmtSize = 16;
    std::uint16_t audioFormat = 1;
    std::uint16_t numChannels = 1;
    std::uint32_t sampleRate = 48000;
    std::uint16_t bitsPerSample = 16;
    QByteArray dataTag = "data";
    QByteArray data = {};                           ///< what follows the 44 header bytes
    std::optional<std::uint32_t> declaredSize = {}; ///< the header's data size, if not data's own

    /// The file: the canonical header of 44 bytes, then the data.
    QByteArray bytes() const
    {
        const auto dataSize = declaredSize.value_or(static_cast<std::uint32_t>(data.size()));
        const auto blockAlign = static_cast<std::uint16_t>(numChannels * (bitsPerSample / 8));
        return riff + little(36 + dataSize, 4) + wave + fmt + little(fmtSize, 4) +
               little(audioFormat, 2) + little(numChannels, 2) + little(sampleRate, 4) +
               little(sampleRate * blockAlign, 4) + little(blockAlign, 2) +
               little(bitsPerSample, 2) + dataTag + little(dataSize, 4) + data;
    }

    /// The low @p width bytes of @p value, lowest first.
    static QByteArray little(std::uint32_t value, int width)
    {
        QByteArray result;
        for (int i = 0; i < width; ++i)
            result.append(static_cast<char>(value >> 8 * i & 0xFF));
        return result;
    }

    /// Sample values as 16-bit data.
    static QByteArray samples16(std::initializer_list<int> values)
    {
        QByteArray result;
        for (const int value : values)
            result += little(static_cast<std::uint32_t>(value), 2);
        return result;
    }
};

/// Writes @p bytes to the file @p path in place of what it held; false when that fails.
inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// What the file @p path holds, or a text that no file holds when it cannot be read.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "cannot be read: " + path.toUtf8();
}
