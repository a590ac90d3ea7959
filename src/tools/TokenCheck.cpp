// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokenCheck.h"

#include "app/PresentationOrder.h"
#include "audio/CWav.h"
#include "audio/PresentationDelay.h"
#include "audio/TokenMemory.h"
#include "audio/TokenSound.h"
#include "data/Data.h"
#include "timing/Statistics.h"
#include "tools/ContentHash.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <new>
#include <thread>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Files from this size on are read one at a time, so that two readers do not take twice the
/// memory.
constexpr qint64 largeFile = 16'777'216; // bytes

/// What ordinary tokens need at most. To ask for each of them takes longer than to read it.
constexpr qint64 usualMemory = 268'435'456; // bytes

/// The program's reader with a memory that ends with it.
struct Reader
{
    Reader() = default;
    ~Reader() { std::free(wav.rawData); }
    Q_DISABLE_COPY_MOVE(Reader)

    CWav wav;
};

/// The message of the reader without what leads over to the name of the file.
QString readersMessage(const char *message)
{
    QString text = QString::fromLatin1(message).trimmed();
    while (text.endsWith(u':') || text.endsWith(u'.'))
        text.chop(1);
    return text;
}

/// Reads @p path into @p wav as a session does, and adds to @p token what that tells. There are
/// @p plenty bytes of memory without asking.
void checkFile(const std::string &path, double sessionRate, qint64 plenty, CWav &wav,
               CheckedToken &token)
{
    // A session would take what is missing of a header from the file before; 0 bytes are refused.
    if (token.fileSize > 0 && token.fileSize < wav.GetHeaderSize()) {
        token.findings.append(incompleteHeader(token.fileSize));
        return;
    }
    if (mostTokenMemory(token.fileSize) > plenty && !canTakeMemory(tokenMemory(path))) {
        token.findings.append(tooLarge());
        return;
    }
    if (const char *const refusal = loadQuietly(wav, path)) {
        token.findings.append(refusedByReader(readersMessage(refusal)));
        return;
    }
    token.rate = wav.sampleRate;
    token.bits = wav.bitsPerSample;
    token.channels = wav.numChannels;
    token.findings += headerFindings(wav, sessionRate);
    if (const std::optional<Finding> obstacle = presentationObstacle(wav)) {
        token.findings.prepend(*obstacle);
        return;
    }
    token.duration = tokenSize(wav)->duration;
    token.measures =
        measureSound({wav.samples, wav.numSamples}, wav.numChannels, sampleLimit(token.bits));
    token.findings += soundFindings(token.measures, wav.sampleRate);
}

/// Checks each token by itself, by two threads.
class TokenChecks
{
public:
    TokenChecks(const QList<Record> &records, QList<CheckedToken> &tokens)
        : m_records(records)
        , m_tokens(tokens)
    {
    }

    /// False when @p progress wants to stop.
    bool run(const ProgressFunction &progress)
    {
        const auto nTokens = m_tokens.size();
        if (!progress(0, nTokens))
            return false;
        std::thread second([this] { work([] { return true; }); });
        work([&] { return progress(std::min(m_next.load(), nTokens), nTokens); });
        second.join();
        return !m_isStopped && progress(nTokens, nTokens);
    }

private:
    template<typename GoOn>
    void work(GoOn goOn)
    {
        Reader reader;
        for (qsizetype i = m_next++; i < m_tokens.size() && !m_isStopped; i = m_next++) {
            check(m_records.at(i), reader.wav, m_items[i]);
            if (!goOn())
                m_isStopped = true;
        }
    }

    void check(const Record &record, CWav &wav, CheckedToken &token)
    {
        const QString path = record.filePath + u'/' + record.filename;
        token.fileSize = QFileInfo(path).size();
        const bool isLarge = token.fileSize >= largeFile;
        std::unique_lock lock(m_largeMutex, std::defer_lock);
        if (isLarge)
            lock.lock();
        try {
            checkFile(path.toUtf8().toStdString(), m_sessionRate, m_plenty,
                      isLarge ? m_large.wav : wav, token);
        } catch (const std::bad_alloc &) { // another program has taken it meanwhile
            token.findings = {tooLarge()};
        }
    }

    const QList<Record> &m_records;
    QList<CheckedToken> &m_tokens;
    CheckedToken *const m_items = m_tokens.data(); ///< not shared: threads write to different ones
    const double m_sessionRate = Data().fs;
    const qint64 m_plenty = canTakeMemory(usualMemory) ? usualMemory : 0;
    std::atomic<qsizetype> m_next = 0;
    std::atomic<bool> m_isStopped = false;
    std::mutex m_largeMutex;
    Reader m_large; ///< of large files, used under the mutex
};

/// Finds files of the same content. Only those are read again that are alike in size and sound:
/// to read and hash all of them would take several times as long as the check.
bool checkContents(const QString &folder, QList<CheckedToken> &tokens,
                   const ProgressFunction &progress)
{
    const auto key = [](const CheckedToken &token) {
        const SoundMeasures &sound = token.measures;
        return std::tuple(token.fileSize, sound.nSamples, sound.peak, sound.mean, sound.rms,
                          sound.last);
    };
    std::vector<CheckedToken *> sorted;
    for (CheckedToken &token : tokens) {
        if (token.fileSize > 0)
            sorted.push_back(&token);
    }
    std::ranges::stable_sort(sorted, {}, [&](const CheckedToken *token) { return key(*token); });
    for (auto begin = sorted.begin(); begin != sorted.end();) {
        const auto end = std::find_if(begin, sorted.end(), [&](const CheckedToken *token) {
            return key(*token) != key(**begin);
        });
        QHash<QByteArray, QString> names; // of the first file of each content
        for (auto alike = end - begin > 1 ? begin : end; alike != end; ++alike) {
            if (!progress(tokens.size(), tokens.size()))
                return false;
            CheckedToken &token = **alike;
            const QByteArray hash = contentHash(folder + u'/' + token.name);
            if (names.contains(hash))
                token.findings.append(sameContent(names.value(hash)));
            else if (!hash.isEmpty())
                names.insert(hash, token.name);
        }
        begin = end;
    }
    return true;
}

double level(const CheckedToken &token)
{
    return decibels(token.measures.rms);
}

/// How long a session lasts without the time for the answers.
double sessionLength(const QList<CheckedToken> &tokens, int nTimes)
{
    const Data defaults;
    double once = 0;
    for (const CheckedToken &token : tokens) {
        if (token.isPresented())
            once += std::chrono::duration<double>(presentationDelay(token.duration, defaults.si))
                        .count() +
                    static_cast<double>(token.measures.nSamples) / defaults.fs;
    }
    return once * std::max(nTimes, 0);
}

} // namespace

bool FolderCheck::hasFindings() const
{
    return !findings.isEmpty() ||
           std::ranges::any_of(tokens, [](const CheckedToken &t) { return !t.findings.isEmpty(); });
}

QString folderProblem(const QString &folder)
{
    const QFileInfo info(folder);
    if (!info.exists())
        return u"The folder %1 does not exist."_s.arg(folder);
    if (!info.isDir())
        return u"%1 is not a folder."_s.arg(folder);
    if (!info.isReadable() || !info.isExecutable())
        return u"The folder %1 cannot be read."_s.arg(folder);
    return {};
}

QList<Finding> checkLevels(QList<CheckedToken> &tokens)
{
    QList<Finding> findings;
    std::vector<double> medians;
    for (const Category category : {Category::Mother, Category::Stranger}) {
        std::vector<CheckedToken *> heard;
        for (CheckedToken &token : tokens) {
            if (token.category == category && token.isPresented() && !token.measures.isSilent())
                heard.push_back(&token);
        }
        if (heard.empty())
            continue;
        Statistics levels;
        for (const CheckedToken *token : heard)
            levels.add(level(*token));
        medians.push_back(levels.median());
        for (CheckedToken *token : heard) {
            const double distance = level(*token) - medians.back();
            if (std::abs(distance) > largestLevelDistance)
                token->findings.append(levelApart(distance, category));
        }
        const auto [softest, loudest] =
            std::ranges::minmax(heard, {}, [](const CheckedToken *token) { return level(*token); });
        const double range = level(*loudest) - level(*softest);
        if (range > largestLevelDistance)
            findings.append(levelsApartInCategory(category, range, loudest->name, softest->name));
    }
    if (medians.size() == 2) {
        const double distance = medians.front() - medians.back();
        if (std::abs(distance) > largestLevelDistance)
            findings.append(levelsApartBetweenCategories(
                distance > 0 ? Category::Mother : Category::Stranger, std::abs(distance)));
    }
    return findings;
}

FolderCheck checkFolder(const QString &folder, const QString &subCode, int nTimes,
                        const ProgressFunction &progress)
{
    FolderCheck check;
    check.folder = folder;
    check.subCode = subCode;
    check.nTimes = nTimes;
    const QList<Record> records = tokensIn(folder);
    for (const Record &record : records) {
        CheckedToken token;
        token.number = static_cast<int>(check.tokens.size()) + 1;
        token.name = record.filename;
        token.category = tokenCategory(token.name, subCode);
        (token.category == Category::Mother ? check.nMother : check.nStranger) += 1;
        token.findings = nameFindings(token.name);
        check.tokens.append(token);
    }
    if (!TokenChecks(records, check.tokens).run(progress) ||
        !checkContents(folder, check.tokens, progress))
        return {};

    check.leftOut = leftOutOf(folder, records);
    const auto nTokens = static_cast<int>(check.tokens.size());
    check.nPresentations = presentationCount(nTokens, nTimes);
    check.sessionLength = sessionLength(check.tokens, nTimes);
    if (nTokens == 0)
        check.findings.append(noTokens());
    if (nTokens > 0 && check.nMother == 0)
        check.findings.append(noTokensOfCategory(Category::Mother, subCode));
    if (nTokens > 0 && check.nStranger == 0)
        check.findings.append(noTokensOfCategory(Category::Stranger, subCode));
    if (nTimes < 1)
        check.findings.append(noPresentations());
    if (!check.nPresentations)
        check.findings.append(tooManyPresentations(nTokens, nTimes));
    check.findings += checkLevels(check.tokens);
    for (const LeftOut &entry : std::as_const(check.leftOut)) {
        if (entry.reason == LeftOut::Undecodable)
            check.findings.append(undecodableName(entry.name));
        if (entry.reason == LeftOut::Special)
            check.findings.append(specialFile(entry.name));
    }
    check.isComplete = true;
    return check;
}
