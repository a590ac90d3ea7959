// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The user's desktop folder, where sound folders are looked for and results are proposed.
QString desktopFolder();
