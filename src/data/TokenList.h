// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Record.h"

#include <QList>
#include <QString>

/// The tokens in @p folder, in the order of their names whatever the case: every visible file, or
/// link to one, whose last suffix is "wav" in any case. Empty for a folder that cannot be read; an
/// empty name means the working directory.
QList<Record> tokensIn(const QString &folder);
