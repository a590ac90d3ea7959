// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"
#include "support/Captured.h"
#include "support/WavFile.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

/// What one call of LoadWav answered and printed.
struct Loading
{
    bool result;
    QByteArray errors;
};

Loading load(CWav &wav, const QString &path)
{
    const Captured errors(std::cerr);
    const bool result = wav.LoadWav(path.toStdString());
    return {result, errors.text()};
}

QList<double> samplesOf(const CWav &wav)
{
    return {wav.sampleVector.begin(), wav.sampleVector.end()};
}

QByteArray four(const char (&text)[4])
{
    return {text, 4};
}

/// The sample whose @p bits bits, taken unsigned, are @p code: offset for 8 bits, signed for 16 and
/// 24, with +1 for the most negative code of 24 bits.
double sampleOf(std::uint32_t code, int bits)
{
    const double value = std::ldexp(code, 1 - bits);
    if (bits == 8)
        return value - 1;
    const bool negative = bits == 16 ? value >= 1 : value > 1;
    return negative ? value - 2 : value;
}

} // namespace

class TestCWav : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aNewReaderIsEmpty();
    void loadingKeepsTheFormatTagAndTheHeaderSizeIs44();
    void everyHeaderFieldIsReadFromItsPlace();

    void samplesOfEveryWidthAreReadExactly_data();
    void samplesOfEveryWidthAreReadExactly();
    void anUnusableFileIsRefusedWithItsMessage_data();
    void anUnusableFileIsRefusedWithItsMessage();
    void unusualHeaderFieldsAreAccepted_data();
    void unusualHeaderFieldsAreAccepted();
    void aPathIsTakenAsUtf8();

    void aShortHeaderIsReadAsIfZerosFollowed_data();
    void aShortHeaderIsReadAsIfZerosFollowed();
    void aShortHeaderKeepsTheEarlierFilesBytes();

    void aTruncatedFileGivesNoSamples_data();
    void aTruncatedFileGivesNoSamples();
    void bytesBehindTheDeclaredDataAreNotRead();
    void samplesBeginAtByte44WhateverChunkIsThere();

    void aFileWithoutDataKeepsTheEarlierSamples();
    void aRefusedHeaderIsKeptBesideTheEarlierSamples();
    void anotherFileReplacesTheSamples();
    void aTruncatedFileClearsTheEarlierSamples();

    void everyCodeIsConvertedExactly_data();
    void everyCodeIsConvertedExactly();
    void loadingAgainTakesNoMoreMemory();
    void theSampleVectorFitsTheLargestFileSoFar_data();
    void theSampleVectorFitsTheLargestFileSoFar();

    void convertingByAWrongCountStaysWithinTheBytes_data();
    void convertingByAWrongCountStaysWithinTheBytes();
    void convertingAnotherBitDepthClearsTheSamples_data();
    void convertingAnotherBitDepthClearsTheSamples();

    void displayHeaderPrintsEachFieldOnItsLine();
    void displayDataPrintsOneSampleALine();

    void writeWavGivesTheFileBack();
    void writeWavAppendsToAnExistingFile();
    void writeWavWritesTheHeaderAsItStands();
    void writeWavWritesOnlyTheBytesThatWereRead_data();
    void writeWavWritesOnlyTheBytesThatWereRead();
    void writeWavWithoutLoadingWritesAHeaderOfZeros();
    void writeWavReportsAFileItCannotOpen();

private:
    QString path(const QString &name = "token.wav") const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestCWav::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

// Catches a member that is not cleared by the constructor.
void TestCWav::aNewReaderIsEmpty()
{
    const CWav wav;
    QCOMPARE(four(wav.riffHeader), QByteArray(4, '\0'));
    QCOMPARE(wav.riffSize, 0U);
    QCOMPARE(four(wav.waveHeader), QByteArray(4, '\0'));
    QCOMPARE(four(wav.fmtHeader), QByteArray(4, '\0'));
    QCOMPARE(wav.fmtSize, 0U);
    QCOMPARE(wav.audioFormat, 0U);
    QCOMPARE(wav.numChannels, 0U);
    QCOMPARE(wav.sampleRate, 0U);
    QCOMPARE(wav.byteRate, 0U);
    QCOMPARE(wav.blockAlign, 0U);
    QCOMPARE(wav.bitsPerSample, 0U);
    QCOMPARE(four(wav.dataHeader), QByteArray(4, '\0'));
    QCOMPARE(wav.dataSize, 0U);
    QVERIFY(!wav.rawData);
    QCOMPARE(wav.bytesRead, 0);
    QCOMPARE(wav.numSamples, 0U);
    QVERIFY(!wav.samples);
    QVERIFY(wav.sampleVector.empty());
}

// Catches a format taken from the header, a formatTag touched by loading, and another header size.
void TestCWav::loadingKeepsTheFormatTagAndTheHeaderSizeIs44()
{
    QVERIFY(writeFile(path(), WavBytes{.data = WavBytes::samples16({1, 2})}.bytes()));
    CWav wav;
    wav.formatTag = 4711;
    QVERIFY(load(wav, path()).result);
    QCOMPARE(wav.audioFormat, 1U);
    QCOMPARE(wav.GetAudioFormat(), 4711U);
    QCOMPARE(wav.GetHeaderSize(), 44);
}

// Catches a header field read from another offset or with another width.
void TestCWav::everyHeaderFieldIsReadFromItsPlace()
{
    const WavBytes file{
        .numChannels = 2, .sampleRate = 96000, .bitsPerSample = 24, .data = QByteArray(12, '\x01')};
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    const Loading loading = load(wav, path());
    QVERIFY(loading.result);
    QCOMPARE(loading.errors, QByteArray());
    QCOMPARE(four(wav.riffHeader), "RIFF");
    QCOMPARE(wav.riffSize, 48U);
    QCOMPARE(four(wav.waveHeader), "WAVE");
    QCOMPARE(four(wav.fmtHeader), "fmt ");
    QCOMPARE(wav.fmtSize, 16U);
    QCOMPARE(wav.audioFormat, 1U);
    QCOMPARE(wav.numChannels, 2U);
    QCOMPARE(wav.sampleRate, 96000U);
    QCOMPARE(wav.byteRate, 576000U);
    QCOMPARE(wav.blockAlign, 6U);
    QCOMPARE(wav.bitsPerSample, 24U);
    QCOMPARE(four(wav.dataHeader), "data");
    QCOMPARE(wav.dataSize, 12U);
    QCOMPARE(wav.bytesRead, 12);
    QCOMPARE(wav.numSamples, 4U);
    QCOMPARE(QByteArray(wav.rawData, 12), file.data);
}

void TestCWav::samplesOfEveryWidthAreReadExactly_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("channels");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<uint>("numSamples");
    QTest::addColumn<QList<double>>("expected");

    using Samples = QList<double>;
    const auto hex = [](const char *digits) { return QByteArray::fromHex(digits); };
    QTest::newRow("8 bits: ends and middle")
        << 8 << 1 << hex("00 80 ff 7f 81") << 5U
        << Samples{-1.0, 0.0, 0.9921875, -0.0078125, 0.0078125};
    QTest::newRow("8 bits: one byte") << 8 << 1 << hex("40") << 1U << Samples{-0.5};
    QTest::newRow("16 bits: ends and middle")
        << 16 << 1 << WavBytes::samples16({-32768, 32767, 0, 1, -1, 256}) << 6U
        << Samples{-1.0, 0.999969482421875, 0.0, 0.000030517578125, -0.000030517578125, 0.0078125};
    QTest::newRow("16 bits: odd byte left over")
        << 16 << 1 << hex("0040 00c0 7f") << 2U << Samples{0.5, -0.5};
    QTest::newRow("16 bits: a single byte") << 16 << 1 << hex("7f") << 0U << Samples{};
    QTest::newRow("16 bits: two channels")
        << 16 << 2 << hex("0040 00c0 0020 00e0") << 4U << Samples{0.5, -0.5, 0.25, -0.25};
    QTest::newRow("16 bits: three channels")
        << 16 << 3 << hex("0040 00c0 0020") << 3U << Samples{0.5, -0.5, 0.25};
    QTest::newRow("16 bits: incomplete frame")
        << 16 << 2 << hex("0040 00c0 0020") << 3U << Samples{0.5, -0.5, 0.25};
    QTest::newRow("24 bits: most negative is +1") << 24 << 1 << hex("000080") << 1U << Samples{1.0};
    QTest::newRow("24 bits: one above the most negative")
        << 24 << 1 << hex("010080") << 1U << Samples{-0.99999988079071044921875};
    QTest::newRow("24 bits: -1 step")
        << 24 << 1 << hex("ffffff") << 1U << Samples{-1.1920928955078125e-07};
    QTest::newRow("24 bits: largest")
        << 24 << 1 << hex("ffff7f") << 1U << Samples{0.99999988079071044921875};
    QTest::newRow("24 bits: several")
        << 24 << 1 << hex("000000 000040 0000c0") << 3U << Samples{0.0, 0.5, -0.5};
    // The fragment counts as a sample whose missing high bytes are zero.
    QTest::newRow("24 bits: fragment of one")
        << 24 << 1 << hex("000040 40") << 1U << Samples{0.5, 64 / 8388608.0};
    QTest::newRow("24 bits: fragment of two")
        << 24 << 1 << hex("000040 00c0") << 1U << Samples{0.5, 49152 / 8388608.0};
    QTest::newRow("24 bits: only a fragment")
        << 24 << 1 << hex("ff") << 0U << Samples{255 / 8388608.0};
}

// Catches wrong signs, scales and byte orders, exact to the last bit, and a fragment whose missing
// bytes are taken from behind the buffer.
void TestCWav::samplesOfEveryWidthAreReadExactly()
{
    QFETCH(const int, bits);
    QFETCH(const int, channels);
    QFETCH(const QByteArray, data);
    QFETCH(const QList<double>, expected);

    const WavBytes file{.numChannels = static_cast<std::uint16_t>(channels),
                        .bitsPerSample = static_cast<std::uint16_t>(bits),
                        .data = data};
    // An earlier file of the same length whose bytes are all ones must leave no trace.
    WavBytes ones = file;
    ones.data = QByteArray(data.size() + 8, '\xff');
    QVERIFY(writeFile(path("ones.wav"), ones.bytes()));
    QVERIFY(writeFile(path(), file.bytes()));

    CWav wav;
    QVERIFY(load(wav, path("ones.wav")).result);
    const Loading loading = load(wav, path());
    QVERIFY(loading.result);
    QCOMPARE(loading.errors, QByteArray());
    QTEST(uint(wav.numSamples), "numSamples");
    QCOMPARE(wav.bytesRead, data.size());
    // Equality of lists is that of their elements, without the tolerance QCOMPARE has for a double.
    QVERIFY(samplesOf(wav) == expected);
    if (!expected.isEmpty())
        QVERIFY(wav.samples == &wav.sampleVector.front());
}

void TestCWav::anUnusableFileIsRefusedWithItsMessage_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("message");

    const QByteArray data = WavBytes::samples16({1, 2, 3});
    const QByteArray notWav = "Not a WAV file: ";
    const QByteArray notPcm = "Not a PCM (linear quantitation) WAV file: ";
    const QByteArray notBits = "Not a 8-bit, 16-bit, or 24-bit WAV file: ";

    QTest::newRow("empty") << QByteArray() << QByteArray("Header size is zero. ");
    QTest::newRow("magic in lower case")
        << WavBytes{.wave = "wave", .data = data}.bytes() << notWav;
    QTest::newRow("magic of AVI") << WavBytes{.wave = "AVI ", .data = data}.bytes() << notWav;
    QTest::newRow("magic differs in the fourth byte")
        << WavBytes{.wave = "WAVF", .data = data}.bytes() << notWav;
    QTest::newRow("text file") << QByteArray("This is no sound but a text of some length.\n")
                               << notWav;
    QTest::newRow("format 0") << WavBytes{.audioFormat = 0, .data = data}.bytes() << notPcm;
    QTest::newRow("format 2, ADPCM") << WavBytes{.audioFormat = 2, .data = data}.bytes() << notPcm;
    QTest::newRow("format 3, float")
        << WavBytes{.audioFormat = 3, .bitsPerSample = 32, .data = data}.bytes() << notPcm;
    QTest::newRow("format 257, low byte 1")
        << WavBytes{.audioFormat = 0x0101, .data = data}.bytes() << notPcm;
    QTest::newRow("extensible")
        << WavBytes{.fmtSize = 40, .audioFormat = 0xFFFE, .data = data}.bytes() << notPcm;
    for (const int bits : {0, 1, 12, 15, 17, 20, 32, 64, 0x1010}) {
        QTest::addRow("%d bits", bits)
            << WavBytes{.bitsPerSample = static_cast<std::uint16_t>(bits), .data = data}.bytes()
            << notBits;
    }
    QTest::newRow("magic before format")
        << WavBytes{.wave = "none", .audioFormat = 3, .bitsPerSample = 32}.bytes() << notWav;
    QTest::newRow("format before bits")
        << WavBytes{.audioFormat = 3, .bitsPerSample = 12}.bytes() << notPcm;
}

// Catches a changed message, a check left out, and checks in another order.
void TestCWav::anUnusableFileIsRefusedWithItsMessage()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QByteArray, message);
    QVERIFY(writeFile(path(), file));
    CWav wav;
    const Loading loading = load(wav, path());
    QVERIFY(!loading.result);
    QCOMPARE(loading.errors, message + path().toUtf8() + "\n");
    QVERIFY(wav.sampleVector.empty());

    const Loading missing = load(wav, path("missing.wav"));
    QVERIFY(!missing.result);
    QCOMPARE(missing.errors, "Unable to open WAV file: " + path("missing.wav").toUtf8() + "\n");
}

void TestCWav::unusualHeaderFieldsAreAccepted_data()
{
    QTest::addColumn<QByteArray>("file");

    const QByteArray data = WavBytes::samples16({8192, -8192, 16384});
    QTest::newRow("plain") << WavBytes{.data = data}.bytes();
    QTest::newRow("first magic differs") << WavBytes{.riff = "RIFX", .data = data}.bytes();
    QTest::newRow("first magic is empty")
        << WavBytes{.riff = QByteArray(4, '\0'), .data = data}.bytes();
    QTest::newRow("format tag differs") << WavBytes{.fmt = "xxxx", .data = data}.bytes();
    QTest::newRow("format size differs") << WavBytes{.fmtSize = 18, .data = data}.bytes();
    QTest::newRow("data tag differs") << WavBytes{.dataTag = "LIST", .data = data}.bytes();
    QTest::newRow("no channels") << WavBytes{.numChannels = 0, .data = data}.bytes();
    QTest::newRow("many channels") << WavBytes{.numChannels = 65535, .data = data}.bytes();
    QTest::newRow("no rate") << WavBytes{.sampleRate = 0, .data = data}.bytes();
    QTest::newRow("largest rate") << WavBytes{.sampleRate = 4294967295U, .data = data}.bytes();
}

// Catches a check that refuses what is to be read as it stands.
void TestCWav::unusualHeaderFieldsAreAccepted()
{
    QFETCH(const QByteArray, file);
    QVERIFY(writeFile(path(), file));
    CWav wav;
    const Loading loading = load(wav, path());
    QVERIFY(loading.result);
    QCOMPARE(loading.errors, QByteArray());
    QCOMPARE(wav.numSamples, 3U);
    QCOMPARE(samplesOf(wav), QList<double>({0.25, -0.25, 0.5}));
}

// Catches a path that is not taken as UTF-8, and a message that changes it.
void TestCWav::aPathIsTakenAsUtf8()
{
    const QString name = path(QString::fromUtf8("Mütter stimme €.wav"));
    QVERIFY(writeFile(name, WavBytes{.data = WavBytes::samples16({1})}.bytes()));
    CWav wav;
    QVERIFY(load(wav, name).result);
    QCOMPARE(load(wav, name + "x").errors, "Unable to open WAV file: " + name.toUtf8() + "x\n");
}

void TestCWav::aShortHeaderIsReadAsIfZerosFollowed_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("message"); // empty: accepted
    QTest::addColumn<uint>("dataSize");

    // A new object's header is zero where the file gave nothing.
    for (int length = 1; length < 44; ++length) {
        const QByteArray message = length < 12   ? "Not a WAV file: "
                                   : length < 21 ? "Not a PCM (linear quantitation) WAV file: "
                                   : length < 35 ? "Not a 8-bit, 16-bit, or 24-bit WAV file: "
                                                 : "";
        const uint dataSize = length < 41 ? 0U : length < 42 ? 4U : 0x0104U;
        QTest::addRow("%d bytes", length) << length << message << dataSize;
    }
}

// Catches a short header that is refused as such, and a read of what the file did not give.
void TestCWav::aShortHeaderIsReadAsIfZerosFollowed()
{
    QFETCH(const int, length);
    QFETCH(const QByteArray, message);
    const WavBytes file{.data = QByteArray(0x0104, '\x11')};
    QVERIFY(writeFile(path(), file.bytes().first(length)));
    CWav wav;
    const Loading loading = load(wav, path());
    QCOMPARE(loading.result, message.isEmpty());
    QCOMPARE(loading.errors, message.isEmpty() ? message : message + path().toUtf8() + "\n");
    QTEST(uint(wav.dataSize), "dataSize");
    QCOMPARE(wav.bytesRead, 0);
    QVERIFY(wav.sampleVector.empty());
}

// Catches a header that is cleared before it is read: the earlier file's bytes complete it.
void TestCWav::aShortHeaderKeepsTheEarlierFilesBytes()
{
    QVERIFY(writeFile(path(), WavBytes{.data = WavBytes::samples16({8192, -8192})}.bytes()));
    QVERIFY(writeFile(path("short.wav"), "J"));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    const Loading loading = load(wav, path("short.wav"));
    QVERIFY(loading.result);
    QCOMPARE(loading.errors, QByteArray());
    QCOMPARE(four(wav.riffHeader), "JIFF");
    QCOMPARE(wav.sampleRate, 48000U);
    QCOMPARE(wav.dataSize, 4U);
    QCOMPARE(wav.numSamples, 2U);
    QCOMPARE(wav.bytesRead, 0);
    QVERIFY(wav.sampleVector.empty());
}

void TestCWav::aTruncatedFileGivesNoSamples_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<uint>("declaredSize");
    QTest::addColumn<int>("present");

    QTest::newRow("8 bits, one byte missing") << 8 << 10U << 9;
    QTest::newRow("16 bits, one byte missing") << 16 << 10U << 9;
    QTest::newRow("16 bits, half missing") << 16 << 2000U << 1000;
    QTest::newRow("16 bits, nothing there") << 16 << 10U << 0;
    QTest::newRow("24 bits, one byte missing") << 24 << 9U << 8;
    QTest::newRow("8 bits, 4 GiB - 1") << 8 << 4294967295U << 6;
    QTest::newRow("16 bits, 4 GiB - 1") << 16 << 4294967295U << 6;
    QTest::newRow("24 bits, 4 GiB - 1") << 24 << 4294967295U << 6;
    QTest::newRow("16 bits, 4 GiB - 1, nothing there") << 16 << 4294967295U << 0;
    QTest::newRow("16 bits, 2 GiB") << 16 << 2147483648U << 6;
}

// Catches half a sound taken for a whole one, and memory asked for on the word of a header.
void TestCWav::aTruncatedFileGivesNoSamples()
{
    QFETCH(const int, bits);
    QFETCH(const uint, declaredSize);
    QFETCH(const int, present);
    const WavBytes file{.bitsPerSample = static_cast<std::uint16_t>(bits),
                        .data = QByteArray(present, '\x22'),
                        .declaredSize = declaredSize};
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    const Loading loading = load(wav, path());
    QVERIFY(loading.result);
    QCOMPARE(loading.errors, QByteArray());
    QCOMPARE(uint(wav.dataSize), declaredSize);
    QCOMPARE(uint(wav.numSamples), declaredSize / (uint(bits) / 8));
    QCOMPARE(wav.bytesRead, present);
    QVERIFY(wav.sampleVector.empty());
    if (present > 0)
        QCOMPARE(QByteArray(wav.rawData, present), file.data);

    QVERIFY(wav.sampleVector.capacity() <= 1000);
#ifdef __GLIBC__
    QVERIFY(malloc_usable_size(wav.rawData) <= 4096);
#endif
}

// Catches a reader that takes everything up to the end of the file.
void TestCWav::bytesBehindTheDeclaredDataAreNotRead()
{
    WavBytes file{.data = WavBytes::samples16({8192, -8192}), .declaredSize = 4};
    file.data += "LIST" + WavBytes::little(4, 4) + "INFO";
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QCOMPARE(wav.bytesRead, 4);
    QCOMPARE(wav.numSamples, 2U);
    QCOMPARE(samplesOf(wav), QList<double>({0.25, -0.25}));
}

// Catches a search for the data chunk: the samples begin at byte 44, whatever stands there.
void TestCWav::samplesBeginAtByte44WhateverChunkIsThere()
{
    const WavBytes file{.dataTag = "LIST",
                        .data = WavBytes::samples16({4096, -4096}) + "data" +
                                WavBytes::little(4, 4) + WavBytes::samples16({8192, -8192}),
                        .declaredSize = 4};
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QCOMPARE(four(wav.dataHeader), "LIST");
    QCOMPARE(wav.numSamples, 2U);
    QCOMPARE(samplesOf(wav), QList<double>({0.125, -0.125}));
}

// Catches samples that are cleared by a file that declares none.
void TestCWav::aFileWithoutDataKeepsTheEarlierSamples()
{
    QVERIFY(writeFile(path(), WavBytes{.data = WavBytes::samples16({8192, -8192})}.bytes()));
    QVERIFY(writeFile(path("none.wav"), WavBytes{.sampleRate = 8000}.bytes()));
    QVERIFY(writeFile(path("hidden.wav"),
                      WavBytes{.data = WavBytes::samples16({1}), .declaredSize = 0}.bytes()));
    CWav wav;
    for (const QString &name : {path("none.wav"), path("hidden.wav")}) {
        QVERIFY(load(wav, path()).result);
        QVERIFY(load(wav, name).result);
        QCOMPARE(wav.numSamples, 0U);
        QCOMPARE(wav.dataSize, 0U);
        QCOMPARE(wav.bytesRead, 4);
        QCOMPARE(samplesOf(wav), QList<double>({0.25, -0.25}));
        QVERIFY(wav.samples == &wav.sampleVector.front());
    }
}

// Catches a reader that goes back to the earlier header, or forgets the earlier samples.
void TestCWav::aRefusedHeaderIsKeptBesideTheEarlierSamples()
{
    QVERIFY(writeFile(path(), WavBytes{.data = WavBytes::samples16({8192, -8192})}.bytes()));
    QVERIFY(writeFile(path("float.wav"), WavBytes{.audioFormat = 3,
                                                  .numChannels = 2,
                                                  .sampleRate = 96000,
                                                  .bitsPerSample = 32,
                                                  .data = QByteArray(80, '\0')}
                                             .bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QVERIFY(!load(wav, path("float.wav")).result);
    QCOMPARE(wav.audioFormat, 3U);
    QCOMPARE(wav.numChannels, 2U);
    QCOMPARE(wav.sampleRate, 96000U);
    QCOMPARE(wav.bitsPerSample, 32U);
    QCOMPARE(wav.dataSize, 80U);
    QCOMPARE(wav.numSamples, 2U);
    QCOMPARE(wav.bytesRead, 4);
    QCOMPARE(samplesOf(wav), QList<double>({0.25, -0.25}));

    // Neither an empty nor a missing file touches the header.
    QVERIFY(writeFile(path("empty.wav"), {}));
    QVERIFY(!load(wav, path("empty.wav")).result);
    QVERIFY(!load(wav, path("missing.wav")).result);
    QCOMPARE(wav.sampleRate, 96000U);
    QCOMPARE(samplesOf(wav), QList<double>({0.25, -0.25}));
}

// Catches samples appended to those of the earlier file, and a buffer that does not grow or shrink.
void TestCWav::anotherFileReplacesTheSamples()
{
    QVERIFY(writeFile(path("8.wav"),
                      WavBytes{.bitsPerSample = 8, .data = QByteArray(50000, '\xC0')}.bytes()));
    QVERIFY(writeFile(path("16.wav"), WavBytes{.data = WavBytes::samples16({8192})}.bytes()));
    QVERIFY(writeFile(path("24.wav"),
                      WavBytes{.bitsPerSample = 24, .data = QByteArray(90000, '\x40')}.bytes()));
    CWav wav;
    QVERIFY(load(wav, path("8.wav")).result);
    QCOMPARE(samplesOf(wav), QList<double>(50000, 0.5));
    QVERIFY(load(wav, path("16.wav")).result);
    QCOMPARE(samplesOf(wav), QList<double>({0.25}));
    QVERIFY(load(wav, path("24.wav")).result);
    QCOMPARE(samplesOf(wav), QList<double>(30000, 0x404040 / 8388608.0));
    QVERIFY(load(wav, path("8.wav")).result);
    QCOMPARE(samplesOf(wav), QList<double>(50000, 0.5));
    QVERIFY(wav.samples == &wav.sampleVector.front());
}

// Catches an earlier file's samples that stand in for those a truncated file lacks.
void TestCWav::aTruncatedFileClearsTheEarlierSamples()
{
    const QByteArray data = WavBytes::samples16({8192, -8192, 16384});
    QVERIFY(writeFile(path(), WavBytes{.data = data}.bytes()));
    QVERIFY(writeFile(path("cut.wav"), WavBytes{.data = data}.bytes().chopped(1)));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QVERIFY(load(wav, path("cut.wav")).result);
    QCOMPARE(wav.bytesRead, 5);
    QCOMPARE(wav.numSamples, 3U);
    QVERIFY(wav.sampleVector.empty());
}

void TestCWav::everyCodeIsConvertedExactly_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {8, 16, 24})
        QTest::addRow("%d", bits) << bits;
}

// Catches a conversion that is wrong, if only in the last bit or the sign of zero, for some code.
void TestCWav::everyCodeIsConvertedExactly()
{
    QFETCH(const int, bits);
    const std::uint32_t nCodes = 1U << bits;
    WavBytes file{.bitsPerSample = static_cast<std::uint16_t>(bits)};
    file.data.reserve(static_cast<qsizetype>(nCodes) * bits / 8);
    for (std::uint32_t code = 0; code < nCodes; ++code)
        for (int shift = 0; shift < bits; shift += 8)
            file.data.append(static_cast<char>(code >> shift & 0xFF));
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QCOMPARE(wav.sampleVector.size(), std::size_t{nCodes});

    for (std::uint32_t code = 0; code < nCodes; ++code) {
        const double expected = sampleOf(code, bits);
        if (std::bit_cast<std::uint64_t>(wav.samples[code]) !=
            std::bit_cast<std::uint64_t>(expected))
            QFAIL(qPrintable(QString("code %1: %2 instead of %3")
                                 .arg(code)
                                 .arg(wav.samples[code], 0, 'g', 17)
                                 .arg(expected, 0, 'g', 17)));
    }
}

// Catches bytes of an earlier file that are kept beside those of the next.
void TestCWav::loadingAgainTakesNoMoreMemory()
{
#ifdef __GLIBC__
    const auto allocated = [] {
        const auto info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    constexpr int size = 1'000'000;
    QVERIFY(writeFile(path(), WavBytes{.data = QByteArray(size, '\x11')}.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    const auto before = allocated();
    for (int i = 0; i < 5; ++i)
        QVERIFY(load(wav, path()).result);
    QVERIFY(allocated() < before + size);
#endif
}

void TestCWav::theSampleVectorFitsTheLargestFileSoFar_data()
{
    everyCodeIsConvertedExactly_data();
}

// Catches a vector that grows beyond what a file needs, and one that is given back for a smaller
// file.
void TestCWav::theSampleVectorFitsTheLargestFileSoFar()
{
    QFETCH(const int, bits);
    CWav wav;
    std::size_t largest = 0;
    for (const int nSamples : {1000, 1001, 10, 0, 1001, 5000}) {
        QVERIFY(writeFile(path(), WavBytes{.bitsPerSample = static_cast<std::uint16_t>(bits),
                                           .data = QByteArray(nSamples * bits / 8, '\x11')}
                                      .bytes()));
        QVERIFY(load(wav, path()).result);
        QCOMPARE(wav.numSamples, static_cast<std::uint32_t>(nSamples));
        largest = std::max(largest, static_cast<std::size_t>(nSamples));
        QCOMPARE(wav.sampleVector.capacity(), largest);
    }
}

void TestCWav::convertingByAWrongCountStaysWithinTheBytes_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("nBytes");
    QTest::addColumn<uint>("numSamples");
    QTest::addColumn<QList<double>>("expected");

    // The bytes are 0x40, 0x41, ...
    using Samples = QList<double>;
    const Samples none;
    const Samples three8 = {-64 / 128.0, -63 / 128.0, -62 / 128.0};
    const Samples three16 = {0x4140 / 32768.0, 0x4342 / 32768.0, 0x4544 / 32768.0};
    const Samples three24 = {0x424140 / 8388608.0, 0x454443 / 8388608.0, 0x46 / 8388608.0};
    QTest::newRow("8 bits: none") << 8 << 3 << 0U << none;
    QTest::newRow("8 bits: fewer") << 8 << 4 << 3U << three8;
    QTest::newRow("8 bits: as many") << 8 << 3 << 3U << three8;
    QTest::newRow("8 bits: one more") << 8 << 3 << 4U << none;
    QTest::newRow("8 bits: 4 Gi - 1") << 8 << 3 << 4294967295U << none;
    QTest::newRow("16 bits: none") << 16 << 6 << 0U << none;
    QTest::newRow("16 bits: fewer") << 16 << 8 << 3U << three16;
    QTest::newRow("16 bits: as many") << 16 << 6 << 3U << three16;
    QTest::newRow("16 bits: as many and a byte") << 16 << 7 << 3U << three16;
    QTest::newRow("16 bits: half a one more") << 16 << 7 << 4U << none;
    QTest::newRow("16 bits: one more") << 16 << 6 << 4U << none;
    QTest::newRow("16 bits: as many as bytes") << 16 << 6 << 6U << none;
    QTest::newRow("16 bits: 2 Gi, twice that is 0 in 32 bits") << 16 << 6 << 2147483648U << none;
    QTest::newRow("16 bits: 4 Gi - 1") << 16 << 6 << 4294967295U << none;
    for (const uint numSamples : {0U, 1U, 2U, 3U, 7U, 100U, 4294967295U}) {
        QTest::addRow("24 bits and a fragment: %u", numSamples) << 24 << 7 << numSamples << three24;
    }
    QTest::newRow("24 bits: more") << 24 << 6 << 100U << three24.first(2);
    QTest::newRow("24 bits: fewer") << 24 << 6 << 1U << three24.first(2);
}

// Catches samples made of what lies behind the bytes when numSamples is not that of the bytes, a
// check of it where it does not decide, and memory asked for on its word.
void TestCWav::convertingByAWrongCountStaysWithinTheBytes()
{
    QFETCH(const int, bits);
    QFETCH(const int, nBytes);
    QFETCH(const uint, numSamples);
    QFETCH(const QList<double>, expected);
    WavBytes file{.bitsPerSample = static_cast<std::uint16_t>(bits)};
    for (int i = 0; i < nBytes; ++i)
        file.data.append(static_cast<char>(0x40 + i));
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    wav.numSamples = numSamples;
    wav.sampleVector = std::vector<double>();
    const double *const converted = wav.ConvertData();
    QVERIFY(samplesOf(wav) == expected);
    QVERIFY(converted == wav.sampleVector.data());
    QVERIFY(wav.samples == converted);
    QCOMPARE(wav.numSamples, numSamples);
    QVERIFY(wav.sampleVector.capacity() <= 10);
}

void TestCWav::convertingAnotherBitDepthClearsTheSamples_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<QByteArray>("message");

    QTest::newRow("32") << 32 << QByteArray("32-bit PCM is not working yet.\n");
    for (const int bits : {0, 12, 64})
        QTest::addRow("%d", bits) << bits << QByteArray("Not recognizable bits per sample. \n");
}

// Catches a conversion by another size, samples that survive it and a changed message.
void TestCWav::convertingAnotherBitDepthClearsTheSamples()
{
    QFETCH(const int, bits);
    QVERIFY(writeFile(path(), WavBytes{.data = WavBytes::samples16({8192, -8192})}.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    wav.bitsPerSample = static_cast<std::uint16_t>(bits);
    const Captured errors(std::cerr);
    const double *const converted = wav.ConvertData();
    QTEST(errors.text(), "message");
    QVERIFY(wav.sampleVector.empty());
    QVERIFY(converted == wav.samples);
}

// Catches a changed label, the lines in another order, and text that ends at a NUL.
void TestCWav::displayHeaderPrintsEachFieldOnItsLine()
{
    const WavBytes file{.riff = QByteArray("R\0FF", 4),
                        .numChannels = 2,
                        .sampleRate = 44100,
                        .bitsPerSample = 24,
                        .dataTag = "dat2",
                        .data = QByteArray(12, '\0')};
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    const Captured output(std::cout);
    wav.DisplayHeader();
    QCOMPARE(output.text(), QByteArray("RIFF header                : R\0FF\n", 34) +
                                "WAVE header                : WAVE\n"
                                "FMT                        : fmt \n"
                                "Data size                  : 48\n"
                                "Sampling Rate              : 44100\n"
                                "Number of bits per sample  : 24\n"
                                "Number of channels         : 2\n"
                                "Number of bytes per second : 264600\n"
                                "Data length (bytes)        : 12\n"
                                "Audio Format               : 1\n"
                                "Block align                : 6\n"
                                "Data string                : dat2\n");
}

// Catches another number of digits, samples on one line, and output for an empty object.
void TestCWav::displayDataPrintsOneSampleALine()
{
    QVERIFY(writeFile(path(),
                      WavBytes{.data = WavBytes::samples16({-32768, 0, 32767, 1, -8192})}.bytes()));
    CWav wav;
    const Captured output(std::cout);
    wav.DisplayData();
    QCOMPARE(output.text(), QByteArray());
    QVERIFY(load(wav, path()).result);
    wav.DisplayData();
    QCOMPARE(output.text(), "-1\n0\n0.999969\n3.05176e-05\n-0.25\n");
}

// Catches converted samples, or a header of its own, in the place of what was read.
void TestCWav::writeWavGivesTheFileBack()
{
    const QByteArray file =
        WavBytes{.riff = "abcd", .dataTag = "LIST", .data = WavBytes::samples16({1, -2, 3})}
            .bytes();
    QVERIFY(writeFile(path(), file));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    const Captured errors(std::cerr);
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QCOMPARE(contents(path("copy.wav")), file);
    QCOMPARE(errors.text(), QByteArray());
}

// Catches an existing file that is truncated or overwritten.
void TestCWav::writeWavAppendsToAnExistingFile()
{
    const QByteArray file = WavBytes{.data = WavBytes::samples16({1, -2, 3})}.bytes();
    QVERIFY(writeFile(path(), file));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    QVERIFY(writeFile(path("copy.wav"), "before"));
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QCOMPARE(contents(path("copy.wav")), "before" + file + file);
}

// Catches a header field that is computed anew, and bytes beyond the size the header declares.
void TestCWav::writeWavWritesTheHeaderAsItStands()
{
    WavBytes file{.data = WavBytes::samples16({1, -2, 3})};
    QVERIFY(writeFile(path(), file.bytes()));
    CWav wav;
    QVERIFY(load(wav, path()).result);
    wav.sampleRate = 11025;
    wav.dataSize = 4;
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QByteArray expected = file.bytes().first(48);
    expected.replace(24, 4, WavBytes::little(11025, 4));
    expected.replace(40, 4, WavBytes::little(4, 4));
    QCOMPARE(contents(path("copy.wav")), expected);
}

void TestCWav::writeWavWritesOnlyTheBytesThatWereRead_data()
{
    QTest::addColumn<uint>("declaredSize");
    QTest::addColumn<int>("present");

    QTest::newRow("one byte missing") << 6U << 5;
    QTest::newRow("nothing there") << 6U << 0;
    QTest::newRow("4 GiB - 1") << 4294967295U << 6;
}

// Catches memory behind the buffer, or an earlier file's bytes, written for what a file lacks.
void TestCWav::writeWavWritesOnlyTheBytesThatWereRead()
{
    QFETCH(const uint, declaredSize);
    QFETCH(const int, present);
    const QByteArray file =
        WavBytes{.data = QByteArray(present, '\x33'), .declaredSize = declaredSize}.bytes();
    QVERIFY(writeFile(path("long.wav"), WavBytes{.data = QByteArray(5000, '\x44')}.bytes()));
    QVERIFY(writeFile(path(), file));
    CWav wav;
    QVERIFY(load(wav, path("long.wav")).result);
    QVERIFY(load(wav, path()).result);
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QCOMPARE(contents(path("copy.wav")), file);
}

// Catches a read of the buffer that was never made.
void TestCWav::writeWavWithoutLoadingWritesAHeaderOfZeros()
{
    CWav wav;
    QVERIFY(wav.WriteWav(path("copy.wav").toStdString()));
    QCOMPARE(contents(path("copy.wav")), QByteArray(44, '\0'));
}

// Catches a changed message, and success reported for a file that could not be opened.
void TestCWav::writeWavReportsAFileItCannotOpen()
{
    const QString name = path("no such folder/copy.wav");
    CWav wav;
    const Captured errors(std::cerr);
    QVERIFY(!wav.WriteWav(name.toStdString()));
    QCOMPARE(errors.text(), "Unable to write wave file: " + name.toUtf8() + "\n");
}

QTEST_APPLESS_MAIN(TestCWav)
#include "tst_cwav.moc"
