// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/MatchedFilter.h"

#include <QTest>

#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace {

constexpr double rate = 48000;
constexpr qsizetype before = 5000; ///< samples of the recording before the token

using Samples = QList<double>;

/// A recording of @p token: silence around it.
Samples recordingOf(const Samples &token)
{
    return Samples(before, 0.0) + token + Samples(9000, 0.0);
}

Samples scaled(Samples samples, double factor)
{
    for (double &sample : samples)
        sample *= factor;
    return samples;
}

Samples sum(Samples samples, const Samples &others)
{
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] += others.at(i);
    return samples;
}

Samples delayed(const Samples &samples, qsizetype by)
{
    return (Samples(by, 0.0) + samples).mid(0, samples.size());
}

/// Noise with @p ratio times the root mean square of a token.
Samples otherNoise(qsizetype size, double ratio)
{
    return scaled(noise(size, 4711), ratio);
}

/// Only what lies between @p low and @p high (Hz) of @p samples, delayed by @p delay samples: a
/// filter of 501 taps, whose own delay is removed.
Samples limited(const Samples &samples, double low, double high, double delay = 0)
{
    constexpr int half = 250;
    std::vector<double> taps;
    for (int i = -half; i <= half; ++i) {
        const double t = i - delay;
        const auto lowPass = [t](double frequency) {
            const double x = 2 * frequency / rate;
            return t == 0 ? x : std::sin(std::numbers::pi * x * t) / (std::numbers::pi * t);
        };
        const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * t / (half + 1));
        taps.push_back((lowPass(high) - lowPass(low)) * window);
    }
    Samples result(samples.size(), 0.0);
    for (qsizetype i = half; i < samples.size() - half; ++i) {
        for (int j = -half; j <= half; ++j)
            result[i] += taps[static_cast<size_t>(half + j)] * samples.at(i - j);
    }
    return result;
}

/// @p samples as recorded at a rate that is @p factor times that of the output.
Samples resampled(const Samples &samples, double factor)
{
    Samples result;
    for (qsizetype i = 0;; ++i) {
        const double position = static_cast<double>(i) / factor;
        const auto whole = static_cast<qsizetype>(position);
        if (whole + 1 >= samples.size())
            return result;
        const double fraction = position - static_cast<double>(whole);
        result.append((1 - fraction) * samples.at(whole) + fraction * samples.at(whole + 1));
    }
}

std::optional<MatchedToken> match(const Samples &recording, const Samples &token)
{
    const std::vector<float> samples(recording.begin(), recording.end());
    return matchToken(samples, token);
}

using Change = std::function<Samples(const Samples &recording)>;

} // namespace

Q_DECLARE_METATYPE(Change)

class TestMatchedFilter : public QObject
{
    Q_OBJECT

private slots:
    void aTokenIsFoundInWhatIsLeftOfIt_data();
    void aTokenIsFoundInWhatIsLeftOfIt();
    void anAbsentTokenIsNotFound_data();
    void anAbsentTokenIsNotFound();
    void whatIsMissingOfATokenIsTold_data();
    void whatIsMissingOfATokenIsTold();
    void theEndIsFoundWhereTheRatesDiffer();
    void anExactCopyCorrelatesByOne();
};

void TestMatchedFilter::aTokenIsFoundInWhatIsLeftOfIt_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<double>("delay"); // of the end, in samples

    const auto row = [](const char *name, const Change &change, double delay = 0) {
        QTest::newRow(name) << change << delay;
    };
    row("unchanged", [](const Samples &sound) { return sound; });
    row("attenuated by 60 dB", [](const Samples &sound) { return scaled(sound, 0.001); });
    row("reversed polarity", [](const Samples &sound) { return scaled(sound, -0.2); });
    row("with an offset",
        [](const Samples &sound) { return sum(sound, Samples(sound.size(), 20.0)); });
    row("among noise of the same level",
        [](const Samples &sound) { return sum(sound, otherNoise(sound.size(), 1)); });
    row("attenuated, among noise twice as strong", [](const Samples &sound) {
        return sum(scaled(sound, 0.01), otherNoise(sound.size(), 0.02));
    });
    row("among noise five times as strong",
        [](const Samples &sound) { return sum(sound, otherNoise(sound.size(), 5)); });
    row("up to 8 kHz", [](const Samples &sound) { return limited(sound, 0, 8000); });
    row("300 to 3400 Hz", [](const Samples &sound) { return limited(sound, 300, 3400); });
    row(
        "half a sample later", [](const Samples &sound) { return limited(sound, 0, 20000, 0.5); },
        0.5);
    row("with weaker echoes", [](const Samples &sound) {
        return sum(sum(sound, scaled(delayed(sound, 240), 0.6)),
                   scaled(delayed(sound, 1111), -0.5));
    });
    row("with a stronger echo",
        [](const Samples &sound) { return sum(scaled(sound, 0.8), delayed(sound, 333)); });
    row(
        "with a far weaker sound before it",
        [](const Samples &sound) { return sum(scaled(sound, 0.3), delayed(sound, 333)); }, 333);
    row("as a microphone hears it in a room", [](const Samples &sound) {
        const Samples narrow = limited(scaled(sound, -0.05), 150, 10000);
        return sum(sum(narrow, scaled(delayed(narrow, 400), 0.5)), otherNoise(sound.size(), 0.01));
    });
}

// Catches a token that is missed, and an end that is off by more than a few samples: by the length
// of the pattern, by an echo, by the neighbouring wave of a narrow band.
void TestMatchedFilter::aTokenIsFoundInWhatIsLeftOfIt()
{
    QFETCH(const Change, change);
    QFETCH(const double, delay);
    for (const qsizetype length : {2400, 12062, 48000}) {
        const Samples token = noise(length, static_cast<quint32>(length));
        const auto found = match(change(recordingOf(token)), token);
        QVERIFY2(found, qPrintable(QString::number(length)));
        const double error = found->end - static_cast<double>(before + length) - delay;
        QVERIFY2(std::abs(error) < 0.3,
                 qPrintable(QString("%1 samples: %2").arg(length).arg(error)));
        QVERIFY2(found->token.whole, qPrintable(found->token.text()));
        QVERIFY(found->token.toItsEnd && found->token.fromItsBeginning);
        QCOMPARE(found->token.length, length);
        QVERIFY(std::abs(static_cast<double>(found->token.last) + 1 - found->end) <= 0.5);
    }
}

void TestMatchedFilter::anAbsentTokenIsNotFound_data()
{
    QTest::addColumn<Samples>("recording");

    QTest::newRow("silence") << Samples(60000, 0.0);
    QTest::newRow("an offset") << Samples(60000, 0.7);
    QTest::newRow("other noise") << noise(100000, 99);
    QTest::newRow("other noise of a narrow band") << limited(noise(100000, 99), 300, 800);
    QTest::newRow("another token") << recordingOf(noise(12000, 98));
    Samples click = Samples(60000, 0.0);
    click[30000] = 1;
    QTest::newRow("a click") << click;
    Samples tone;
    for (int i = 0; i < 60000; ++i)
        tone.append(std::sin(i * 0.1));
    QTest::newRow("a tone") << tone;
    QTest::newRow("a recording that is too short") << Samples(2399, 0.1);
    QTest::newRow("no recording") << Samples();
}

// Catches a threshold that chance passes, silence divided by itself, and reading past the end.
void TestMatchedFilter::anAbsentTokenIsNotFound()
{
    QFETCH(const Samples, recording);
    for (const qsizetype length : {2400, 12062, 48000}) {
        const auto found = match(recording, noise(length, 1));
        QVERIFY2(!found, qPrintable(QString::number(found ? found->correlation : 0)));
    }
    QVERIFY(!match(recording, {}));
}

void TestMatchedFilter::whatIsMissingOfATokenIsTold_data()
{
    QTest::addColumn<Samples>("heard"); // in place of the token
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("toItsEnd");

    const Samples token = noise(24000, 5);
    const auto silence = [](qsizetype n) { return Samples(n, 0.0); };
    QTest::newRow("nothing") << token << "24000 of 24000 samples heard, whole" << true;
    QTest::newRow("the beginning") << silence(4800) + token.mid(4800)
                                   << "19200 of 24000 samples heard, without its beginning" << true;
    QTest::newRow("the end") << token.mid(0, 19200) + silence(4800)
                             << "19200 of 24000 samples heard, without its end" << false;
    QTest::newRow("a silent part") << token.mid(0, 4800) + silence(960) + token.mid(5760)
                                   << "23040 of 24000 samples heard, with a gap" << true;
    QTest::newRow("lost samples") << token.mid(0, 2400) + token.mid(7200)
                                  << "16800 of 24000 samples heard, without its beginning" << true;
}

// Catches a token that counts as whole although a part is silent, lost or cut off.
void TestMatchedFilter::whatIsMissingOfATokenIsTold()
{
    QFETCH(const Samples, heard);
    const Samples sound = recordingOf(heard);
    const auto found = match(sum(sound, otherNoise(sound.size(), 0.1)), noise(24000, 5));
    QVERIFY(found);
    QTEST(found->token.text(), "text");
    QTEST(found->token.toItsEnd, "toItsEnd");
}

// Catches a token that is lost, or counted as incomplete, because a sound card's clock is not that
// of the other one.
void TestMatchedFilter::theEndIsFoundWhereTheRatesDiffer()
{
    const Samples token = noise(240000, 8);
    const Samples sound = limited(recordingOf(token), 100, 6000);
    for (const double factor : {0.9998, 1.0002}) {
        const auto found = match(resampled(sound, factor), token);
        QVERIFY(found);
        const double error = found->end - factor * static_cast<double>(before + token.size());
        QVERIFY2(std::abs(error) < 4, qPrintable(QString::number(error))); // 0.08 ms
        QVERIFY(found->token.toItsEnd);
    }
}

// Catches a correlation that is not normalised, and errors of rounding in silence that are.
void TestMatchedFilter::anExactCopyCorrelatesByOne()
{
    const Samples token = noise(12000, 3);
    QVERIFY(std::abs(match(scaled(recordingOf(token), 0.5), token)->correlation - 1) < 1e-3);
    // Its sum is 0, so that the silence around it is none but for errors of rounding.
    const Samples silence(20000, 0.0);
    const auto exact = match(silence + token + scaled(token, -1) + silence, token);
    QVERIFY(std::abs(exact->correlation - 1) < 1e-9);
    QVERIFY(std::abs(exact->end - 32000) < 0.1);

    const Samples noisy = sum(recordingOf(token), otherNoise(recordingOf(token).size(), 1));
    QVERIFY(std::abs(match(noisy, token)->correlation - 0.707) < 0.03);
}

QTEST_APPLESS_MAIN(TestMatchedFilter)
#include "tst_matchedfilter.moc"
