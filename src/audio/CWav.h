// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Reads one canonical PCM WAV file (a 44-byte header followed by the sample bytes; 8, 16 or 24
/// bits) and converts its samples to doubles of about -1 .. +1, channels interleaved as in the
/// file. An error prints one line to the standard error stream and returns false; the object keeps
/// the state that it has reached.
class CWav
{
public:
    static constexpr int headerSize = 44; ///< bytes

    CWav();
    ~CWav();
    CWav(const CWav &) = delete;
    CWav &operator=(const CWav &) = delete;

    /// Opens, checks, reads and converts the file @p filename (UTF-8). True when the header passed
    /// all checks, even if fewer sample bytes follow than it declares; sampleVector is then empty.
    /// What is neither a regular file nor a link to one counts as a file that cannot be opened.
    /// No chunk is searched for: the samples begin at byte 44. A header that declares no sample
    /// bytes leaves the previous samples in place.
    bool LoadWav(std::string filename);

    /// Converts rawData to sampleVector by bitsPerSample and returns samples; sampleVector is left
    /// empty when the raw bytes are not complete or the sample size is none of 8, 16 and 24 bits.
    double *ConvertData();

    /// The value of formatTag, not the header's audioFormat.
    std::uint16_t GetAudioFormat() const;

    /// The size of the header in bytes: always 44.
    int GetHeaderSize() const;

    /// Prints the header fields to the standard output stream, one per line.
    void DisplayHeader() const;

    /// Prints the converted samples to the standard output stream, one per line.
    void DisplayData() const;

    /// Appends the header as it stands and the raw bytes it declares (as far as they were read) to
    /// the file @p filename; an existing file is not truncated. False when it cannot be opened.
    bool WriteWav(std::string filename);

    // The header, filled by reading the first 44 bytes of a file straight into it.
    char riffHeader[4] = {};         ///< normally "RIFF", not checked
    std::uint32_t riffSize = 0;      ///< file size minus 8
    char waveHeader[4] = {};         ///< must be "WAVE"
    char fmtHeader[4] = {};          ///< normally "fmt ", not checked
    std::uint32_t fmtSize = 0;       ///< 16, not checked
    std::uint16_t audioFormat = 0;   ///< must be 1 (linear PCM)
    std::uint16_t numChannels = 0;   ///< channel count
    std::uint32_t sampleRate = 0;    ///< samples per second per channel
    std::uint32_t byteRate = 0;      ///< bytes per second
    std::uint16_t blockAlign = 0;    ///< bytes per frame
    std::uint16_t bitsPerSample = 0; ///< must be 8, 16 or 24
    char dataHeader[4] = {};         ///< normally "data", not checked
    std::uint32_t dataSize = 0;      ///< number of sample bytes declared

    std::uint16_t formatTag; ///< never assigned by this class

    char *rawData = nullptr;          ///< the sample bytes as read; reused by every load
    std::int64_t bytesRead = 0;       ///< number of sample bytes the last read obtained
    std::uint32_t numSamples = 0;     ///< samples of all channels that dataSize makes
    double *samples = nullptr;        ///< first element of sampleVector after a conversion
    std::vector<double> sampleVector; ///< the converted samples
};

/// Loads the file @p filename into @p wav as CWav::LoadWav() does, but prints nothing: returns the
/// message that LoadWav() prints before the name of a file that it refuses, and null when the file
/// has been loaded.
const char *loadQuietly(CWav &wav, const std::string &filename);
