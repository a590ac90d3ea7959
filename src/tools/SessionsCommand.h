// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/Command.h"

#include <QStringList>

/// Lists the sessions of this user, restores the result files of one, or deletes its journal.
/// Findings are sessions that need attention and files that are no journals; a restored or deleted
/// session is none. @p arguments are those of the command line, the name of the command first.
CommandResult sessionsCommand(const QStringList &arguments);
