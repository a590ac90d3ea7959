// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Data.h"
#include "data/DesktopFolder.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>
#include <type_traits>

// A count that became 64-bit or a duration that became single would change the result files.
static_assert(std::is_same_v<decltype(Data::nSamples), qint32>);
static_assert(std::is_same_v<decltype(Data::nTimes), qint32>);
static_assert(std::is_same_v<decltype(Data::fs), double>);
static_assert(std::is_same_v<decltype(Record::nMother), qint32>);
static_assert(std::is_same_v<decltype(Record::rt), double>);
static_assert(std::is_same_v<decltype(Entry::rt), double>);
static_assert(std::is_copy_constructible_v<Data> && std::is_copy_assignable_v<Data>);

class TestData : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theDesktopFolderIsTheUsersDesktop();
    void dataStartsWithItsDefaultNumbers();
    void dataStartsWithTheDesktopAndTheDefaultCode();
    void dataStartsWithoutRecordsAndWithAllSwitchesOn();
    void aRecordStartsWithoutAnswers();
    void anEntryStartsUnansweredAndIncorrect();
    void changingACopyLeavesTheOriginalAlone();
    void fieldsAreDeclaredInTheirOrder();

private:
    QTemporaryDir m_home;
    QString m_desktop;
};

// A home of its own makes the desktop folder known beforehand, whatever the user's settings are.
void TestData::initTestCase()
{
    QVERIFY(m_home.isValid());
    QStandardPaths::setTestModeEnabled(true);
    qputenv("HOME", m_home.path().toLocal8Bit());
    m_desktop = m_home.path() + "/Desktop";
}

// Catches another standard folder (documents, home) in the place of the desktop.
void TestData::theDesktopFolderIsTheUsersDesktop()
{
    QCOMPARE(desktopFolder(), m_desktop);
}

// Catches any changed default of a number.
void TestData::dataStartsWithItsDefaultNumbers()
{
    const Data data;
    QCOMPARE(data.fs, 48000.0);
    QCOMPARE(data.soundDuration, 0.25);
    QCOMPARE(data.nSamples, 12000);
    QCOMPARE(data.durationToPlot, 0.25);
    QCOMPARE(data.nPointsToPlot, 12000);
    QCOMPARE(data.alwaysPlotEntireWaveformFlag, 0);
    QCOMPARE(data.upperFrequencyToPlot, 2000.0);
    QCOMPARE(data.nFreqPointsToPlot, 500);
    QCOMPARE(data.sesTypeIndex, 0);
    QCOMPARE(data.soundTypeIndex, 0);
    QCOMPARE(data.mainParameterIndex, 0);
    QCOMPARE(data.sesNum, 1);
    QCOMPARE(data.nTimes, 1);
    QCOMPARE(data.si, 1.0);
    QCOMPARE(data.threshold, 0.0);
    QCOMPARE(data.reactionTime, 0.0);
}

// Catches a path built from another folder, and a file name built from another code.
void TestData::dataStartsWithTheDesktopAndTheDefaultCode()
{
    const Data data;
    QCOMPARE(data.desktopPath, m_desktop);
    QCOMPARE(data.outputFilePath, m_desktop + "/CHD001");
    QCOMPARE(data.wavFilePath, m_desktop);
    QCOMPARE(data.subCode, "CHD001");
    QCOMPARE(data.outputFileName, "CHD001_records.txt");
    QCOMPARE(data.outputFileName_entries, "CHD001_entries.txt");
    QCOMPARE(data.outputFileName_parameters, "CHD001_parameters.txt");
    QCOMPARE(data.wavFileName, "MOV001_01.wav");
}

// Catches names in another order, prefilled lists and a switch that starts off.
void TestData::dataStartsWithoutRecordsAndWithAllSwitchesOn()
{
    const Data data;
    QCOMPARE(data.sesTypeNames, QStringList({"practice", "experiment"}));
    QCOMPARE(data.soundTypeNames, QStringList({".wav files", "reserved"}));
    QCOMPARE(data.mainParameterNames, QStringList({"sound files", "reserved"}));
    QVERIFY(data.records.isEmpty());
    QVERIFY(data.entries.isEmpty());
    QVERIFY(data.saveData);
    QVERIFY(data.feedBack);
    QVERIFY(data.autoPlay);
}

// Catches a tally that does not start at zero, and a category set before the first answer.
void TestData::aRecordStartsWithoutAnswers()
{
    const Record record;
    QCOMPARE(record.filePath, m_desktop);
    QCOMPARE(record.filename, QString());
    QCOMPARE(record.stim, QString());
    QCOMPARE(record.nMother, 0);
    QCOMPARE(record.nStranger, 0);
    QCOMPARE(record.rt, 0.0);
    QCOMPARE(record.rt_correct, 0.0);
    QCOMPARE(record.rt_incorrect, 0.0);
}

// Catches a trial that counts as right, or as answered, before its answer.
void TestData::anEntryStartsUnansweredAndIncorrect()
{
    const Entry entry;
    QCOMPARE(entry.filePath, m_desktop);
    QCOMPARE(entry.filename, QString());
    QCOMPARE(entry.stim, QString());
    QCOMPARE(entry.resp, QString());
    QVERIFY(!entry.correctness);
    QCOMPARE(entry.rt, 0.0);
}

// Catches lists shared by reference between two objects.
void TestData::changingACopyLeavesTheOriginalAlone()
{
    Data original;
    original.records.append(Record());
    Data copy = original;
    copy.records[0].nMother = 3;
    copy.entries.append(Entry());
    copy.subCode = "S7";
    QCOMPARE(original.records.at(0).nMother, 0);
    QVERIFY(original.entries.isEmpty());
    QCOMPARE(original.subCode, "CHD001");
}

// Catches a field that is declared in another place.
void TestData::fieldsAreDeclaredInTheirOrder()
{
    const auto ascending = [](const QList<const void *> &fields) {
        return std::adjacent_find(fields.begin(), fields.end(), std::greater_equal<>()) ==
               fields.end();
    };
    const Data d;
    QVERIFY(ascending({&d.fs,
                       &d.soundDuration,
                       &d.nSamples,
                       &d.durationToPlot,
                       &d.nPointsToPlot,
                       &d.alwaysPlotEntireWaveformFlag,
                       &d.upperFrequencyToPlot,
                       &d.nFreqPointsToPlot,
                       &d.desktopPath,
                       &d.outputFilePath,
                       &d.wavFilePath,
                       &d.subCode,
                       &d.outputFileName,
                       &d.outputFileName_entries,
                       &d.outputFileName_parameters,
                       &d.sesTypeNames,
                       &d.sesTypeIndex,
                       &d.soundTypeNames,
                       &d.soundTypeIndex,
                       &d.mainParameterNames,
                       &d.mainParameterIndex,
                       &d.sesNum,
                       &d.nTimes,
                       &d.si,
                       &d.wavFileName,
                       &d.records,
                       &d.entries,
                       &d.threshold,
                       &d.reactionTime,
                       &d.saveData,
                       &d.feedBack,
                       &d.autoPlay}));
    const Record r;
    QVERIFY(ascending({&r.filePath, &r.filename, &r.stim, &r.nMother, &r.nStranger, &r.rt,
                       &r.rt_correct, &r.rt_incorrect}));
    const Entry e;
    QVERIFY(ascending({&e.filePath, &e.filename, &e.stim, &e.resp, &e.correctness, &e.rt}));
}

QTEST_APPLESS_MAIN(TestData)
#include "tst_data.moc"
