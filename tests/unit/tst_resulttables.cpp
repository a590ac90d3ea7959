// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Data.h"
#include "data/ResultTables.h"
#include "support/ParametersText.h"

#include <QBuffer>
#include <QFileInfo>
#include <QLocale>
#include <QTest>
#include <QTextStream>

#include <functional>

namespace {

/// The bytes that @p write puts into a file.
QByteArray written(const std::function<void(QTextStream &)> &write)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    write(stream);
    stream.flush();
    return buffer.data();
}

QByteArray recordsFile(const QList<Record> &records, qsizetype nEntries)
{
    return written([&](QTextStream &stream) { writeRecordsTable(stream, records, nEntries); });
}

QByteArray entriesFile(const QList<Entry> &entries)
{
    return written([&](QTextStream &stream) { writeEntriesTable(stream, entries); });
}

QByteArray parametersFile(const Data &data)
{
    return written([&](QTextStream &stream) { writeParameters(stream, data); });
}

Record record(const QString &filename, int nMother, int nStranger, double rt, double rtCorrect,
              double rtIncorrect)
{
    Record result;
    result.filename = filename;
    result.stim = "mother";
    result.nMother = nMother;
    result.nStranger = nStranger;
    result.rt = rt;
    result.rt_correct = rtCorrect;
    result.rt_incorrect = rtIncorrect;
    return result;
}

Entry entry(const QString &filename, const QString &stim, const QString &resp, double rt)
{
    Entry result;
    result.filename = filename;
    result.stim = stim;
    result.resp = resp;
    result.correctness = stim == resp;
    result.rt = rt;
    return result;
}

} // namespace

class TestResultTables : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theRecordsTableHasAHeaderAndALinePerToken();
    void recordLineEndsGoByTheNumberOfEntries_data();
    void recordLineEndsGoByTheNumberOfEntries();
    void theEntriesTableHasALinePerTrial();
    void aSingleEntryHasNoLineEnd();
    void anEmptyTableHasNoHeader();
    void textsAreWrittenInUtf8WithoutQuotes();
    void numbersHaveSixDigitsInEveryFile_data();
    void numbersHaveSixDigitsInEveryFile();
    void theParametersFileHasItsLinesInOrder();
    void eachParameterIsWrittenOnItsOwnLine();
    void theProposedNameHoldsCodeTypeAndPaddedNumber_data();
    void theProposedNameHoldsCodeTypeAndPaddedNumber();
    void aCompanionIsNamedAfterTheRecordsFile_data();
    void aCompanionIsNamedAfterTheRecordsFile();
};

// A locale with a decimal comma and grouped thousands shows whether the files depend on it.
void TestResultTables::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

// Catches another order of columns, another separator and a changed header.
void TestResultTables::theRecordsTableHasAHeaderAndALinePerToken()
{
    const QList<Record> records = {record("MOV001_01.wav", 3, 1, 800, 700, 1100),
                                   record("MOV002_01.wav", 0, 4, 512.25, 512.25, 0)};
    QCOMPARE(recordsFile(records, 8), "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n"
                                      "MOV001_01.wav\t3\t1\t800\t700\t1100\n"
                                      "MOV002_01.wav\t0\t4\t512.25\t512.25\t0\n");
}

void TestResultTables::recordLineEndsGoByTheNumberOfEntries_data()
{
    QTest::addColumn<int>("nEntries");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray header = "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n";
    const QByteArray a = "a.wav\t0\t0\t0\t0\t0";
    const QByteArray b = "b.wav\t0\t0\t0\t0\t0";
    const QByteArray c = "c.wav\t0\t0\t0\t0\t0";
    QTest::newRow("one presentation each") << 3 << header + a + "\n" + b + "\n" + c;
    QTest::newRow("one entry more") << 4 << header + a + "\n" + b + "\n" + c + "\n";
    QTest::newRow("two presentations each") << 6 << header + a + "\n" + b + "\n" + c + "\n";
    QTest::newRow("fewer entries than records") << 2 << header + a + "\n" + b + c;
    QTest::newRow("one entry") << 1 << header + a + b + c;
    QTest::newRow("no entries") << 0 << header + a + b + c;
}

// Catches the number of records in the place of the number of entries, and an unsigned comparison.
void TestResultTables::recordLineEndsGoByTheNumberOfEntries()
{
    QFETCH(const int, nEntries);
    const QList<Record> records = {record("a.wav", 0, 0, 0, 0, 0), record("b.wav", 0, 0, 0, 0, 0),
                                   record("c.wav", 0, 0, 0, 0, 0)};
    QTEST(recordsFile(records, nEntries), "expected");
}

// Catches another order of columns, "true" for 1 and a line end after the last line.
void TestResultTables::theEntriesTableHasALinePerTrial()
{
    const QList<Entry> entries = {entry("MOV001_01.wav", "mother", "mother", 512),
                                  entry("MOV002_01.wav", "stranger", "mother", 1234.5678), Entry()};
    QCOMPARE(entriesFile(entries), "filename\tstim\tresp\tcorrectness\trt\n"
                                   "MOV001_01.wav\tmother\tmother\t1\t512\n"
                                   "MOV002_01.wav\tstranger\tmother\t0\t1234.57\n"
                                   "\t\t\t0\t0");
}

// Catches a line end after the only line.
void TestResultTables::aSingleEntryHasNoLineEnd()
{
    QCOMPARE(entriesFile({entry("a.wav", "mother", "mother", 1)}),
             "filename\tstim\tresp\tcorrectness\trt\na.wav\tmother\tmother\t1\t1");
}

// Catches a header over an empty table.
void TestResultTables::anEmptyTableHasNoHeader()
{
    QCOMPARE(recordsFile({}, 0), QByteArray());
    QCOMPARE(recordsFile({}, 4), QByteArray());
    QCOMPARE(entriesFile({}), QByteArray());
}

// Catches another encoding, and quotes or escapes around unusual names.
void TestResultTables::textsAreWrittenInUtf8WithoutQuotes()
{
    const QString name = QString::fromUtf8("Mütter \"1\", a;b.wav");
    QCOMPARE(entriesFile({entry(name, "mother", "mother", 1)}),
             "filename\tstim\tresp\tcorrectness\trt\n"
             "M\xC3\xBCtter \"1\", a;b.wav\tmother\tmother\t1\t1");
}

void TestResultTables::numbersHaveSixDigitsInEveryFile_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("zero") << 0.0 << QByteArray("0");
    QTest::newRow("whole") << 48000.0 << QByteArray("48000");
    QTest::newRow("fraction") << 0.25 << QByteArray("0.25");
    QTest::newRow("six digits") << 1234.5678 << QByteArray("1234.57");
    QTest::newRow("rounded up") << 999999.5 << QByteArray("1e+06");
    QTest::newRow("largest fixed") << 999999.0 << QByteArray("999999");
    QTest::newRow("scientific") << 1234567.0 << QByteArray("1.23457e+06");
    QTest::newRow("small") << 0.0001 << QByteArray("0.0001");
    QTest::newRow("smaller") << 0.00001 << QByteArray("1e-05");
    QTest::newRow("repeating") << 2.0 / 3.0 << QByteArray("0.666667");
}

// Catches another notation or precision in any of the three files, and a decimal comma.
void TestResultTables::numbersHaveSixDigitsInEveryFile()
{
    QFETCH(const double, number);
    QFETCH(const QByteArray, expected);

    QCOMPARE(entriesFile({entry("a", "b", "c", number)}).split('\t').last(), expected);
    QCOMPARE(recordsFile({record("a", 0, 0, 0, 0, number)}, 1).split('\t').last(), expected);
    Data data;
    data.fs = number;
    QCOMPARE(parametersFile(data).split('\n').first(), "fs: " + expected);
}

// Catches a missing, renamed or moved line, and a line end after the last.
void TestResultTables::theParametersFileHasItsLinesInOrder()
{
    Data data;
    data.alwaysPlotEntireWaveformFlag = 1;
    data.outputFilePath = "/results/CHD001_practice001.txt";
    data.wavFilePath = "/tokens";
    data.outputFileName = "CHD001_practice001.txt";
    data.outputFileName_entries = "CHD001_practice001_entries.txt";
    data.outputFileName_parameters = "CHD001_practice001_parameters.txt";
    const ParametersText expected = {
        .outputFilePath = "/results/CHD001_practice001.txt",
        .wavFilePath = "/tokens",
        .outputFileName = "CHD001_practice001.txt",
        .outputFileName_entries = "CHD001_practice001_entries.txt",
        .outputFileName_parameters = "CHD001_practice001_parameters.txt",
    };
    QCOMPARE(parametersFile(data), expected.bytes());
}

// Catches a line that writes another field's value: every value differs here.
void TestResultTables::eachParameterIsWrittenOnItsOwnLine()
{
    Data data;
    data.fs = 44100;
    data.alwaysPlotEntireWaveformFlag = 2;
    data.upperFrequencyToPlot = 3500.5;
    data.outputFilePath = "out";
    data.wavFilePath = "in";
    data.subCode = "S7";
    data.outputFileName = "r";
    data.outputFileName_entries = "e";
    data.outputFileName_parameters = "p";
    data.sesTypeNames = {"one"};
    data.sesTypeIndex = 3;
    data.soundTypeNames = {"two", "three", "four"};
    data.soundTypeIndex = 4;
    data.mainParameterNames = {};
    data.mainParameterIndex = 5;
    data.sesNum = 6;
    data.nTimes = 7;
    data.si = 1.5;
    data.threshold = 8.25;
    data.reactionTime = 9.75;
    data.saveData = false;
    data.feedBack = true;
    data.autoPlay = false;
    const ParametersText expected = {
        .fs = "44100",
        .alwaysPlotEntireWaveformFlag = "2",
        .upperFrequencyToPlot = "3500.5",
        .outputFilePath = "out",
        .wavFilePath = "in",
        .subCode = "S7",
        .outputFileName = "r",
        .outputFileName_entries = "e",
        .outputFileName_parameters = "p",
        .sesTypeNames = "one",
        .sesTypeIndex = "3",
        .soundTypeNames = "two, three, four",
        .soundTypeIndex = "4",
        .mainParameterNames = "",
        .mainParameterIndex = "5",
        .sesNum = "6",
        .nTimes = "7",
        .si = "1.5",
        .threshold = "8.25",
        .reactionTime = "9.75",
        .saveData = "0",
        .feedBack = "1",
        .autoPlay = "0",
    };
    QCOMPARE(parametersFile(data), expected.bytes());

    data.feedBack = false;
    data.saveData = true;
    QVERIFY(parametersFile(data).endsWith("saveData: 1\nfeedBack: 0\nautoPlay: 0"));
}

void TestResultTables::theProposedNameHoldsCodeTypeAndPaddedNumber_data()
{
    QTest::addColumn<QString>("subCode");
    QTest::addColumn<int>("sesTypeIndex");
    QTest::addColumn<int>("sesNum");
    QTest::addColumn<QString>("expected");

    QTest::newRow("defaults") << "CHD001" << 0 << 1 << "CHD001_practice001.txt";
    QTest::newRow("experiment") << "CHD001" << 1 << 12 << "CHD001_experiment012.txt";
    QTest::newRow("three digits") << "CHD001" << 0 << 123 << "CHD001_practice123.txt";
    QTest::newRow("not truncated") << "CHD001" << 1 << 1234 << "CHD001_experiment1234.txt";
    QTest::newRow("zero") << "S7" << 0 << 0 << "S7_practice000.txt";
    QTest::newRow("sign is padded like a digit") << "S7" << 0 << -1 << "S7_practice0-1.txt";
    QTest::newRow("empty code") << "" << 0 << 1 << "_practice001.txt";
}

// Catches a number without padding or cut to three digits, and the wrong session type.
void TestResultTables::theProposedNameHoldsCodeTypeAndPaddedNumber()
{
    QFETCH(const QString, subCode);
    QFETCH(const int, sesTypeIndex);
    QFETCH(const int, sesNum);
    Data data;
    data.subCode = subCode;
    data.sesTypeIndex = sesTypeIndex;
    data.sesNum = sesNum;
    QTEST(proposedFileName(data), "expected");
}

void TestResultTables::aCompanionIsNamedAfterTheRecordsFile_data()
{
    QTest::addColumn<QString>("recordsFile");
    QTest::addColumn<QString>("topic");
    QTest::addColumn<QString>("expected");

    QTest::newRow("entries") << "/r/CHD001_practice001.txt"
                             << "entries"
                             << "CHD001_practice001_entries.txt";
    QTest::newRow("parameters") << "/r/CHD001_practice001.txt"
                                << "parameters"
                                << "CHD001_practice001_parameters.txt";
    QTest::newRow("no suffix") << "/r/results"
                               << "entries"
                               << "results_entries.";
    QTest::newRow("two dots") << "/r/a.b.txt"
                              << "entries"
                              << "a.b_entries.txt";
    QTest::newRow("dot in the folder") << "/r.d/results"
                                       << "parameters"
                                       << "results_parameters.";
    QTest::newRow("no name") << ""
                             << "entries"
                             << "_entries.";
}

// Catches a name cut at the first dot, a dropped dot and a folder in the name.
void TestResultTables::aCompanionIsNamedAfterTheRecordsFile()
{
    QFETCH(const QString, recordsFile);
    QFETCH(const QString, topic);
    QTEST(companionFileName(QFileInfo(recordsFile), topic), "expected");
}

QTEST_APPLESS_MAIN(TestResultTables)
#include "tst_resulttables.moc"
