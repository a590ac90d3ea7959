// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/Command.h"

#include <QStringList>

/// "timing": measures when tokens are heard and when the reaction clock starts on this machine, and
/// prints a report. Needs a QApplication. The findings are a verdict that is not good.
CommandResult timingCommand(const QStringList &arguments);
