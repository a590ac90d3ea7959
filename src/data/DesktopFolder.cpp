// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/DesktopFolder.h"

#include <QStandardPaths>

QString desktopFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}
