// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/TimingReport.h"

#include "timing/StampedRecording.h"

#include <QFile>
#include <QJsonArray>
#include <QSysInfo>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 longestHiddenPeriod = 1024; ///< samples; docs/timing.md tells why

double milliseconds(double nSamples)
{
    return nSamples * 1000 / recordingRate;
}

QString number(double value, int decimals = 1)
{
    return QString::number(value, 'f', decimals);
}

QString withSign(double value)
{
    return QString::asprintf("%+.1f", value);
}

/// When the reaction clock starts, by the mean clock zero error.
QString clockStart(double mean)
{
    return u"%1 ms %2 the end of the token"_s.arg(number(std::abs(mean)),
                                                  mean < 0 ? u"before"_s : u"after"_s);
}

/// The model of the first processor, where the kernel tells it.
QString processorModel()
{
    QFile file(u"/proc/cpuinfo"_s);
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            const qsizetype colon = line.indexOf(':');
            if (colon > 0 && line.left(colon).trimmed() == "model name")
                return QString::fromUtf8(line.mid(colon + 1).trimmed());
        }
    }
    return QSysInfo::currentCpuArchitecture();
}

void addTo(LengthResult &to, const PlayResult &result)
{
    ++to.nPlays;
    to.nWhole += result.whole ? 1 : 0;
    to.nSent += result.length;
    to.nHeard += result.nHeard;
    to.timerError.add(result.timerError);
    if (result.zeroError)
        to.zeroError.add(*result.zeroError);
}

/// How many samples the server took at a time, in most plays.
qint64 blockSize(const TimingReport &report)
{
    if (report.blocks.isEmpty())
        return 0;
    const double median = report.blocks.at((report.blocks.size() - 1) / 2);
    return std::lround(median * recordingRate / 1000);
}

QStringList headings()
{
    return {u"token"_s,
            u"plays"_s,
            u"whole"_s,
            u"samples heard"_s,
            u"clock zero error, ms: mean, SD, min .. max"_s,
            u"presentation timer error, ms"_s};
}

QStringList cells(const LengthResult &result, const QString &name)
{
    return {name,
            QString::number(result.nPlays),
            QString::number(result.nWhole),
            number(result.heardShare(), 2) + u" %"_s,
            result.zeroError.text(),
            result.timerError.text()};
}

/// What the measurement was made with: names and values.
QList<std::pair<QString, QString>> circumstances(const TimingReport &report)
{
    return {{report.isInput ? u"Input"_s : u"Output"_s, report.device},
            {u"Tokens found"_s, report.isExact ? u"sample by sample"_s : u"by matched filtering"_s},
            {u"Sound server"_s, report.server},
            {u"Its period"_s, periodText(report)},
            {u"Qt"_s, report.machine.qt},
            {u"System"_s, report.machine.system},
            {u"Kernel"_s, report.machine.kernel},
            {u"Processor"_s, report.machine.processor}};
}

QString binText(const HistogramBin &bin)
{
    return QString::asprintf("%+.1f .. %+.1f", bin.from, bin.to);
}

/// The histogram's bars in @p character, one character per play where they are few.
QStringList bars(const QList<HistogramBin> &bins, QChar character)
{
    constexpr int longest = 40;
    int most = longest;
    for (const HistogramBin &bin : bins)
        most = std::max(most, bin.count);
    QStringList texts;
    for (const HistogramBin &bin : bins)
        texts.append(QString(bin.count * longest / most, character));
    return texts;
}

QString explanation(const TimingReport &report)
{
    QString text =
        u"The clock zero error is the time at which the reaction clock starts minus the "
        "end of the token. The presentation timer error is how late a token begins to be "
        "played."_s;
    if (report.isInput)
        text +=
            u" The delays of the sound card, the loudspeaker and the input are part of the clock "
            "zero error, and make it smaller."_s;
    return text;
}

QJsonObject toJson(const Statistics &statistics)
{
    return {{"count"_L1, static_cast<qint64>(statistics.count())},
            {"mean"_L1, statistics.mean()},
            {"sd"_L1, statistics.sd()},
            {"min"_L1, statistics.least()},
            {"max"_L1, statistics.most()}};
}

QJsonObject toJson(const LengthResult &result)
{
    return {{"plays"_L1, result.nPlays},
            {"wholePlays"_L1, result.nWhole},
            {"samplesHeardPercent"_L1, result.heardShare()},
            {"clockZeroError"_L1, toJson(result.zeroError)},
            {"presentationTimerError"_L1, toJson(result.timerError)}};
}

} // namespace

Machine thisMachine()
{
    return {.system = QSysInfo::prettyProductName(),
            .kernel = QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion(),
            .processor = processorModel(),
            .qt = QString::fromLatin1(qVersion())};
}

double LengthResult::heardShare() const
{
    return nSent > 0 ? 100 * static_cast<double>(nHeard) / static_cast<double>(nSent) : 0;
}

void TimingReport::add(const PlayResult &result)
{
    auto place = std::find_if(lengths.begin(), lengths.end(), [&](const LengthResult &other) {
        return other.length >= result.length;
    });
    if (place == lengths.end() || place->length != result.length)
        place = lengths.insert(place, {.length = result.length});
    addTo(*place, result);
    addTo(all, result);
    blocks.insert(std::upper_bound(blocks.begin(), blocks.end(), result.block), result.block);
}

QString periodText(const TimingReport &report)
{
    const qint64 block = blockSize(report);
    QString size =
        u"%1 samples (%2 ms)"_s.arg(block).arg(number(milliseconds(static_cast<double>(block))));
    if (block == 0)
        return u"unknown"_s;
    if (block > longestHiddenPeriod)
        return size;
    if (block == longestHiddenPeriod)
        return u"at most %1; the program cannot tell shorter ones apart"_s.arg(size);
    return u"unknown; the server takes %1 at a time"_s.arg(size);
}

QString limitsText(const TimingReport &report)
{
    const QString mean = report.isInput ? u"of at most +%1 ms"_s : u"within %1 ms of zero"_s;
    return u"The limits are: every sample heard, a mean clock zero error %1, and a standard "
           "deviation of at most %2 ms."_s.arg(mean.arg(largestMeanError),
                                               number(largestErrorSd, 0));
}

Verdict verdict(const TimingReport &report)
{
    const LengthResult &all = report.all;
    if (all.zeroError.count() == 0)
        return {false, report.isInput
                           ? u"No token was heard in the recording. Is the microphone at the "
                             "loudspeaker, and is the sound loud enough?"_s
                           : u"No token was heard in the recording of the output."_s};

    const double mean = all.zeroError.mean();
    const double sd = all.zeroError.sd();
    QStringList problems;
    if (all.nWhole < all.nPlays)
        problems.append(u"%1 of %2 tokens were not heard whole."_s.arg(all.nPlays - all.nWhole)
                            .arg(all.nPlays));
    if (mean > largestMeanError || (mean < -largestMeanError && !report.isInput))
        problems.append(u"The reaction clock starts %1 on average, so that reaction times are too "
                        "%2."_s.arg(clockStart(mean), mean > 0 ? u"short"_s : u"long"_s));
    if (sd > largestErrorSd)
        problems.append(
            u"The standard deviation of the clock zero error is %1 ms."_s.arg(number(sd, 2)));
    if (!problems.isEmpty())
        return {false, u"Reaction times are not accurate on this machine as it is now. "_s +
                           problems.join(u' ')};
    QString text = u"Reaction times are accurate on this machine: every %1 of %2 tokens was heard, "
                   "and the reaction clock starts %3 on average (SD %4 ms)."_s.arg(
                       report.isExact ? u"sample"_s : u"part"_s, QString::number(all.nPlays),
                       clockStart(mean), number(sd, 2));
    if (report.isInput)
        text += u" The mean contains the delays of the sound card, the loudspeaker and the input, "
                "which are the same in each trial."_s;
    return {true, text};
}

QString paperText(const TimingReport &report)
{
    const Statistics &error = report.all.zeroError;
    if (error.count() == 0)
        return {};
    const QString with = report.isInput ? u"a recording of the loudspeaker's sound"_s
                                        : u"a recording of the sound server's output"_s;
    const QString text =
        u"Reaction times were measured by Ostrine from the offset of the token to the release of "
        "the response button, with a resolution of 1 ms. Clock zero was verified against %1 on %2, "
        "%3, %4, Qt %5: mean error %6 ms, SD %7 ms over %8 presentations%9."_s;
    return text.arg(
        with, report.machine.processor, report.machine.system, report.server, report.machine.qt,
        withSign(error.mean()), number(error.sd()), QString::number(error.count()),
        report.isInput ? u", including the delays of the sound card, the loudspeaker and "
                         "the microphone"_s
                       : QString());
}

QList<HistogramBin> histogram(std::span<const double> values)
{
    constexpr int most = 15;
    if (values.empty())
        return {};
    const auto [least, largest] = std::minmax_element(values.begin(), values.end());
    // Widths are counted in tenths, so that the limits have no errors of rounding.
    qint64 tenths = 1;
    const auto index = [&tenths](double value) {
        return static_cast<qint64>(std::floor(value * 10 / static_cast<double>(tenths)));
    };
    for (int step = 0; index(*largest) - index(*least) >= most; ++step)
        tenths = step % 3 == 1 ? tenths / 2 * 5 : tenths * 2;

    const qint64 first = index(*least);
    QList<HistogramBin> bins(index(*largest) - first + 1);
    for (qsizetype i = 0; i < bins.size(); ++i) {
        bins[i].from = static_cast<double>((first + i) * tenths) / 10;
        bins[i].to = static_cast<double>((first + i + 1) * tenths) / 10;
    }
    for (const double value : values)
        ++bins[index(value) - first].count;
    return bins;
}

QString durationText(qsizetype length)
{
    const double duration = milliseconds(static_cast<double>(length));
    return number(duration, std::abs(duration - std::round(duration)) < 0.05 ? 0 : 1) + u" ms"_s;
}

QList<QStringList> table(const TimingReport &report)
{
    QList<QStringList> rows = {headings()};
    for (const LengthResult &result : report.lengths)
        rows.append(cells(result, durationText(result.length)));
    rows.append(cells(report.all, u"all"_s));
    return rows;
}

QString toText(const TimingReport &report)
{
    const QList<QStringList> rows = table(report);
    QString text;
    for (const QStringList &row : rows) {
        for (qsizetype column = 0; column < row.size(); ++column) {
            qsizetype width = 0;
            for (const QStringList &other : rows)
                width = std::max(width, other.at(column).size());
            const bool isLast = column + 1 == row.size();
            text += isLast ? row.at(column) : row.at(column).leftJustified(width + 2);
        }
        text += u'\n';
    }
    text += u'\n' + explanation(report) + u"\n\nClock zero error, ms:\n"_s;
    const QList<HistogramBin> bins = histogram(report.all.zeroError.values());
    const QStringList hashes = bars(bins, u'#');
    for (qsizetype i = 0; i < bins.size(); ++i)
        text += u"%1  %2 %3\n"_s.arg(binText(bins.at(i)), 20)
                    .arg(bins.at(i).count, 4)
                    .arg(hashes.at(i));
    text += u'\n';
    for (const auto &[name, value] : circumstances(report))
        text += u"%1 %2\n"_s.arg(name + u':', -14).arg(value);
    text += u'\n' + verdict(report).text + u' ' + limitsText(report) + u'\n';
    const QString paper = paperText(report);
    if (!paper.isEmpty())
        text += u"\nFor a paper:\n"_s + paper + u'\n';
    return text;
}

QJsonObject toJson(const TimingReport &report)
{
    QJsonArray lengths;
    for (const LengthResult &result : report.lengths) {
        QJsonObject object = toJson(result);
        object.insert("samples"_L1, static_cast<qint64>(result.length));
        object.insert("milliseconds"_L1, milliseconds(static_cast<double>(result.length)));
        lengths.append(object);
    }
    QJsonArray bins;
    for (const HistogramBin &bin : histogram(report.all.zeroError.values()))
        bins.append(QJsonObject{{"from"_L1, bin.from}, {"to"_L1, bin.to}, {"count"_L1, bin.count}});
    const Verdict result = verdict(report);
    return {{report.isInput ? "input"_L1 : "output"_L1, report.device},
            {"foundSampleBySample"_L1, report.isExact},
            {"soundServer"_L1, report.server},
            {"soundServerPeriod"_L1, periodText(report)},
            {"qt"_L1, report.machine.qt},
            {"system"_L1, report.machine.system},
            {"kernel"_L1, report.machine.kernel},
            {"processor"_L1, report.machine.processor},
            {"tokens"_L1, lengths},
            {"all"_L1, toJson(report.all)},
            {"clockZeroErrorHistogram"_L1, bins},
            {"isGood"_L1, result.isGood},
            {"verdict"_L1, result.text},
            {"limits"_L1, limitsText(report)},
            {"paper"_L1, paperText(report)}};
}

QString toHtml(const TimingReport &report)
{
    const auto paragraph = [](const QString &text) {
        return u"<p>%1</p>\n"_s.arg(text.toHtmlEscaped());
    };
    const auto cell = [](const QString &tag, const QString &text) {
        return u"<%1 align=\"left\">%2</%1>"_s.arg(tag, text.toHtmlEscaped());
    };
    const auto openTable = u"<table border=\"1\" cellspacing=\"0\" cellpadding=\"4\">\n"_s;

    QString html = u"<h1>Timing of tokens and reaction times</h1>\n"_s;
    html += paragraph(verdict(report).text + u' ' + limitsText(report));
    html += openTable;
    const QList<QStringList> rows = table(report);
    for (const QStringList &row : rows) {
        html += u"<tr>"_s;
        for (const QString &text : row)
            html += cell(&row == &rows.constFirst() ? u"th"_s : u"td"_s, text);
        html += u"</tr>\n"_s;
    }
    html += u"</table>\n"_s + paragraph(explanation(report));

    html += u"<h2>Clock zero error</h2>\n"_s + openTable + u"<tr>"_s + cell(u"th"_s, u"ms"_s) +
            cell(u"th"_s, u"plays"_s) + cell(u"th"_s, QString()) + u"</tr>\n"_s;
    const QList<HistogramBin> bins = histogram(report.all.zeroError.values());
    const QStringList blocks = bars(bins, QChar(0x2588));
    for (qsizetype i = 0; i < bins.size(); ++i)
        html += u"<tr>"_s + cell(u"td"_s, binText(bins.at(i))) +
                cell(u"td"_s, QString::number(bins.at(i).count)) + cell(u"td"_s, blocks.at(i)) +
                u"</tr>\n"_s;
    html += u"</table>\n<h2>Measured with</h2>\n"_s + openTable;
    for (const auto &[name, value] : circumstances(report))
        html += u"<tr>"_s + cell(u"th"_s, name) + cell(u"td"_s, value) + u"</tr>\n"_s;
    html += u"</table>\n"_s;
    const QString paper = paperText(report);
    if (!paper.isEmpty())
        html += u"<h2>For a paper</h2>\n"_s + paragraph(paper);
    return html;
}
