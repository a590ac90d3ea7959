// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/Command.h"

#include <QStringList>

/// Checks the tokens in a folder and prints a table of them, and what is to be said of the folder.
/// @p arguments are those of the command line, the name of the command first.
CommandResult tokensCommand(const QStringList &arguments);
