// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Entry.h"
#include "data/Record.h"
#include "data/Scoring.h"
#include "support/SessionScores.h"

#include <QRandomGenerator>
#include <QTest>

Q_DECLARE_METATYPE(Category)

class TestScoring : public QObject
{
    Q_OBJECT

private slots:
    void anAnswerIsScoredInItsEntryAndRecord_data();
    void anAnswerIsScoredInItsEntryAndRecord();
    void scoringKeepsTheFileAndReplacesTheScore();
    void answersAddUpInTheRecord();
    void meansDivideEachSumByItsOwnCount_data();
    void meansDivideEachSumByItsOwnCount();
    void meansGoByTheCategoryOfTheScores();
    void randomSessionsAgreeWithASecondWayOfCounting();
};

void TestScoring::anAnswerIsScoredInItsEntryAndRecord_data()
{
    QTest::addColumn<Category>("stimulus");
    QTest::addColumn<Category>("answer");
    QTest::addColumn<QString>("stim");
    QTest::addColumn<QString>("resp");
    QTest::addColumn<bool>("correctness");

    QTest::newRow("mother, right") << Category::Mother << Category::Mother << "mother"
                                   << "mother" << true;
    QTest::newRow("mother, wrong") << Category::Mother << Category::Stranger << "mother"
                                   << "stranger" << false;
    QTest::newRow("stranger, wrong") << Category::Stranger << Category::Mother << "stranger"
                                     << "mother" << false;
    QTest::newRow("stranger, right") << Category::Stranger << Category::Stranger << "stranger"
                                     << "stranger" << true;
}

// Catches exchanged answers, a count on the wrong side and a time in the wrong sum.
void TestScoring::anAnswerIsScoredInItsEntryAndRecord()
{
    QFETCH(const Category, stimulus);
    QFETCH(const Category, answer);
    QFETCH(const QString, stim);
    QFETCH(const bool, correctness);

    Entry entry;
    Record record;
    scoreAnswer(entry, record, stimulus, answer, 512.0);

    QCOMPARE(entry.stim, stim);
    QTEST(entry.resp, "resp");
    QCOMPARE(entry.correctness, correctness);
    QCOMPARE(entry.rt, 512.0);
    QCOMPARE(record.stim, stim);
    QCOMPARE(record.nMother, answer == Category::Mother ? 1 : 0);
    QCOMPARE(record.nStranger, answer == Category::Stranger ? 1 : 0);
    QCOMPARE(record.rt, 512.0);
    QCOMPARE(record.rt_correct, correctness ? 512.0 : 0.0);
    QCOMPARE(record.rt_incorrect, correctness ? 0.0 : 512.0);
}

// Catches a score that overwrites which token was played, or keeps an earlier answer.
void TestScoring::scoringKeepsTheFileAndReplacesTheScore()
{
    Entry entry;
    entry.filePath = "tokens";
    entry.filename = "MOV001_01.wav";
    entry.correctness = true;
    entry.rt = 1.0;
    Record record;
    record.filename = "MOV001_01.wav";
    scoreAnswer(entry, record, Category::Mother, Category::Stranger, 0.0);

    QCOMPARE(entry.filePath, "tokens");
    QCOMPARE(entry.filename, "MOV001_01.wav");
    QCOMPARE(record.filename, "MOV001_01.wav");
    QVERIFY(!entry.correctness);
    QCOMPARE(entry.rt, 0.0);
}

// Catches sums that are replaced in place of added to.
void TestScoring::answersAddUpInTheRecord()
{
    Record record;
    const QList<double> mothers = {500.0, 700.0, 900.0};
    for (const double rt : mothers) {
        Entry entry;
        scoreAnswer(entry, record, Category::Mother, Category::Mother, rt);
    }
    Entry entry;
    scoreAnswer(entry, record, Category::Mother, Category::Stranger, 1100.0);

    QCOMPARE(record.nMother, 3);
    QCOMPARE(record.nStranger, 1);
    QCOMPARE(record.rt, 3200.0);
    QCOMPARE(record.rt_correct, 2100.0);
    QCOMPARE(record.rt_incorrect, 1100.0);
}

void TestScoring::meansDivideEachSumByItsOwnCount_data()
{
    QTest::addColumn<QString>("filename");
    QTest::addColumn<QString>("subCode");
    QTest::addColumn<int>("nMother");
    QTest::addColumn<int>("nStranger");
    QTest::addColumn<QList<double>>("sums");     // rt, rt_correct, rt_incorrect
    QTest::addColumn<QList<double>>("expected"); // likewise

    using Times = QList<double>;
    QTest::newRow("mother, all right")
        << "mother_001.wav"
        << "SUB001" << 3 << 0 << Times{2100, 2100, 0} << Times{700, 700, 0};
    QTest::newRow("stranger, all wrong")
        << "stranger_07.wav"
        << "SUB001" << 3 << 0 << Times{2100, 0, 2100} << Times{700, 0, 700};
    QTest::newRow("mother, all wrong")
        << "mother_001.wav"
        << "SUB001" << 0 << 2 << Times{900, 0, 900} << Times{450, 0, 450};
    QTest::newRow("stranger, all right")
        << "stranger_07.wav"
        << "SUB001" << 0 << 2 << Times{900, 900, 0} << Times{450, 450, 0};
    QTest::newRow("mother, mixed")
        << "mother_001.wav"
        << "SUB001" << 3 << 1 << Times{3200, 2100, 1100} << Times{800, 700, 1100};
    QTest::newRow("stranger, mixed")
        << "stranger_07.wav"
        << "SUB001" << 1 << 4 << Times{3000, 2000, 1000} << Times{600, 500, 1000};
    QTest::newRow("never answered") << "mother_001.wav"
                                    << "SUB001" << 0 << 0 << Times{0, 0, 0} << Times{0, 0, 0};
    QTest::newRow("no count keeps its sum")
        << "mother_001.wav"
        << "SUB001" << 0 << 0 << Times{7, 8, 9} << Times{7, 8, 9};
    QTest::newRow("empty code makes a mother's")
        << "stranger_07.wav"
        << "" << 2 << 4 << Times{1200, 400, 800} << Times{200, 200, 200};
    QTest::newRow("short code, whole")
        << "xAB.wav"
        << "AB" << 2 << 4 << Times{1200, 400, 800} << Times{200, 200, 200};
    QTest::newRow("case differs") << "xab.wav"
                                  << "AB" << 2 << 4 << Times{1200, 800, 400}
                                  << Times{200, 200, 200};
    QTest::newRow("mean is not whole")
        << "mother_001.wav"
        << "SUB001" << 2 << 0 << Times{1001, 1001, 0} << Times{500.5, 500.5, 0};
}

// Catches a division by the other count, an integer division and a division by zero.
void TestScoring::meansDivideEachSumByItsOwnCount()
{
    QFETCH(const QString, filename);
    QFETCH(const QString, subCode);
    QFETCH(const QList<double>, sums);
    QFETCH(const int, nMother);
    QFETCH(const int, nStranger);

    Record record;
    record.filename = filename;
    record.nMother = nMother;
    record.nStranger = nStranger;
    record.rt = sums.at(0);
    record.rt_correct = sums.at(1);
    record.rt_incorrect = sums.at(2);
    formMeans(record, subCode);

    QTEST(QList<double>({record.rt, record.rt_correct, record.rt_incorrect}), "expected");
    QCOMPARE(record.nMother, nMother);
    QCOMPARE(record.nStranger, nStranger);
    QCOMPARE(record.filename, filename);
}

// Catches a category rule that differs between the scoring and the means.
void TestScoring::meansGoByTheCategoryOfTheScores()
{
    for (const QString name : {"MOV001_01.wav", "MOV002_01.wav"}) {
        const Category category = tokenCategory(name, "CHD001");
        Record record;
        record.filename = name;
        Entry entry;
        scoreAnswer(entry, record, category, Category::Mother, 400.0);
        scoreAnswer(entry, record, category, Category::Mother, 600.0);
        scoreAnswer(entry, record, category, Category::Stranger, 800.0);
        formMeans(record, "CHD001");

        const bool mothers = category == Category::Mother;
        QCOMPARE(record.rt, 600.0);
        QCOMPARE(record.rt_correct, mothers ? 500.0 : 800.0);
        QCOMPARE(record.rt_incorrect, mothers ? 800.0 : 500.0);
    }
}

// Catches a score that is right for an answer alone and wrong in a session of them, and an oracle
// of sessions that is wrong itself: the same answers are counted in two ways.
void TestScoring::randomSessionsAgreeWithASecondWayOfCounting()
{
    const QStringList names = {"MOV001_01.wav", "MOV001_02.wav", "MOV002_01.wav", "MOV002_02.wav"};
    QRandomGenerator random(1);
    for (int session = 0; session < 200; ++session) {
        QList<Record> records(names.size());
        for (qsizetype token = 0; token < names.size(); ++token)
            records[token].filename = names.at(token);
        SessionScores scores({true, true, false, false});
        const int nTrials = session % 20; // so few that some tokens are never answered
        for (int trial = 0; trial < nTrials; ++trial) {
            const int token = random.bounded(4);
            const bool mother = random.bounded(2) == 0;
            const double rt = random.bounded(1, 3000);
            Entry entry;
            scoreAnswer(entry, records[token], tokenCategory(names.at(token), "CHD001"),
                        mother ? Category::Mother : Category::Stranger, rt);
            scores.add(token, mother, rt);
            QCOMPARE(scoreText(entry), scoreText(scores.entry()));
        }
        for (int token = 0; token < 4; ++token) {
            formMeans(records[token], "CHD001");
            QCOMPARE(scoreText(records.at(token)), scoreText(scores.record(token)));
        }
    }
}

QTEST_APPLESS_MAIN(TestScoring)
#include "tst_scoring.moc"
