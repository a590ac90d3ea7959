// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"
#include "audio/TokenSound.h"
#include "support/WavFile.h"

#include <QTemporaryDir>
#include <QTest>

#include <cstring>

class TestTokenSound : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theSizeCountsFramesAndRefusesFaultyFiles_data();
    void theSizeCountsFramesAndRefusesFaultyFiles();
    void onlyTheFirstChannelIsTaken_data();
    void onlyTheFirstChannelIsTaken();
    void aShorterTokenReplacesALongerOne();
    void moreThanTwoChannelsKeepTheEarlierSound();
    void theSoundIsPlayedAsFloatsBetweenSilences_data();
    void theSoundIsPlayedAsFloatsBetweenSilences();

private:
    QString write(const WavBytes &file) const;

    QTemporaryDir m_folder;
};

void TestTokenSound::initTestCase()
{
    QVERIFY(m_folder.isValid());
}

/// The path of a file that holds @p file.
QString TestTokenSound::write(const WavBytes &file) const
{
    const QString path = m_folder.filePath("token.wav");
    return writeFile(path, file.bytes()) ? path : QString();
}

void TestTokenSound::theSizeCountsFramesAndRefusesFaultyFiles_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<uint>("rate");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("present");
    QTest::addColumn<uint>("declared");
    QTest::addColumn<int>("nPoints"); // -1: cannot be presented
    QTest::addColumn<double>("duration");

    QTest::newRow("mono") << 1 << 48000U << 16 << 24000 << 24000U << 12000 << 0.25;
    QTest::newRow("stereo counts frames")
        << 2 << 48000U << 16 << 4000 << 4000U << 1000 << 1000 / 48000.0;
    QTest::newRow("file's own rate") << 1 << 44100U << 16 << 88200 << 88200U << 44100 << 1.0;
    QTest::newRow("8 bits") << 1 << 8000U << 8 << 4000 << 4000U << 4000 << 0.5;
    QTest::newRow("24 bits") << 1 << 48000U << 24 << 36000 << 36000U << 12000 << 0.25;
    QTest::newRow("24 bits, fragment not counted")
        << 1 << 48000U << 24 << 7 << 7U << 2 << 2 / 48000.0;
    QTest::newRow("incomplete frame not counted")
        << 2 << 48000U << 16 << 6 << 6U << 1 << 1 / 48000.0;
    QTest::newRow("three channels") << 3 << 48000U << 16 << 12 << 12U << 2 << 2 / 48000.0;
    QTest::newRow("one sample") << 1 << 48000U << 16 << 2 << 2U << 1 << 1 / 48000.0;
    QTest::newRow("an hour") << 1 << 2U << 8 << 7200 << 7200U << 7200 << 3600.0;
    QTest::newRow("more than an hour") << 1 << 2U << 8 << 7201 << 7201U << -1 << 0.0;
    QTest::newRow("more than a week") << 1 << 1U << 16 << 1300000 << 1300000U << -1 << 0.0;
    QTest::newRow("no channels") << 0 << 48000U << 16 << 24000 << 24000U << -1 << 0.0;
    QTest::newRow("no rate") << 1 << 0U << 16 << 24000 << 24000U << -1 << 0.0;
    QTest::newRow("no data") << 1 << 48000U << 16 << 0 << 0U << -1 << 0.0;
    QTest::newRow("less than a sample") << 1 << 48000U << 16 << 1 << 1U << -1 << 0.0;
    QTest::newRow("more channels than samples") << 9 << 48000U << 16 << 16 << 16U << -1 << 0.0;
    QTest::newRow("truncated") << 1 << 48000U << 16 << 23999 << 24000U << -1 << 0.0;
    QTest::newRow("data missing") << 1 << 48000U << 16 << 0 << 24000U << -1 << 0.0;
    QTest::newRow("4 GiB declared, 8 bits") << 1 << 48000U << 8 << 10 << 4294967295U << -1 << 0.0;
    QTest::newRow("4 GiB declared, 16 bits") << 1 << 48000U << 16 << 10 << 4294967295U << -1 << 0.0;
}

// Catches a division by zero, samples counted for frames, points that the file does not hold, and a
// token that would keep the subject waiting for days.
void TestTokenSound::theSizeCountsFramesAndRefusesFaultyFiles()
{
    QFETCH(const int, channels);
    QFETCH(const uint, rate);
    QFETCH(const int, bits);
    QFETCH(const int, present);
    QFETCH(const uint, declared);
    const QString path = write({.numChannels = static_cast<std::uint16_t>(channels),
                                .sampleRate = rate,
                                .bitsPerSample = static_cast<std::uint16_t>(bits),
                                .data = QByteArray(present, '\x10'),
                                .declaredSize = declared});
    CWav wav;
    QVERIFY(wav.LoadWav(path.toStdString()));
    const std::optional<TokenSize> result = tokenSize(wav);
    QTEST(result ? result->nPoints : -1, "nPoints");
    QTEST(result.value_or(TokenSize()).duration, "duration");
}

void TestTokenSound::onlyTheFirstChannelIsTaken_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<QList<double>>("expected");

    QTest::newRow("mono") << 1 << QList<double>{0.125, -0.25, 0.5, -0.5};
    QTest::newRow("left of stereo") << 2 << QList<double>{0.125, 0.5};
}

// Catches the right channel, a mixture, and interleaved samples played as they are.
void TestTokenSound::onlyTheFirstChannelIsTaken()
{
    QFETCH(const int, channels);
    const QString path = write({.numChannels = static_cast<std::uint16_t>(channels),
                                .data = WavBytes::samples16({4096, -8192, 16384, -16384})});
    CWav wav;
    QVERIFY(wav.LoadWav(path.toStdString()));
    QList<double> soundWave;
    takeFirstChannel(wav, tokenSize(wav).value().nPoints, soundWave);
    QTEST(soundWave, "expected");
}

// Catches the rest of a longer token left behind a shorter one.
void TestTokenSound::aShorterTokenReplacesALongerOne()
{
    const QString path = write({.data = WavBytes::samples16({4096, -8192})});
    CWav wav;
    QVERIFY(wav.LoadWav(path.toStdString()));
    QList<double> soundWave(5, 0.75);
    takeFirstChannel(wav, 2, soundWave);
    QCOMPARE(soundWave, QList<double>({0.125, -0.25}));
}

// Catches samples of a file with three channels that are played as if they were mono.
void TestTokenSound::moreThanTwoChannelsKeepTheEarlierSound()
{
    const QString path =
        write({.numChannels = 3, .data = WavBytes::samples16({1, 2, 3, 4, 5, 6, 7, 8, 9})});
    CWav wav;
    QVERIFY(wav.LoadWav(path.toStdString()));
    QList<double> soundWave = {0.75, -0.75};
    takeFirstChannel(wav, tokenSize(wav).value().nPoints, soundWave);
    QCOMPARE(soundWave, QList<double>({0.75, -0.75, 0.0}));
}

void TestTokenSound::theSoundIsPlayedAsFloatsBetweenSilences_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<QList<double>>("soundWave");
    QTest::addColumn<int>("behind");
    QTest::addColumn<QList<float>>("expected");

    using Played = QList<float>;
    QTest::newRow("as it is") << 0 << QList<double>{0.5, -0.25, 1.0} << 0
                              << Played{0.5F, -0.25F, 1.0F};
    QTest::newRow("not clipped") << 0 << QList<double>{1.5, -2.0} << 0 << Played{1.5F, -2.0F};
    QTest::newRow("rounded to float") << 0 << QList<double>{0.1} << 0 << Played{0.1F};
    QTest::newRow("silence behind")
        << 0 << QList<double>{0.5} << 3 << Played{0.5F, 0.0F, 0.0F, 0.0F};
    QTest::newRow("silence before")
        << 2 << QList<double>{0.5} << 1 << Played{0.0F, 0.0F, 0.5F, 0.0F};
    QTest::newRow("only silence") << 1 << QList<double>{} << 1 << Played{0.0F, 0.0F};
    QTest::newRow("nothing") << 0 << QList<double>{} << 0 << Played{};
}

// Catches another sample format, a scale, a limit, and silence of another length.
void TestTokenSound::theSoundIsPlayedAsFloatsBetweenSilences()
{
    QFETCH(const int, before);
    QFETCH(const QList<double>, soundWave);
    QFETCH(const int, behind);
    const QByteArray bytes = playbackBytes(before, soundWave, behind);
    QCOMPARE(bytes.size() % qsizetype{sizeof(float)}, 0);
    QList<float> played(bytes.size() / qsizetype{sizeof(float)});
    if (!bytes.isEmpty())
        std::memcpy(played.data(), bytes.constData(), static_cast<size_t>(bytes.size()));
    QTEST(played, "expected");
}

QTEST_APPLESS_MAIN(TestTokenSound)
#include "tst_tokensound.moc"
