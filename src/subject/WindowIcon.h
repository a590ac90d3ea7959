// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

/// The icon of both windows. It is empty as long as the resources do not contain its file; the
/// windows then have the platform's default icon.
QIcon ostrineIcon();
