// SPDX-License-Identifier: GPL-3.0-or-later
// The text of the three result files, made from any records, entries and parameters, and read back
// by a plain reader: every line, every column, and numbers with the digits that they have in C.

#include "FuzzInput.h"
#include "data/Data.h"
#include "data/ResultTables.h"

#include <QBuffer>
#include <QFileInfo>
#include <QTextStream>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

using namespace Qt::StringLiterals;

namespace {

/// The bytes that @p write puts into a file.
QByteArray written(const std::function<void(QTextStream &)> &write)
{
    QBuffer buffer;
    require(buffer.open(QIODevice::WriteOnly | QIODevice::Text));
    QTextStream stream(&buffer);
    write(stream);
    stream.flush();
    return buffer.data();
}

std::string sixDigits(double value)
{
    char digits[32];
    std::snprintf(digits, sizeof(digits), "%.6g", value);
    return digits;
}

/// Reads a text from its front to its end: what does not stand next in it is a finding.
class TextReader
{
public:
    explicit TextReader(const QByteArray &text)
        : m_rest(text)
    {
    }

    TextReader &word(QByteArrayView expected)
    {
        require(m_rest.startsWith(expected));
        m_rest = m_rest.sliced(expected.size());
        return *this;
    }

    TextReader &text(const QString &expected) { return word(expected.toUtf8()); }

    /// An integer in decimal.
    TextReader &number(int expected) { return word(std::to_string(expected)); }

    /// A number with six significant digits. Zero and "not a number" have no sign.
    TextReader &number(double expected)
    {
        if (std::isnan(expected))
            return word("nan");
        const std::string nearest = sixDigits(expected == 0 ? 0 : expected);
        if (m_rest.startsWith(nearest))
            return word(nearest);
        // Half way between two numbers Qt takes the larger magnitude, and the C library the even
        // one.
        const double shown = std::strtod(m_rest.constData(), nullptr); // a line or column ends it
        require(std::abs(shown - expected) == std::abs(std::stod(nearest) - expected));
        return word(sixDigits(shown));
    }

    bool atEnd() const { return m_rest.isEmpty(); }

private:
    QByteArrayView m_rest;
};

/// A text, in a tame input without what divides the columns and lines.
QString cell(FuzzInput &input, bool tame)
{
    QString text = input.validText();
    if (tame)
        text.remove(u'\t').remove(u'\n');
    return text;
}

void checkRecords(FuzzInput &input, bool tame)
{
    QList<Record> records(input.byte() % 8);
    for (Record &record : records) {
        record.filename = cell(input, tame);
        record.stim = input.validText();
        record.nMother = input.number<qint32>();
        record.nStranger = input.number<qint32>();
        record.rt = input.real();
        record.rt_correct = input.real();
        record.rt_incorrect = input.real();
    }
    const qsizetype nEntries = input.byte() % 16;
    const QByteArray file =
        written([&](QTextStream &stream) { writeRecordsTable(stream, records, nEntries); });

    TextReader reader(file);
    if (!records.isEmpty())
        reader.word("filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n");
    for (qsizetype i = 0; i < records.size(); ++i) {
        const Record &record = records[i];
        reader.text(record.filename).word("\t").number(record.nMother).word("\t");
        reader.number(record.nStranger).word("\t").number(record.rt).word("\t");
        reader.number(record.rt_correct).word("\t").number(record.rt_incorrect);
        if (i + 1 < nEntries)
            reader.word("\n");
    }
    require(reader.atEnd());

    // Every presentation has its entry, so that there are as many entries as records or more.
    if (tame && !records.isEmpty() && nEntries >= records.size()) {
        require(file.count('\n') == records.size() + (nEntries > records.size() ? 1 : 0));
        require(file.count('\t') == 5 * (records.size() + 1));
    }
}

void checkEntries(FuzzInput &input, bool tame)
{
    QList<Entry> entries(input.byte() % 8);
    for (Entry &entry : entries) {
        entry.filename = cell(input, tame);
        entry.stim = cell(input, tame);
        entry.resp = cell(input, tame);
        entry.correctness = input.flag();
        entry.rt = input.real();
    }
    const QByteArray file =
        written([&](QTextStream &stream) { writeEntriesTable(stream, entries); });

    TextReader reader(file);
    if (!entries.isEmpty())
        reader.word("filename\tstim\tresp\tcorrectness\trt\n");
    for (const Entry &entry : entries) {
        reader.text(entry.filename).word("\t").text(entry.stim).word("\t").text(entry.resp);
        reader.word("\t").word(entry.correctness ? "1" : "0").word("\t").number(entry.rt);
        if (&entry != &entries.last())
            reader.word("\n");
    }
    require(reader.atEnd());

    if (tame && !entries.isEmpty()) {
        require(file.count('\n') == entries.size());
        require(file.count('\t') == 4 * (entries.size() + 1));
    }
}

/// Items joined by ", ".
QString joined(const QStringList &items)
{
    QString result;
    for (qsizetype i = 0; i < items.size(); ++i)
        result += (i > 0 ? u", "_s : QString()) + items[i];
    return result;
}

void checkParameters(FuzzInput &input, bool tame)
{
    static const Data defaults; // looks for the user's folders, which takes long
    Data data = defaults;
    for (double *number :
         {&data.fs, &data.upperFrequencyToPlot, &data.si, &data.threshold, &data.reactionTime})
        *number = input.real();
    for (qint32 *number :
         {&data.alwaysPlotEntireWaveformFlag, &data.sesTypeIndex, &data.soundTypeIndex,
          &data.mainParameterIndex, &data.sesNum, &data.nTimes})
        *number = input.number<qint32>();
    for (QString *text :
         {&data.outputFilePath, &data.wavFilePath, &data.subCode, &data.outputFileName,
          &data.outputFileName_entries, &data.outputFileName_parameters})
        *text = cell(input, tame);
    for (QStringList *list : {&data.sesTypeNames, &data.soundTypeNames, &data.mainParameterNames}) {
        list->resize(input.byte() % 4);
        for (QString &item : *list)
            item = cell(input, tame);
    }
    for (bool *value : {&data.saveData, &data.feedBack, &data.autoPlay})
        *value = input.flag();
    const QByteArray file = written([&](QTextStream &stream) { writeParameters(stream, data); });

    TextReader reader(file);
    reader.word("fs: ").number(data.fs);
    reader.word("\nalwaysPlotEntireWaveformFlag: ").number(data.alwaysPlotEntireWaveformFlag);
    reader.word("\nupperFrequencyToPlot: ").number(data.upperFrequencyToPlot);
    reader.word("\noutputFilePath: ").text(data.outputFilePath);
    reader.word("\nwavFilePath: ").text(data.wavFilePath);
    reader.word("\nsubCode: ").text(data.subCode);
    reader.word("\noutputFileName: ").text(data.outputFileName);
    reader.word("\noutputFileName_entries: ").text(data.outputFileName_entries);
    reader.word("\noutputFileName_parameters: ").text(data.outputFileName_parameters);
    reader.word("\nsesTypeNames: ").text(joined(data.sesTypeNames));
    reader.word("\nsesTypeIndex: ").number(data.sesTypeIndex);
    reader.word("\nsoundTypeNames: ").text(joined(data.soundTypeNames));
    reader.word("\nsoundTypeIndex: ").number(data.soundTypeIndex);
    reader.word("\nmainParameterNames: ").text(joined(data.mainParameterNames));
    reader.word("\nmainParameterIndex: ").number(data.mainParameterIndex);
    reader.word("\nsesNum: ").number(data.sesNum);
    reader.word("\nnTimes: ").number(data.nTimes);
    reader.word("\nsi: ").number(data.si);
    reader.word("\nthreshold: ").number(data.threshold);
    reader.word("\nreactionTime: ").number(data.reactionTime);
    reader.word("\nsaveData: ").word(data.saveData ? "1" : "0");
    reader.word("\nfeedBack: ").word(data.feedBack ? "1" : "0");
    reader.word("\nautoPlay: ").word(data.autoPlay ? "1" : "0");
    require(reader.atEnd());
    if (tame)
        require(file.count('\n') == 22);

    // The name proposed: the number in three digits or more, the sign counted as one.
    QString number = QString::fromStdString(std::to_string(data.sesNum));
    while (number.size() < 3)
        number.prepend(u'0');
    QString type;
    if (data.sesTypeIndex >= 0 && data.sesTypeIndex < data.sesTypeNames.size())
        type = data.sesTypeNames[data.sesTypeIndex];
    require(proposedFileName(data) == data.subCode + u'_' + type + number + u".txt"_s);
}

/// The names of the files beside the records file: the topic stands before the last dot.
void checkCompanion(FuzzInput &input)
{
    QString path = input.validText();
    path.remove(QChar()); // no path holds a NUL
    const QString topic = input.validText();
    const QString name = path.sliced(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString base = dot < 0 ? name : name.first(dot);
    const QString suffix = dot < 0 ? QString() : name.sliced(dot + 1);
    require(companionFileName(QFileInfo(path), topic) == base + u'_' + topic + u'.' + suffix);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const bool tame = input.flag();
    checkRecords(input, tame);
    checkEntries(input, tame);
    checkParameters(input, tame);
    checkCompanion(input);
    return 0;
}
