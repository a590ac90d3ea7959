// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/TimingReport.h"

#include <QTest>

#include <cmath>

namespace {

PlayResult play(qsizetype length, double zeroError)
{
    return {.length = length,
            .nHeard = length,
            .whole = true,
            .zeroError = zeroError,
            .timerError = 0.5,
            .block = 2048 / 48.0};
}

/// A report of plays with these clock zero errors, with an output.
TimingReport reportOf(const QList<double> &zeroErrors)
{
    TimingReport report;
    report.machine = {
        .system = "System 12", .kernel = "kernel 6", .processor = "Processor <1>", .qt = "6.4.2"};
    report.server = "Server 1.2";
    report.device = "Output & more";
    report.isExact = true;
    for (const double error : zeroErrors)
        report.add(play(12000, error));
    return report;
}

/// The same for an input.
TimingReport inputReportOf(const QList<double> &zeroErrors)
{
    TimingReport report = reportOf(zeroErrors);
    report.isInput = true;
    report.isExact = false;
    return report;
}

/// Two errors with this mean and standard deviation.
QList<double> errors(double mean, double sd)
{
    return {mean - sd / std::sqrt(2), mean + sd / std::sqrt(2)};
}

TimingReport withLostSample(TimingReport report)
{
    PlayResult lost = play(12000, 0);
    lost.nHeard = 11999;
    lost.whole = false;
    report.add(lost);
    return report;
}

TimingReport withBlocks(const QList<double> &samples)
{
    TimingReport report;
    for (const double size : samples) {
        PlayResult result = play(2400, 0);
        result.block = size / 48;
        report.add(result);
    }
    return report;
}

} // namespace

class TestTimingReport : public QObject
{
    Q_OBJECT

private slots:
    void theVerdictFollowsTheLimits_data();
    void theVerdictFollowsTheLimits();
    void theVerdictSaysWhatIsWrong();
    void playsAreCountedByLength();
    void aPlayWithoutItsEndHasNoZeroError();
    void thePeriodIsToldAsFarAsItIsKnown_data();
    void thePeriodIsToldAsFarAsItIsKnown();
    void theSentenceForAPaperHasTheFigures();
    void theHistogramCountsEveryValueOnce_data();
    void theHistogramCountsEveryValueOnce();
    void aDurationIsShownWithADecimalOnlyWhereItHasOne();
    void theTextHasEveryPart();
    void theJsonHasEveryFigure();
    void theDocumentShowsNamesAsTheyAre();
};

void TestTimingReport::theVerdictFollowsTheLimits_data()
{
    QTest::addColumn<TimingReport>("report");
    QTest::addColumn<bool>("good");

    const auto output = [](const char *name, double mean, double sd, bool good) {
        QTest::newRow(name) << reportOf(errors(mean, sd)) << good;
    };
    output("no error", 0, 0, true);
    output("mean just within", 2.999, 0.1, true);
    output("mean just beyond", 3.001, 0.1, false);
    output("negative mean just within", -2.999, 0.1, true);
    output("negative mean just beyond", -3.001, 0.1, false);
    output("SD just within", 0, 0.999, true);
    output("SD just beyond", 0, 1.001, false);
    QTest::newRow("one play") << reportOf({1.5}) << true;
    QTest::newRow("one sample lost") << withLostSample(reportOf({0, 0, 0})) << false;
    QTest::newRow("no play") << reportOf({}) << false;

    const auto input = [](const char *name, double mean, double sd, bool good) {
        QTest::newRow(name) << inputReportOf(errors(mean, sd)) << good;
    };
    input("input, delayed", -120, 0.999, true);
    input("input, mean just within", 2.999, 0.1, true);
    input("input, mean just beyond", 3.001, 0.1, false);
    input("input, SD just beyond", -120, 1.001, false);
    QTest::newRow("input, one sample lost") << withLostSample(inputReportOf({-20, -20})) << false;
    QTest::newRow("input, no play") << inputReportOf({}) << false;
}

// Catches each limit that is left out, is another one or has the wrong sign, and a mean that counts
// with an input.
void TestTimingReport::theVerdictFollowsTheLimits()
{
    QFETCH(const TimingReport, report);
    const Verdict result = verdict(report);
    QTEST(result.isGood, "good");
    QCOMPARE(result.text.startsWith("Reaction times are accurate"), result.isGood);
    QVERIFY(result.text.endsWith('.') || result.text.endsWith('?'));
}

// Catches a bad verdict that gives another reason, or the wrong direction of the error.
void TestTimingReport::theVerdictSaysWhatIsWrong()
{
    const QString late = verdict(reportOf(errors(4, 0.1))).text;
    QVERIFY2(late.contains("4.0 ms after the end of the token") && late.contains("too short"),
             qPrintable(late));
    const QString early = verdict(reportOf(errors(-5, 0.1))).text;
    QVERIFY2(early.contains("5.0 ms before the end of the token") && early.contains("too long"),
             qPrintable(early));
    const QString scattered = verdict(reportOf(errors(0, 1.25))).text;
    QVERIFY2(scattered.contains("standard deviation of the clock zero error is 1.25 ms"),
             qPrintable(scattered));
    QVERIFY(!scattered.contains("on average"));
    const QString lost = verdict(withLostSample(reportOf({0, 0}))).text;
    QVERIFY2(lost.contains("1 of 3 tokens were not heard whole"), qPrintable(lost));
    QVERIFY(verdict(reportOf({1, 2})).text.contains("every sample of 2 tokens was heard"));
    QVERIFY(verdict(inputReportOf({1, 2})).text.contains("every part of 2 tokens was heard"));
    QVERIFY(verdict(inputReportOf({})).text.contains("microphone"));
    QVERIFY(!verdict(reportOf({})).text.contains("microphone"));
    QVERIFY(limitsText(reportOf({})).contains("within 3 ms of zero"));
    QVERIFY(limitsText(inputReportOf({})).contains("at most +3 ms"));
}

// Catches plays that count for another length, lengths out of order, and shares of the wrong sum.
void TestTimingReport::playsAreCountedByLength()
{
    TimingReport report;
    for (const qsizetype length : {48000, 2400, 12062, 2400})
        report.add(play(length, static_cast<double>(length)));
    PlayResult half = play(2400, 1);
    half.nHeard = 1200;
    half.whole = false;
    report.add(half);

    QCOMPARE(report.lengths.size(), 3);
    QCOMPARE(report.lengths.at(0).length, 2400);
    QCOMPARE(report.lengths.at(1).length, 12062);
    QCOMPARE(report.lengths.at(2).length, 48000);
    QCOMPARE(report.lengths.at(0).nPlays, 3);
    QCOMPARE(report.lengths.at(0).nWhole, 2);
    QCOMPARE(report.lengths.at(0).zeroError.most(), 2400.0);
    QCOMPARE(report.lengths.at(0).timerError.mean(), 0.5);
    QVERIFY(qAbs(report.lengths.at(0).heardShare() - 500 / 6.0) < 1e-9);
    QCOMPARE(report.lengths.at(1).heardShare(), 100.0);
    QCOMPARE(report.all.nPlays, 5);
    QCOMPARE(report.all.nWhole, 4);
    QCOMPARE(report.all.nSent, 48000 + 12062 + 3 * 2400);
    QCOMPARE(report.all.nHeard, report.all.nSent - 1200);
    QCOMPARE(report.all.zeroError.count(), size_t{5});
    QCOMPARE(LengthResult().heardShare(), 0.0);
}

// Catches an error that is computed from the end of a sound that was cut off.
void TestTimingReport::aPlayWithoutItsEndHasNoZeroError()
{
    Play played;
    played.due = 1000;
    played.begun = 1000.25;
    played.ended = 2003;
    played.token = noise(100, 1);
    HeardPlay heard = {.token = {.length = 100, .nSamples = 100, .toItsEnd = true, .whole = true},
                       .end = 2001};
    const PlayResult whole = playResult(played, heard);
    QCOMPARE(whole.zeroError.value_or(0), 2.0);
    QCOMPARE(whole.timerError, 0.25);
    QCOMPARE(whole.length, 100);
    QVERIFY(whole.whole);

    heard.token = {.length = 100, .nSamples = 90};
    const PlayResult cut = playResult(played, heard);
    QVERIFY(!cut.zeroError);
    QVERIFY(!cut.whole);
    QCOMPARE(cut.nHeard, 90);

    TimingReport report;
    report.add(whole);
    report.add(cut);
    QCOMPARE(report.all.zeroError.count(), size_t{1});
    QCOMPARE(report.all.timerError.count(), size_t{2});
}

void TestTimingReport::thePeriodIsToldAsFarAsItIsKnown_data()
{
    QTest::addColumn<QList<double>>("blocks");
    QTest::addColumn<QString>("text");

    QTest::newRow("no play") << QList<double>() << "unknown";
    QTest::newRow("PipeWire") << QList<double>{2048, 2048, 1024, 2048} << "2048 samples (42.7 ms)";
    QTest::newRow("PipeWire, a shorter one")
        << QList<double>{1024, 1024, 2048}
        << "at most 1024 samples (21.3 ms); the program cannot tell shorter ones apart";
    QTest::newRow("PipeWire, as many of each")
        << QList<double>{2048, 1024}
        << "at most 1024 samples (21.3 ms); the program cannot tell shorter ones apart";
    QTest::newRow("PulseAudio") << QList<double>{360, 352, 352}
                                << "unknown; the server takes 352 samples (7.3 ms) at a time";
}

// Catches a period that is claimed where it is not known, and the largest block in place of the
// usual one.
void TestTimingReport::thePeriodIsToldAsFarAsItIsKnown()
{
    QFETCH(const QList<double>, blocks);
    QTEST(periodText(withBlocks(blocks)), "text");
}

// Catches figures that are missing, are swapped or have lost their sign.
void TestTimingReport::theSentenceForAPaperHasTheFigures()
{
    QCOMPARE(paperText(reportOf({1, 1, 4})),
             QString("Reaction times were measured by Ostrine from the offset of the token to the "
                     "release of the response button, with a resolution of 1 ms. Clock zero was "
                     "verified against a recording of the sound server's output on Processor <1>, "
                     "System 12, Server 1.2, Qt 6.4.2: mean error +2.0 ms, SD 1.7 ms over 3 "
                     "presentations."));
    const QString ofInput = paperText(inputReportOf({-30, -31}));
    QVERIFY2(ofInput.contains("a recording of the loudspeaker's sound") &&
                 ofInput.endsWith("mean error -30.5 ms, SD 0.7 ms over 2 presentations, including "
                                  "the delays of the sound card, the loudspeaker and the "
                                  "microphone."),
             qPrintable(ofInput));
    QCOMPARE(paperText(reportOf({})), QString());
}

void TestTimingReport::theHistogramCountsEveryValueOnce_data()
{
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<QList<double>>("limits"); // of the bins
    QTest::addColumn<QList<int>>("counts");

    QTest::newRow("none") << QList<double>() << QList<double>() << QList<int>();
    QTest::newRow("one") << QList<double>{1.55} << QList<double>{1.5, 1.6} << QList<int>{1};
    QTest::newRow("on a limit") << QList<double>{2, 2} << QList<double>{2, 2.1} << QList<int>{2};
    QTest::newRow("both signs") << QList<double>{-0.05, 0.05, 0.15, 0.16}
                                << QList<double>{-0.1, 0, 0.1, 0.2} << QList<int>{1, 1, 2};
    QTest::newRow("bins of 0.2") << QList<double>{0.05, 1.95, 0.15, 0.25}
                                 << QList<double>{0, 0.2, 0.4, 0.6, 0.8, 1, 1.2, 1.4, 1.6, 1.8, 2}
                                 << QList<int>{2, 1, 0, 0, 0, 0, 0, 0, 0, 1};
    QTest::newRow("bins of 0.5") << QList<double>{0, 4.9}
                                 << QList<double>{0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5, 5}
                                 << QList<int>{1, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    QTest::newRow("bins of 1") << QList<double>{-1, 6.5}
                               << QList<double>{-1, 0, 1, 2, 3, 4, 5, 6, 7}
                               << QList<int>{1, 0, 0, 0, 0, 0, 0, 1};
    QTest::newRow("bins of 100") << QList<double>{0, 799}
                                 << QList<double>{0, 100, 200, 300, 400, 500, 600, 700, 800}
                                 << QList<int>{1, 0, 0, 0, 0, 0, 0, 1};
}

// Catches values that are counted twice or not at all, bins that are too many, too wide or not at
// round values, and limits with errors of rounding.
void TestTimingReport::theHistogramCountsEveryValueOnce()
{
    QFETCH(const QList<double>, values);
    QFETCH(const QList<double>, limits);
    QFETCH(const QList<int>, counts);
    const std::vector<double> list(values.begin(), values.end());
    const QList<HistogramBin> bins = histogram(list);
    QCOMPARE(bins.size(), counts.size());
    for (qsizetype i = 0; i < bins.size(); ++i)
        QVERIFY2((bins.at(i) == HistogramBin{limits.at(i), limits.at(i + 1), counts.at(i)}),
                 qPrintable(QString("%1: %2 .. %3, %4")
                                .arg(i)
                                .arg(bins.at(i).from)
                                .arg(bins.at(i).to)
                                .arg(bins.at(i).count)));
}

// Catches durations that are cut off or have a decimal of zero.
void TestTimingReport::aDurationIsShownWithADecimalOnlyWhereItHasOne()
{
    QCOMPARE(durationText(2400), QString("50 ms"));
    QCOMPARE(durationText(12062), QString("251.3 ms"));
    QCOMPARE(durationText(48000), QString("1000 ms"));
    QCOMPARE(durationText(47999), QString("1000 ms"));
}

// Catches a part of the report that is left out, and columns that are not aligned.
void TestTimingReport::theTextHasEveryPart()
{
    TimingReport report = reportOf({1, 2, 3});
    report.add(play(2400, 2));
    const QString text = toText(report);
    const QStringList lines = text.split('\n');
    QVERIFY(lines.at(0).startsWith("token   plays  whole  samples heard  clock zero error"));
    QVERIFY(lines.at(1).startsWith("50 ms   1      1      100.00 %       +2.00"));
    QVERIFY(lines.at(2).startsWith(
        "250 ms  3      3      100.00 %       +2.00, 1.00, +1.00 .. +3.00  "));
    QVERIFY(lines.at(3).startsWith("all     4      4      100.00 %       +2.00, 0.82"));
    for (int row = 0; row < 4; ++row)
        QVERIFY2(!lines.at(row).endsWith(' '), qPrintable(lines.at(row)));
    for (const QString &part : {verdict(report).text, limitsText(report), paperText(report),
                                periodText(report), report.server, report.device, report.machine.qt,
                                report.machine.kernel, report.machine.processor,
                                QString("sample by sample"), QString("+2.0 .. +2.2     2 ##\n")})
        QVERIFY2(text.contains(part), qPrintable(part + "\n\n" + text));
    QVERIFY(toText(inputReportOf({1})).contains("by matched filtering"));
}

// Catches a figure that is left out or has another's name.
void TestTimingReport::theJsonHasEveryFigure()
{
    const TimingReport report = reportOf({1, 2, 3});
    const QJsonObject json = toJson(report);
    QCOMPARE(json["output"].toString(), report.device);
    QVERIFY(!json.contains("input"));
    QCOMPARE(toJson(inputReportOf({1}))["input"].toString(), report.device);
    QCOMPARE(json["foundSampleBySample"].toBool(), true);
    QCOMPARE(json["soundServer"].toString(), report.server);
    QCOMPARE(json["soundServerPeriod"].toString(), periodText(report));
    QCOMPARE(json["qt"].toString(), QString("6.4.2"));
    QCOMPARE(json["system"].toString(), QString("System 12"));
    QCOMPARE(json["kernel"].toString(), QString("kernel 6"));
    QCOMPARE(json["processor"].toString(), QString("Processor <1>"));
    QCOMPARE(json["isGood"].toBool(), true);
    QCOMPARE(json["verdict"].toString(), verdict(report).text);
    QCOMPARE(json["limits"].toString(), limitsText(report));
    QCOMPARE(json["paper"].toString(), paperText(report));
    const QJsonObject token = json["tokens"][0].toObject();
    for (const QJsonObject &object : {token, json["all"].toObject()}) {
        QCOMPARE(object["plays"].toInt(), 3);
        QCOMPARE(object["wholePlays"].toInt(), 3);
        QCOMPARE(object["samplesHeardPercent"].toDouble(), 100.0);
        const QJsonObject error = object["clockZeroError"].toObject();
        QCOMPARE(error["count"].toInt(), 3);
        QCOMPARE(error["mean"].toDouble(), 2.0);
        QCOMPARE(error["sd"].toDouble(), 1.0);
        QCOMPARE(error["min"].toDouble(), 1.0);
        QCOMPARE(error["max"].toDouble(), 3.0);
        QCOMPARE(object["presentationTimerError"]["mean"].toDouble(), 0.5);
    }
    QCOMPARE(token["samples"].toInt(), 12000);
    QCOMPARE(token["milliseconds"].toDouble(), 250.0);
    const QJsonValue bin = json["clockZeroErrorHistogram"][0];
    QCOMPARE(bin["from"].toDouble(), 1.0);
    QCOMPARE(bin["to"].toDouble(), 1.2);
    QCOMPARE(bin["count"].toInt(), 1);
}

// Catches a name that is taken for markup, and a part that is left out.
void TestTimingReport::theDocumentShowsNamesAsTheyAre()
{
    const TimingReport report = reportOf({1, 2, 3});
    const QString html = toHtml(report);
    for (const QString &part :
         {verdict(report).text, limitsText(report), paperText(report), periodText(report),
          report.device, report.machine.processor, QString("+1.00 .. +3.00")})
        QVERIFY2(html.contains(part.toHtmlEscaped()), qPrintable(part));
    QVERIFY(html.contains("<tr><th align=\"left\">token</th>"));
    QVERIFY(html.contains("<tr><td align=\"left\">250 ms</td>"));
    QVERIFY(!html.contains("Processor <1>"));
    QVERIFY(html.contains(QChar(0x2588)));
    QVERIFY(!toHtml(reportOf({})).contains("For a paper"));
}

QTEST_APPLESS_MAIN(TestTimingReport)
#include "tst_timingreport.moc"
