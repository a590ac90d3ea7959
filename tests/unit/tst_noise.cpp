// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Noise.h"

#include <QTest>

#include <vector>

namespace {

const QList<double> token = noise(1000, 1);

/// The samples of @p sound from @p from up to @p to.
QList<double> part(const QList<double> &sound, qsizetype from, qsizetype to)
{
    return sound.mid(from, to - from);
}

QList<double> silence(qsizetype nSamples)
{
    return QList<double>(nSamples, 0.0);
}

} // namespace

class TestNoise : public QObject
{
    Q_OBJECT

private slots:
    void aFileHoldsTheNoiseExactly();
    void findTokenTellsWhatWasHeardOfAToken_data();
    void findTokenTellsWhatWasHeardOfAToken();
};

// Catches noise that is not heard as it was written: silent samples, and samples that the file or
// the output rounds.
void TestNoise::aFileHoldsTheNoiseExactly()
{
    const QList<double> samples = noise(200000, 7);
    const QByteArray file = wavBytes(samples);
    QCOMPARE(file.size(), 44 + 2 * samples.size());
    for (qsizetype i = 0; i < samples.size(); ++i) {
        const auto low = static_cast<unsigned char>(file.at(44 + 2 * i));
        const auto high = static_cast<signed char>(file.at(45 + 2 * i));
        QCOMPARE((256 * high + low) / 32768.0, samples.at(i));
        QCOMPARE(double(static_cast<float>(samples.at(i))), samples.at(i));
        QVERIFY(samples.at(i) != 0);
    }
    QVERIFY(noise(200000, 8) != samples);
}

void TestNoise::findTokenTellsWhatWasHeardOfAToken_data()
{
    QTest::addColumn<QList<double>>("recording");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("gap");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");

    const QList<double> other = noise(3000, 2);
    const QList<double> pause = silence(101);
    QTest::newRow("between silence")
        << pause + token + pause << "1000 of 1000 samples heard, whole" << false << 101 << 1100;
    QTest::newRow("between other sounds")
        << other + token + other << "1000 of 1000 samples heard, whole" << false << 3000 << 3999;
    QTest::newRow("alone") << token << "1000 of 1000 samples heard, whole" << false << 0 << 999;
    QTest::newRow("samples lost") << pause + part(token, 0, 300) + part(token, 364, 1000)
                                  << "936 of 1000 samples heard, with a gap" << true << 101 << 1036;
    QTest::newRow("samples lost and silent")
        << part(token, 0, 300) + pause + part(token, 401, 1000)
        << "899 of 1000 samples heard, with a gap" << true << 0 << 999;
    QTest::newRow("silence put in")
        << part(token, 0, 300) + pause + part(token, 300, 1000)
        << "1000 of 1000 samples heard, with a gap" << true << 0 << 1100;
    QTest::newRow("silence put in just before its end")
        << part(token, 0, 997) + pause + part(token, 997, 1000)
        << "1000 of 1000 samples heard, with a gap" << true << 0 << 1100;
    QTest::newRow("another sound put in")
        << part(token, 0, 300) + other + part(token, 300, 1000)
        << "1000 of 1000 samples heard, with a gap" << true << 0 << 3999;
    QTest::newRow("two gaps") << part(token, 0, 300) + part(token, 400, 600) + pause +
                                     part(token, 700, 1000)
                              << "800 of 1000 samples heard, with a gap" << true << 0 << 900;
    QTest::newRow("cut at its end")
        << pause + part(token, 0, 999) + pause << "999 of 1000 samples heard, without its end"
        << false << 101 << 1099;
    QTest::newRow("cut at its end, behind a gap")
        << part(token, 0, 300) + part(token, 400, 900) + pause
        << "800 of 1000 samples heard, without its end" << false << 0 << 799;
    QTest::newRow("cut at its beginning")
        << pause + part(token, 1, 1000) << "999 of 1000 samples heard, without its beginning"
        << false << 101 << 1099;
    QTest::newRow("another sound alone")
        << other << "nothing of the token was heard" << false << 0 << 0;
    QTest::newRow("silence alone") << pause << "nothing of the token was heard" << false << 0 << 0;
    QTest::newRow("no recording") << QList<double>() << "nothing of the token was heard" << false
                                  << 0 << 0;
}

// Catches a cut taken for a gap or a gap for the whole, another sound taken for the token, and a
// part of it that is missed or found elsewhere.
void TestNoise::findTokenTellsWhatWasHeardOfAToken()
{
    QFETCH(const QList<double>, recording);
    const std::vector<float> samples(recording.begin(), recording.end());
    const HeardToken heard = findToken(samples, token);
    QTEST(heard.text(), "text");
    QTEST(heard.hasGap(), "gap");
    QTEST(static_cast<int>(heard.first), "first");
    QTEST(static_cast<int>(heard.last), "last");
    QCOMPARE(heard.length, token.size());
}

QTEST_APPLESS_MAIN(TestNoise)
#include "tst_noise.moc"
