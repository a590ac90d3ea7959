// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "data/Scoring.h"
#include "support/WavFile.h"

#include <QDir>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <memory>
#include <numeric>

#include <sys/resource.h>

namespace {

/// A session as the program carries it out, with the journal called where the program does.
class Session
{
public:
    Session(Journal &journal, quint32 seed, int nTokens, int nTimes)
        : m_journal(journal)
        , m_generator(seed)
    {
        data.subCode = "CHD001";
        data.sesNum = 7;
        data.nTimes = nTimes;
        data.si = 0.25;
        data.wavFilePath = "/sounds/of \"Ana\"\t\u00e4";
        for (int token = 0; token < nTokens; ++token) {
            Record record;
            record.filename =
                QString("%1_%2 \u00fc\".wav").arg(token % 2 == 0 ? "MOV001" : "MOV002").arg(token);
            data.records.append(record);
            for (int time = 0; time < nTimes; ++time)
                order.append(token);
        }
        for (qsizetype i = order.size() - 1; i > 0; --i)
            order.swapItemsAt(i, below(static_cast<int>(i) + 1));
        data.entries = QList<Entry>(order.size());
        journal.begin(data, order, "a null output");
    }

    /// Answers the next presentation at random.
    void answer()
    {
        const qint32 token = order.at(trial);
        Entry &entry = data.entries[trial];
        entry.filename = data.records.at(token).filename;
        scoreAnswer(entry, data.records[token], tokenCategory(entry.filename, data.subCode),
                    below(2) == 0 ? Category::Mother : Category::Stranger, below(3000));
        m_journal.answer({trial, token, entry, {{"block", 42.5}}});
        ++trial;
    }

    void finish()
    {
        for (Record &record : data.records)
            formMeans(record, data.subCode);
        m_journal.finish(data);
    }

    Data data;
    QList<qint32> order;
    qint32 trial = 0;

private:
    int below(int end) { return m_generator.bounded(end); }

    Journal &m_journal;
    QRandomGenerator m_generator;
};

/// The three files beside @p recordsPath.
QList<QByteArray> resultFiles(const QString &recordsPath)
{
    QList<QByteArray> files;
    for (const char *topic : {"", "_entries", "_parameters"})
        files.append(contents(QString(recordsPath).replace(".txt", QString(topic) + ".txt")));
    return files;
}

void failOnWarning(const QString &warning)
{
    QFAIL(qPrintable(warning));
}

} // namespace

class TestJournal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aFinishedSessionIsRestoredByteForByte_data();
    void aFinishedSessionIsRestoredByteForByte();
    void anUnfinishedSessionIsRestoredAsFarAsItWent();
    void aTornJournalGivesTheAnswersOfItsWholeLines();
    void aDamagedLineCostsOnlyItself();
    void linesThatMakeNoSenseAreLeftOut_data();
    void linesThatMakeNoSenseAreLeftOut();
    void aTextWithoutAHeadIsNoJournal_data();
    void aTextWithoutAHeadIsNoJournal();
    void theHeadSaysWhatRan();
    void anAnswerKeepsItsPresentation();
    void aSaveIsKeptWithItsSums();

    void theEndIsToldOnce_data();
    void theEndIsToldOnce();
    void aFurtherAnswerAfterTheEndIsReplayed();
    void onlyAnOpenJournalTakesLines();
    void twoJournalsBegunAtOnceAreTwoFiles();
    void onlyTheUserMayReadAJournal();

    void everyLineIsSynchronisedWhole();
    void noLineWaitsForASynchronisation();
    void noCallWaitsForTheDisk();
    void whatCouldNotBeWrittenComesWithTheNextLine();
    void aFullDiskTearsNoLine();
    void aJournalThatCannotBeWrittenIsToldOnce();

private:
    QString folder() const { return m_folder->filePath("a/sessions"); }
    QStringList journals() const { return QDir(folder()).entryList(QDir::Files, QDir::Name); }
    QByteArray text(int index = 0) const { return contents(folder() + '/' + journals().at(index)); }
    std::optional<JournaledSession> journaled(int index = 0) const
    {
        return readJournal(text(index));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestJournal::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void TestJournal::aFinishedSessionIsRestoredByteForByte_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<int>("nTimes");
    for (int nTokens : {1, 3, 10}) {
        for (int nTimes : {1, 2, 5})
            QTest::addRow("%d tokens, %d times", nTokens, nTimes) << nTokens << nTimes;
    }
}

// Catches a field that is lost or changed on the way, another order of the answers, and sums in the
// place of means: in each of 5 sessions by chance.
void TestJournal::aFinishedSessionIsRestoredByteForByte()
{
    QFETCH(int, nTokens);
    QFETCH(int, nTimes);
    const QString path = m_folder->filePath("CHD001.a.txt");
    for (quint32 seed = 0; seed < 5; ++seed) {
        QDir(folder()).removeRecursively();
        Data data;
        {
            Journal journal(folder(), [](int) { return true; });
            Session session(journal, seed, nTokens, nTimes);
            while (session.trial < session.order.size())
                session.answer();
            session.finish();
            data = session.data;
        }
        writeResultFiles(data, data.entries.size(), path, failOnWarning);
        const QList<QByteArray> written = resultFiles(path);
        QVERIFY(QDir(m_folder->path()).remove("CHD001.a.txt"));

        std::optional<JournaledSession> read = journaled();
        QVERIFY(read);
        QCOMPARE(read->end, SessionEnd::Finished);
        writeResultFiles(read->data, read->order.size(), path, failOnWarning);
        QCOMPARE(resultFiles(path), written);
        QVERIFY(written.first().contains("MOV001_0 \xc3\xbc\".wav\t"));
    }
}

// Catches an answer that is left out, entries of presentations that nobody answered, sums in the
// place of means, and a records file whose lines run together because there are fewer answers than
// tokens.
void TestJournal::anUnfinishedSessionIsRestoredAsFarAsItWent()
{
    {
        Journal journal(folder());
        Session session(journal, 1, 2, 5);
        for (int answers = 0; answers < 6; ++answers)
            session.answer();
        journal.close(SessionEnd::BrokenOff);
    }
    std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    QCOMPARE(read->end, SessionEnd::BrokenOff);
    QCOMPARE(read->answers.size(), 6);
    QCOMPARE(read->order.size(), 10);
    const QString path = m_folder->filePath("x.txt");
    writeResultFiles(read->data, read->order.size(), path, failOnWarning);

    const QList<QByteArray> files = resultFiles(path);
    const QList<QByteArray> entries = files.at(1).split('\n');
    QCOMPARE(entries.size(), 7);
    QCOMPARE(files.at(0).count('\n'), 3);
    QHash<QByteArray, QList<double>> times;
    for (int trial = 1; trial <= 6; ++trial) {
        const QList<QByteArray> fields = entries.at(trial).split('\t');
        QCOMPARE(fields.size(), 5);
        times[fields.at(0)].append(fields.at(4).toDouble());
    }
    for (const QByteArray &line : files.at(0).split('\n').mid(1, 2)) {
        const QList<QByteArray> fields = line.split('\t');
        const QList<double> token = times.value(fields.at(0));
        QCOMPARE(fields.at(1).toInt() + fields.at(2).toInt(), token.size());
        const double sum = std::accumulate(token.begin(), token.end(), 0.0);
        QCOMPARE(fields.at(3),
                 QByteArray::number(token.isEmpty() ? 0 : sum / double(token.size())));
    }
}

// Catches an answer lost before the tear, and anything made of the torn line: at every byte.
void TestJournal::aTornJournalGivesTheAnswersOfItsWholeLines()
{
    QList<Entry> given;
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 2);
        while (session.trial < session.order.size())
            session.answer();
        session.finish();
        given = session.data.entries;
    }
    const QByteArray whole = text();
    const qsizetype head = whole.indexOf('\n');
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        const QByteArray torn = whole.first(size);
        // A line is whole as soon as its last brace is there.
        const qsizetype nWhole =
            torn.count('\n') + (torn.endsWith('}') && whole.mid(size, 1) == "\n" ? 1 : 0);
        const std::optional<JournaledSession> read = readJournal(torn);
        QCOMPARE(read.has_value(), size >= head);
        if (!read)
            continue;
        const qsizetype nAnswers = qMin<qsizetype>(nWhole - 1, given.size());
        QCOMPARE(read->answers.size(), nAnswers);
        QCOMPARE(read->data.entries.size(), nAnswers);
        for (qsizetype trial = 0; trial < nAnswers; ++trial) {
            const Entry &entry = read->data.entries.at(trial);
            QCOMPARE(entry.filename, given.at(trial).filename);
            QCOMPARE(entry.resp, given.at(trial).resp);
            QCOMPARE(entry.rt, given.at(trial).rt);
        }
        QCOMPARE(read->end.has_value(), nWhole > 5);
    }
}

// Catches a reader that stops at the first line that it cannot understand.
void TestJournal::aDamagedLineCostsOnlyItself()
{
    {
        Journal journal(folder());
        Session session(journal, 3, 3, 1);
        while (session.trial < session.order.size())
            session.answer();
    }
    QList<QByteArray> lines = text().split('\n');
    lines[2].replace('"', '\x01');
    const std::optional<JournaledSession> read = readJournal(lines.join('\n'));
    QVERIFY(read);
    QCOMPARE(read->answers.size(), 2);
    QCOMPARE(read->answers.at(1).trial, 2);
    QCOMPARE(read->data.entries.size(), 3);
    QCOMPARE(read->data.entries.at(1).resp, "");
}

void TestJournal::linesThatMakeNoSenseAreLeftOut_data()
{
    QTest::addColumn<QByteArray>("line");
    const QByteArray rest = R"(,"filename":"a.wav","rt":1})";
    QTest::newRow("no trial") << R"({"type":"answer","token":0,"stim":"mother","resp":"mother")" +
                                     rest;
    QTest::newRow("trial 0")
        << R"({"type":"answer","trial":0,"token":0,"stim":"mother","resp":"mother")" + rest;
    QTest::newRow("trial beyond")
        << R"({"type":"answer","trial":3,"token":0,"stim":"mother","resp":"mother")" + rest;
    QTest::newRow("lowest trial of all")
        << R"({"type":"answer","trial":-2147483648,"token":0,"stim":"mother","resp":"mother")" +
               rest;
    QTest::newRow("no token") << R"({"type":"answer","trial":1,"stim":"mother","resp":"mother")" +
                                     rest;
    QTest::newRow("token -1")
        << R"({"type":"answer","trial":1,"token":-1,"stim":"mother","resp":"mother")" + rest;
    QTest::newRow("token beyond")
        << R"({"type":"answer","trial":1,"token":2,"stim":"mother","resp":"mother")" + rest;
    QTest::newRow("token of a text")
        << R"({"type":"answer","trial":1,"token":"0","stim":"mother","resp":"mother")" + rest;
    QTest::newRow("another category")
        << R"({"type":"answer","trial":1,"token":0,"stim":"father","resp":"mother")" + rest;
    QTest::newRow("no answer") << R"({"type":"answer","trial":1,"token":0,"stim":"mother")" + rest;
    QTest::newRow("another end") << QByteArray(R"({"type":"end","end":"lost"})");
    QTest::newRow("another type") << QByteArray(R"({"type":"pause"})");
    QTest::newRow("a list") << QByteArray(R"(["type","answer"])");
    QTest::newRow("a second head") << QByteArray(R"({"type":"session","tokens":[],"order":[]})");
}

// Catches an index that is not checked, which would reach beyond a list, and a line that is taken
// for another.
void TestJournal::linesThatMakeNoSenseAreLeftOut()
{
    QFETCH(QByteArray, line);
    const QByteArray head = R"({"type":"session","tokens":["a.wav","b.wav"],"order":[1,0]})";
    const std::optional<JournaledSession> read = readJournal(head + '\n' + line + '\n');
    QVERIFY(read);
    QCOMPARE(read->order, QList<qint32>({1, 0}));
    QCOMPARE(read->answers.size(), 0);
    QCOMPARE(read->data.entries.size(), 0);
    QVERIFY(!read->end);
    QCOMPARE(read->data.records.at(0).nMother, 0);
}

void TestJournal::aTextWithoutAHeadIsNoJournal_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a line break") << QByteArray("\n");
    QTest::newRow("another text") << QByteArray("filename\tnMother\n");
    QTest::newRow("an answer") << QByteArray(R"({"type":"answer","trial":1,"token":0})");
    QTest::newRow("a token that is not there")
        << QByteArray(R"({"type":"session","tokens":["a.wav"],"order":[0,1]})");
    QTest::newRow("a negative token")
        << QByteArray(R"({"type":"session","tokens":["a.wav"],"order":[-1]})");
    QTest::newRow("a token by name")
        << QByteArray(R"({"type":"session","tokens":["a.wav"],"order":["a.wav"]})");
}

// Catches an order that is not checked, which would reach beyond the list of tokens.
void TestJournal::aTextWithoutAHeadIsNoJournal()
{
    QFETCH(QByteArray, text);
    QVERIFY(!readJournal(text));
}

// Catches a missing or wrong field of the head.
void TestJournal::theHeadSaysWhatRan()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 1);
    }
    const QDateTime after = QDateTime::currentDateTimeUtc();
    const QJsonObject head = QJsonDocument::fromJson(text().split('\n').first()).object();
    QCOMPARE(head["format"].toInt(), 1);
    QCOMPARE(head["program"].toString(), "Ostrine");

    const std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    QCOMPARE(read->qtVersion, qVersion());
    QVERIFY(QRegularExpression(R"(^\d+\.\d+\.\d+$)").match(read->version).hasMatch());
    QCOMPARE(read->output, "a null output");
    QVERIFY(read->started >= before.addMSecs(-1));
    QVERIFY(read->started <= after);
    QCOMPARE(read->started.timeSpec(), Qt::UTC);
    QCOMPARE(read->data.subCode, "CHD001");
    QCOMPARE(read->data.records.size(), 2);
    QCOMPARE(read->data.records.at(0).filePath, read->data.wavFilePath);
    QVERIFY(!read->end);
}

// Catches an answer line without its presentation, or with another trial's number.
void TestJournal::anAnswerKeepsItsPresentation()
{
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 1);
        session.answer();
    }
    const QJsonObject line = QJsonDocument::fromJson(text().split('\n').at(1)).object();
    QCOMPARE(line["trial"].toInt(), 1);
    const std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    QCOMPARE(read->answers.at(0).presentation["block"].toDouble(), 42.5);
    QCOMPARE(read->answers.at(0).token, read->order.at(0));
    QCOMPARE(line["correctness"].toBool(), read->answers.at(0).entry.correctness);
}

// Catches a save without its paths or sums, one that takes the place of another, and one that is
// lost because its journal has been closed meanwhile.
void TestJournal::aSaveIsKeptWithItsSums()
{
    {
        Journal journal(folder());
        const Session session(journal, 3, 2, 1);
        journal.save(journal.session(), {{"/a.txt", "00ff"}, {"/a_entries.txt", ""}});
        const Journal::Session saved = journal.session();
        journal.close(SessionEnd::BrokenOff);
        journal.save(saved, {{"/b.txt", "11"}});
    }
    const std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    QCOMPARE(read->saves.size(), 2);
    QCOMPARE(read->saves.at(0).size(), 2);
    QCOMPARE(read->saves.at(0).at(0).path, "/a.txt");
    QCOMPARE(read->saves.at(0).at(0).sha256, "00ff");
    QCOMPARE(read->saves.at(0).at(1).sha256, "");
    QCOMPARE(read->saves.at(1).at(0).path, "/b.txt");
}

void TestJournal::theEndIsToldOnce_data()
{
    QTest::addColumn<bool>("finished");
    QTest::addColumn<SessionEnd>("end");
    QTest::addColumn<SessionEnd>("told");
    QTest::newRow("broken off") << false << SessionEnd::BrokenOff << SessionEnd::BrokenOff;
    QTest::newRow("quit") << false << SessionEnd::Quit << SessionEnd::Quit;
    QTest::newRow("closed when finished") << true << SessionEnd::BrokenOff << SessionEnd::Finished;
    QTest::newRow("quit when finished") << true << SessionEnd::Quit << SessionEnd::Finished;
}

// Catches a session called broken off that has finished, a second end, and lines behind the end.
void TestJournal::theEndIsToldOnce()
{
    QFETCH(bool, finished);
    QFETCH(SessionEnd, end);
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 1);
        session.answer();
        if (finished)
            session.finish();
        journal.close(end);
        journal.close(SessionEnd::Quit);
        session.answer();
    }
    QCOMPARE(text().count('\n'), 3);
    const std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    QTEST(*read->end, "told");
}

// Catches means formed once for all: what an invalid further answer makes of them is in the files,
// too.
void TestJournal::aFurtherAnswerAfterTheEndIsReplayed()
{
    Data data;
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 2);
        while (session.trial < session.order.size())
            session.answer();
        session.finish();
        --session.trial;
        session.answer();
        session.finish();
        data = session.data;
    }
    const std::optional<JournaledSession> read = journaled();
    QVERIFY(read);
    for (int token = 0; token < 2; ++token) {
        QCOMPARE(read->data.records.at(token).rt, data.records.at(token).rt);
        QCOMPARE(read->data.records.at(token).rt_correct, data.records.at(token).rt_correct);
    }
}

// Catches a file made before a session, one for a session that is running already, and lines of one
// session in the journal of another.
void TestJournal::onlyAnOpenJournalTakesLines()
{
    {
        Journal journal(folder());
        journal.answer({});
        journal.finish(Data());
        journal.save(journal.session(), {});
        journal.close(SessionEnd::Quit);
    }
    QVERIFY(!QDir(folder()).exists());
    {
        Journal journal(folder());
        Session first(journal, 1, 1, 1);
        Session sameJournal(journal, 2, 3, 1);
        first.answer();
        journal.close(SessionEnd::BrokenOff);
        Session second(journal, 3, 2, 2);
        second.answer();
        second.answer();
        second.finish();
        journal.close(SessionEnd::Quit);
        const Session third(journal, 4, 1, 1);
        journal.close(SessionEnd::Quit);
    }
    QCOMPARE(journals().size(), 3);
    QCOMPARE(journaled(0)->order.size(), 1);
    QCOMPARE(journaled(0)->answers.size(), 1);
    QCOMPARE(journaled(1)->order.size(), 4);
    QCOMPARE(journaled(1)->answers.size(), 2);
    QVERIFY(journaled(2)->end == SessionEnd::Quit);
}

// Catches a journal that overwrites another one of the same millisecond.
void TestJournal::twoJournalsBegunAtOnceAreTwoFiles()
{
    constexpr int nJournals = 30;
    {
        QList<std::shared_ptr<Journal>> programs;
        for (int i = 0; i < nJournals; ++i)
            programs.append(std::make_shared<Journal>(folder()));
        for (int i = 0; i < nJournals; ++i)
            const Session session(*programs.at(i), 1, i + 1, 1);
    }
    QCOMPARE(journals().size(), nJournals);
    QSet<qsizetype> sizes;
    for (int i = 0; i < nJournals; ++i)
        sizes.insert(journaled(i)->order.size());
    QCOMPARE(sizes.size(), nJournals);
}

// Catches a participant's answers open to every user of the machine.
void TestJournal::onlyTheUserMayReadAJournal()
{
    {
        Journal journal(folder());
        const Session session(journal, 3, 1, 1);
    }
    const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ReadOther |
                        QFileDevice::WriteOther;
    QCOMPARE(QFile::permissions(folder() + '/' + journals().first()) & others,
             QFileDevice::Permissions());
}

// Catches a line that is written but not synchronised, one that is synchronised before all of it is
// written, and a new file whose folder is not synchronised.
void TestJournal::everyLineIsSynchronisedWhole()
{
    QList<QByteArray> synchronised;
    std::atomic_int nSynchronised = 0;
    {
        Journal journal(folder(), [&](int descriptor) {
            const QString path = QFile::symLinkTarget(QString("/proc/self/fd/%1").arg(descriptor));
            synchronised.append(QFileInfo(path).isDir() ? "the folder" : contents(path));
            return ++nSynchronised > 0;
        });
        Session session(journal, 3, 2, 1);
        QTRY_COMPARE(nSynchronised.load(), 2);
        session.answer();
        QTRY_COMPARE(nSynchronised.load(), 3);
        session.answer();
        QTRY_COMPARE(nSynchronised.load(), 4);
        session.finish();
        QTRY_COMPARE(nSynchronised.load(), 5);
        journal.save(journal.session(), {{"/a.txt", "00"}});
    }
    QCOMPARE(synchronised.size(), 6);
    QCOMPARE(synchronised.takeFirst(), "the folder");
    const QList<QByteArray> lines = text().split('\n');
    for (qsizetype nLines = 1; nLines <= synchronised.size(); ++nLines)
        QCOMPARE(synchronised.at(nLines - 1), lines.first(nLines).join('\n') + '\n');
}

// Catches lines that wait to be written until a slow disk has synchronised those before, which
// would be lost with the program; lines that are synchronised one behind another, which would fall
// further behind with every answer; and lines that are left without a synchronisation.
void TestJournal::noLineWaitsForASynchronisation()
{
    QSemaphore disk;
    std::atomic_int nSynchronised = 0;
    {
        Journal journal(folder(), [&](int) {
            disk.tryAcquire(1, 10000); // a test that has failed must end
            return ++nSynchronised > 0;
        });
        Session session(journal, 3, 4, 1);
        QTRY_COMPARE(journals().size(), 1);
        for (int answers = 1; answers <= 3; ++answers) {
            session.answer();
            QTRY_COMPARE(text().count('\n'), 1 + answers);
        }
        QCOMPARE(nSynchronised.load(), 0);
        disk.release(3); // the folder, the head, and the answers together
        QTRY_COMPARE(nSynchronised.load(), 3);
        session.answer();
        QTRY_COMPARE(text().count('\n'), 5);
        disk.release();
    }
    QCOMPARE(nSynchronised.load(), 4);
    QCOMPARE(journaled()->answers.size(), 4);
}

// Catches a call that writes or synchronises by itself: with a disk that does not answer the
// session would wait for ever.
void TestJournal::noCallWaitsForTheDisk()
{
    QSemaphore disk;
    {
        Journal journal(folder(), [&](int) {
            disk.acquire();
            return true;
        });
        Session session(journal, 3, 2, 1);
        session.answer();
        session.answer();
        session.finish();
        journal.save(journal.session(), {});
        journal.close(SessionEnd::Quit);
        QCOMPARE(session.trial, 2);
        disk.release(6);
    }
    QCOMPARE(journaled()->answers.size(), 2);
    QCOMPARE(journaled()->saves.size(), 1);
}

// Catches lines lost for good because the folder was not to be had for a while, and their order.
void TestJournal::whatCouldNotBeWrittenComesWithTheNextLine()
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("^The journal of this session cannot be written"));
    std::atomic_int nSynchronised = 0;
    const QString inTheWay = m_folder->filePath("a");
    QVERIFY(writeFile(inTheWay, "a file where the folder ought to be"));
    {
        Journal journal(folder(), [&](int) { return ++nSynchronised > 0; });
        Session session(journal, 3, 3, 1);
        session.answer();
        session.answer();
        QTest::qWait(100);
        QCOMPARE(nSynchronised.load(), 0);
        QVERIFY(QFile::remove(inTheWay));
        session.answer();
    }
    QCOMPARE(journaled()->answers.size(), 3);
    QCOMPARE(text().count('\n'), 4);
}

// Catches the rest of a line that a full disk has torn, glued to it or lost, when there is room
// again.
void TestJournal::aFullDiskTearsNoLine()
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("^The journal of this session cannot be written"));
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    std::atomic_int nSynchronised = 0;
    {
        Journal journal(folder(), [&](int) { return ++nSynchronised > 0; });
        Session session(journal, 3, 3, 1);
        QTRY_COMPARE(nSynchronised.load(), 2);
        session.answer();
        QTRY_COMPARE(nSynchronised.load(), 3);
        rlimit full = before;
        full.rlim_cur = static_cast<rlim_t>(text().size() + 20);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
        session.answer();
        QTRY_COMPARE(nSynchronised.load(), 4);
        QTRY_VERIFY(!text().endsWith('\n'));
        QCOMPARE(journaled()->answers.size(), 1);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        session.answer();
    }
    std::signal(SIGXFSZ, oldHandler);
    QCOMPARE(journaled()->answers.size(), 3);
    QCOMPARE(text().count('\n'), 4);
}

// Catches a session that goes on without a word, and a warning for each answer.
void TestJournal::aJournalThatCannotBeWrittenIsToldOnce()
{
    static int nWarnings = 0;
    static QString warning;
    nWarnings = 0;
    const auto before = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &, const QString &message) {
            if (type == QtWarningMsg) {
                ++nWarnings;
                warning = message;
            }
        });
    QVERIFY(writeFile(m_folder->filePath("a"), "a file where the folder ought to be"));
    {
        Journal journal(folder());
        Session session(journal, 3, 2, 1);
        session.answer();
        session.answer();
        journal.close(SessionEnd::BrokenOff);
    }
    qInstallMessageHandler(before);
    QCOMPARE(nWarnings, 1);
    QVERIFY2(warning.contains(folder()), qPrintable(warning));
}

QTEST_GUILESS_MAIN(TestJournal)
#include "tst_journal.moc"
