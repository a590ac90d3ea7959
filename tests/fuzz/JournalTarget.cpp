// SPDX-License-Identifier: GPL-3.0-or-later
// The journal of a session, read back: any text, and journals that the program's own writer has
// made of a session, whole, torn at any place and with a byte changed.

#include "FuzzInput.h"
#include "data/Journal.h"
#include "data/ResultTables.h"
#include "data/Scoring.h"
#include "data/TokenCategory.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// Equal, or both not a number.
bool same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool same(const Entry &a, const Entry &b)
{
    return a.filename == b.filename && a.filePath == b.filePath && a.stim == b.stim &&
           a.resp == b.resp && a.correctness == b.correctness && same(a.rt, b.rt);
}

bool same(const Record &a, const Record &b)
{
    return a.filename == b.filename && a.filePath == b.filePath && a.stim == b.stim &&
           a.nMother == b.nMother && a.nStranger == b.nStranger && same(a.rt, b.rt) &&
           same(a.rt_correct, b.rt_correct) && same(a.rt_incorrect, b.rt_incorrect);
}

bool same(const JournaledAnswer &a, const JournaledAnswer &b)
{
    return a.trial == b.trial && a.token == b.token && same(a.entry, b.entry) &&
           a.presentation == b.presentation;
}

bool same(const SavedFile &a, const SavedFile &b)
{
    return a.path == b.path && a.sha256 == b.sha256;
}

template<typename Item>
bool same(const QList<Item> &a, const QList<Item> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Item &x, const Item &y) { return same(x, y); });
}

/// The text of the parameters file.
QString parametersText(const Data &data)
{
    QString text;
    QTextStream stream(&text);
    writeParameters(stream, data);
    return text;
}

bool same(const JournaledSession &a, const JournaledSession &b)
{
    return a.version == b.version && a.qtVersion == b.qtVersion && a.output == b.output &&
           a.started == b.started && a.order == b.order && same(a.data.fs, b.data.fs) &&
           same(a.data.si, b.data.si) && parametersText(a.data) == parametersText(b.data) &&
           same(a.data.records, b.data.records) && same(a.data.entries, b.data.entries) &&
           same(a.answers, b.answers) && a.end == b.end && same(a.saves, b.saves);
}

/// Scores the answers of @p session once more, and requires the same entries and tallies and, if
/// @p meansToo, the same means.
void checkScores(const JournaledSession &session, bool meansToo)
{
    const Data &data = session.data;
    QList<Entry> entries = data.entries;
    QList<Record> scored(data.records.size());
    for (const JournaledAnswer &answer : session.answers) {
        require(answer.trial >= 0 && answer.trial < entries.size());
        require(answer.token >= 0 && answer.token < scored.size());
        const Entry &given = answer.entry;
        require(given.stim == u"mother"_s || given.stim == u"stranger"_s);
        require(given.resp == u"mother"_s || given.resp == u"stranger"_s);
        require(given.correctness == (given.stim == given.resp));
        entries[answer.trial] = given;
        Record &record = scored[answer.token];
        ++(given.resp == u"mother"_s ? record.nMother : record.nStranger);
        record.rt += given.rt;
        (given.correctness ? record.rt_correct : record.rt_incorrect) += given.rt;
    }
    require(same(entries, data.entries));

    for (qsizetype token = 0; token < scored.size(); ++token) {
        const Record &record = data.records[token];
        const Record &sum = scored[token];
        require(record.nMother == sum.nMother && record.nStranger == sum.nStranger);
        const bool mothers = record.filename.contains(data.subCode.right(3));
        const int nCorrect = mothers ? sum.nMother : sum.nStranger;
        const int nAnswers = sum.nMother + sum.nStranger;
        require(!meansToo ||
                (same(record.rt, sum.rt / std::max(1, nAnswers)) &&
                 same(record.rt_correct, sum.rt_correct / std::max(1, nCorrect)) &&
                 same(record.rt_incorrect, sum.rt_incorrect / std::max(1, nAnswers - nCorrect))));
    }
}

/// What holds for every session that was read, whatever it was read from.
void checkSession(const JournaledSession &session, bool meansToo)
{
    const Data &data = session.data;
    for (const qint32 token : session.order)
        require(token >= 0 && token < data.records.size());
    require(data.entries.size() <= session.order.size());
    if (session.end == SessionEnd::Finished)
        require(data.entries.size() == session.order.size());
    checkScores(session, meansToo);

    // The result files can be written.
    QString text;
    QTextStream stream(&text);
    writeRecordsTable(stream, data.records, session.order.size());
    require(text.isEmpty() == data.records.isEmpty());
    text.clear();
    writeEntriesTable(stream, data.entries);
    require(text.isEmpty() == data.entries.isEmpty());
    require(parametersText(data).contains(u"\nautoPlay: "_s));
}

/// Reads @p journal. If @p meansToo, its records must have the means of its answers: a session that
/// goes on behind its end replaces means by means of them.
std::optional<JournaledSession> readChecked(const QByteArray &journal, bool meansToo)
{
    const std::optional<JournaledSession> session = readJournal(journal);
    if (session)
        checkSession(*session, meansToo);
    return session;
}

/// Any text, whole and torn.
void readText(FuzzInput &input)
{
    const auto cut = input.number<std::uint16_t>();
    const QByteArray journal = input.rest();
    // Without the word, which may be spelled by escapes, a session has no end.
    const bool meansToo = !journal.contains("finished") && !journal.contains("\\u");
    const std::optional<JournaledSession> session = readChecked(journal, meansToo);
    readChecked(journal.left(cut), meansToo);

    const std::optional<JournaledSession> torn =
        readChecked(journal + "\n{\"type\":\"answer\",\"tr", meansToo);
    require(session.has_value() == torn.has_value());
    require(!session || same(*session, *torn));
}

double finite(FuzzInput &input)
{
    const double number = input.real();
    return std::isfinite(number) ? number : 0.0;
}

/// A session as it would be held, had it run: the answers that it was given are in its data.
JournaledSession heldSession(FuzzInput &input)
{
    static const Data defaults; // looks for the user's folders, which takes long
    JournaledSession held;
    held.data = defaults;
    held.output = input.validText();
    held.data.fs = finite(input);
    held.data.si = finite(input);
    held.data.subCode = input.validText();
    held.data.wavFilePath = input.validText();
    held.data.sesNum = input.number<qint32>();
    held.data.feedBack = input.flag();
    held.data.records.resize(1 + input.byte() % 6);
    for (Record &record : held.data.records) {
        record.filePath = held.data.wavFilePath;
        record.filename = input.validText();
    }
    held.order.resize(input.byte() % 12);
    for (qint32 &token : held.order) {
        token = static_cast<qint32>(input.byte() % held.data.records.size());
        Entry entry;
        entry.filePath = held.data.wavFilePath;
        entry.filename = held.data.records[token].filename;
        held.data.entries.append(entry);
    }
    return held;
}

void answer(FuzzInput &input, JournaledSession &held, Journal &journal)
{
    const auto trial = static_cast<qint32>(std::min(held.answers.size(), held.order.size() - 1));
    const qint32 token = held.order[trial];
    Entry &entry = held.data.entries[trial];
    Record &record = held.data.records[token];
    const Category response = input.flag() ? Category::Mother : Category::Stranger;
    scoreAnswer(entry, record, tokenCategory(entry.filename, held.data.subCode), response,
                finite(input));
    held.answers.append(
        {trial, token, entry, {{input.validText(), input.number<qint32>() / 1000.0}}});
    journal.answer(held.answers.last());
}

void save(FuzzInput &input, JournaledSession &held, Journal &journal)
{
    QList<SavedFile> files(input.byte() % 4);
    for (SavedFile &file : files)
        file = {input.validText(), input.bytes(input.byte() % 4).toHex()};
    held.saves.append(files);
    journal.save(journal.session(), files);
}

void finish(FuzzInput &input, JournaledSession &held, Journal &journal)
{
    held.end = SessionEnd::Finished;
    held.data.sesNum = input.number<qint32>();
    for (Record &record : held.data.records)
        formMeans(record, held.data.subCode);
    journal.finish(held.data);
    if (input.flag())
        save(input, held, journal);
}

/// Ends a session in one of the ways there are; one that has finished can go on for an answer.
/// Returns how many lines that takes.
int end(FuzzInput &input, JournaledSession &held, Journal &journal)
{
    int nLines = 1;
    const std::uint8_t way = input.byte() % 5;
    if (way <= 1) {
        finish(input, held, journal);
        if (way == 1 && !held.order.isEmpty()) {
            answer(input, held, journal);
            finish(input, held, journal);
            ++nLines;
        }
    } else {
        held.data.entries.resize(held.answers.size());
        for (Record &record : held.data.records)
            formMeans(record, held.data.subCode);
        if (way == 2)
            held.end = SessionEnd::BrokenOff;
        else if (way == 3)
            held.end = SessionEnd::Quit; // and otherwise the program is stopped
    }
    journal.close(held.end.value_or(SessionEnd::Quit));
    return nLines;
}

/// The text of the only journal in @p folder, when all its @p nLines lines have been written. The
/// journal is removed.
QByteArray takeJournal(const QString &folder, qsizetype nLines)
{
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        const QStringList names = QDir(folder).entryList(QDir::Files);
        require(names.size() <= 1);
        QFile file(QDir(folder).filePath(names.value(0)));
        if (!names.isEmpty() && file.open(QIODevice::ReadOnly)) {
            const QByteArray text = file.readAll();
            require(text.count('\n') <= nLines);
            if (text.count('\n') == nLines) {
                require(file.remove());
                return text;
            }
        }
        require(timer.elapsed() < 60'000);
        QThread::usleep(20);
    }
}

/// What the program's writer makes of a session, and the session.
std::pair<QByteArray, JournaledSession> journalOfSession(FuzzInput &input)
{
    // One journal serves all the inputs, since to begin its threads takes long.
    static const QTemporaryDir folder;
    static Journal journal(folder.path(), [](int) { return true; });

    JournaledSession held = heldSession(input);
    journal.begin(held.data, held.order, held.output);
    while (held.answers.size() < held.order.size() && !input.atEnd() && input.flag())
        answer(input, held, journal);
    const int nEndLines = end(input, held, journal);
    const qsizetype nLines = 1 + held.answers.size() + held.saves.size() + nEndLines;
    QByteArray text = takeJournal(folder.path(), nLines);
    if (!held.end) // a program that is stopped does not write the last line
        text.truncate(text.lastIndexOf('\n', -2) + 1);
    return {text, held};
}

/// A session's journal torn behind @p size bytes: what its whole lines tell is there, and no more.
void checkTorn(const QByteArray &journal, const JournaledSession &session, qsizetype size,
               bool meansToo)
{
    const std::optional<JournaledSession> torn = readChecked(journal.first(size), meansToo);
    qsizetype nLines = 0;
    qsizetype nAnswers = 0;
    bool ended = false;
    for (qsizetype start = 0; start < journal.size(); ++nLines) {
        const qsizetype lineEnd = journal.indexOf('\n', start);
        if (lineEnd > size)
            break;
        const QByteArray line = journal.sliced(start, lineEnd - start);
        nAnswers += line.contains("\"type\":\"answer\"");
        ended = ended || line.contains("\"type\":\"end\"");
        start = lineEnd + 1;
    }
    require(torn.has_value() == (nLines > 0));
    if (!torn)
        return;
    require(same(torn->answers, session.answers.first(nAnswers)));
    require(torn->end == (ended ? session.end : std::nullopt));
    require(torn->data.records.size() == session.data.records.size());
}

/// A journal that the program writes gives back what was written, and when it is damaged the rest.
void readWritten(FuzzInput &input)
{
    const auto place = input.number<std::uint16_t>();
    const char damage = input.number<char>();
    auto [journal, held] = journalOfSession(input);
    const bool meansToo = journal.count("\"type\":\"end\"") < 2;
    const std::optional<JournaledSession> session = readChecked(journal, meansToo);
    require(session.has_value());
    require(session->started.isValid());
    held.version = session->version;
    held.qtVersion = qVersion();
    held.started = session->started;
    require(same(held, *session));

    const qsizetype size = place % (journal.size() + 1);
    checkTorn(journal, *session, size, meansToo);
    if (size < journal.size()) {
        journal[size] = damage;
        readChecked(journal, meansToo);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    if (input.byte() == 't') // as in "text"
        readText(input);
    else
        readWritten(input);
    return 0;
}
