// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/TokenCategory.h"

class Entry;
class Record;
class QString;

/// Scores one answer: fills the trial's @p entry (category, answer, correctness, reaction time) and
/// adds the answer to the tally of the token's @p record. @p rt is in milliseconds.
void scoreAnswer(Entry &entry, Record &record, Category stimulus, Category answer, double rt);

/// Turns the reaction time sums of @p record into means over all, the correct and the incorrect
/// answers; a sum without answers stays as it is. The means replace the sums, so this must run
/// exactly once per session.
void formMeans(Record &record, const QString &subCode);
