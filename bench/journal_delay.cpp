// SPDX-License-Identifier: GPL-3.0-or-later
// Measures what the journal adds to the time between an answer and the next presentation, and how
// soon an answer is on the disk.
//
//   journal_delay [FOLDER]     where to write the journals, by default a temporary folder

#include "data/Journal.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

double microseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::micro>(duration).count();
}

/// A synchronisation of the journal.
struct Synchronised
{
    qint64 size = 0; ///< of the file when it began
    Clock::time_point finished;
};

/// Median, 99th percentile and maximum.
QString summary(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto at = [&](double share) {
        return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
    };
    return QString("%1, %2, %3")
        .arg(at(0.5), 0, 'f', 1)
        .arg(at(0.99), 0, 'f', 1)
        .arg(at(1), 0, 'f', 1);
}

/// Prints a line of the table: for answers that follow each other by @p interval, on a disk that
/// takes @p delay longer to synchronise.
void measure(QTextStream &out, const QString &folder, const QString &name, int nAnswers,
             std::chrono::milliseconds delay, std::chrono::milliseconds interval)
{
    std::mutex mutex;
    std::vector<Synchronised> synchronised;
    std::vector<Clock::time_point> given;
    std::vector<double> added;
    {
        Journal journal(folder, [&](int descriptor) {
            struct stat file = {};
            fstat(descriptor, &file);
            std::this_thread::sleep_for(delay);
            const bool done = fsync(descriptor) == 0;
            const std::lock_guard lock(mutex);
            synchronised.push_back({S_ISREG(file.st_mode) ? file.st_size : 0, Clock::now()});
            return done;
        });
        Data data;
        data.records = QList<Record>(nAnswers);
        data.entries = QList<Entry>(nAnswers);
        QList<qint32> order(nAnswers);
        for (qint32 token = 0; token < nAnswers; ++token) {
            data.records[token].filename = QString("MOV001_%1.wav").arg(token);
            order[token] = token;
        }
        journal.begin(data, order, "");
        std::this_thread::sleep_for(100ms + 3 * delay);
        for (qint32 trial = 0; trial < nAnswers; ++trial) {
            Entry entry = data.entries.at(trial);
            entry.filename = data.records.at(trial).filename;
            entry.stim = entry.resp = "mother";
            const QJsonObject presentation{
                {"tokenEnd", 281.25}, {"clockStart", 282.5}, {"block", 42.67}};
            const Clock::time_point before = Clock::now();
            journal.answer({trial, trial, entry, presentation});
            const Clock::time_point after = Clock::now();
            given.push_back(before);
            added.push_back(microseconds(after - before));
            std::this_thread::sleep_for(interval);
        }
    }
    std::vector<double> until;
    const QStringList journals = QDir(folder).entryList({"*.jsonl"}, QDir::Files, QDir::Name);
    QFile file(QDir(folder).filePath(journals.last()));
    if (!file.open(QIODevice::ReadOnly))
        return;
    file.readLine(); // the head
    for (const Clock::time_point &begin : given) {
        file.readLine();
        const auto first =
            std::find_if(synchronised.begin(), synchronised.end(),
                         [&](const Synchronised &one) { return one.size >= file.pos(); });
        until.push_back(microseconds(first->finished - begin) / 1000);
    }
    out << "| " << name << " | " << nAnswers << " | " << interval.count() << " | " << summary(added)
        << " | " << summary(until) << " |" << Qt::endl;
}

} // namespace

int main(int argc, char *argv[])
{
    QTextStream out(stdout);
    const QTemporaryDir temporary;
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : temporary.path();
    out << "Median, 99th percentile and maximum.\n\n"
        << "| synchronising takes | answers | ms between answers | added to an answer (µs) | "
           "on the disk after (ms) |\n"
        << "|---|---|---|---|---|\n";
    measure(out, folder, "as long as it does", 1000, 0ms, 20ms);
    measure(out, folder, "50 ms longer", 200, 50ms, 100ms);
    measure(out, folder, "500 ms longer", 100, 500ms, 600ms);
    return 0;
}
