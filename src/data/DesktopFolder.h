// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The user's desktop folder: the dialog for sounds starts there, and a folder in it is proposed
/// for the results.
QString desktopFolder();
