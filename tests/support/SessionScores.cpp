// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SessionScores.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

QString category(bool mother)
{
    return mother ? "mother" : "stranger";
}

/// All digits that distinguish @p number from any other.
QString exact(double number)
{
    return QString::number(number, 'g', 17);
}

double mean(const QList<double> &values)
{
    return values.isEmpty() ? 0.0
                            : std::accumulate(values.begin(), values.end(), 0.0) /
                                  static_cast<double>(values.size());
}

} // namespace

SessionScores::SessionScores(const QList<bool> &isMother)
    : m_isMother(isMother)
{
}

void SessionScores::add(int token, bool mother, double rt)
{
    m_answers.append({token, mother, rt});
}

bool SessionScores::isCorrect(const Answer &answer) const
{
    return answer.mother == m_isMother.at(answer.token);
}

Entry SessionScores::entry() const
{
    const Answer &answer = m_answers.last();
    Entry entry;
    entry.stim = category(m_isMother.at(answer.token));
    entry.resp = category(answer.mother);
    entry.correctness = isCorrect(answer);
    entry.rt = answer.rt;
    return entry;
}

Record SessionScores::record(int token) const
{
    QList<Answer> answers;
    std::copy_if(m_answers.begin(), m_answers.end(), std::back_inserter(answers),
                 [token](const Answer &answer) { return answer.token == token; });
    const auto nGiven = [&](bool mother) {
        return static_cast<int>(
            std::count_if(answers.begin(), answers.end(),
                          [mother](const Answer &answer) { return answer.mother == mother; }));
    };
    const auto meanOf = [&](const std::function<bool(const Answer &)> &counts) {
        QList<double> times;
        for (const Answer &answer : answers) {
            if (counts(answer))
                times.append(answer.rt);
        }
        return mean(times);
    };
    Record record;
    record.stim = answers.isEmpty() ? QString() : category(m_isMother.at(token));
    record.nMother = nGiven(true);
    record.nStranger = nGiven(false);
    record.rt = meanOf([](const Answer &) { return true; });
    record.rt_correct = meanOf([this](const Answer &answer) { return isCorrect(answer); });
    record.rt_incorrect = meanOf([this](const Answer &answer) { return !isCorrect(answer); });
    return record;
}

QString scoreText(const Entry &entry)
{
    return QString("%1 answered by %2, %3, %4 ms")
        .arg(entry.stim, entry.resp, entry.correctness ? "correct" : "incorrect", exact(entry.rt));
}

QString scoreText(const Record &record)
{
    return QString("%1 answered %2 times by mother, %3 times by stranger; %4 ms, correct %5 ms, "
                   "incorrect %6 ms")
        .arg(record.stim)
        .arg(record.nMother)
        .arg(record.nStranger)
        .arg(exact(record.rt), exact(record.rt_correct), exact(record.rt_incorrect));
}
