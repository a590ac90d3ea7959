// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Scoring.h"

#include "data/Entry.h"
#include "data/Record.h"

namespace {

void divideUnlessNone(double &sum, qint32 count)
{
    if (count != 0)
        sum /= count;
}

} // namespace

void scoreAnswer(Entry &entry, Record &record, Category stimulus, Category answer, double rt)
{
    entry.stim = categoryWord(stimulus);
    entry.resp = categoryWord(answer);
    entry.correctness = entry.stim == entry.resp;
    entry.rt = rt;

    record.stim = entry.stim;
    ++(answer == Category::Mother ? record.nMother : record.nStranger);
    record.rt += rt;
    (entry.correctness ? record.rt_correct : record.rt_incorrect) += rt;
}

void formMeans(Record &record, const QString &subCode)
{
    const bool mothers = tokenCategory(record.filename, subCode) == Category::Mother;
    divideUnlessNone(record.rt, record.nMother + record.nStranger);
    divideUnlessNone(record.rt_correct, mothers ? record.nMother : record.nStranger);
    divideUnlessNone(record.rt_incorrect, mothers ? record.nStranger : record.nMother);
}
