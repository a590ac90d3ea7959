// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Record.h"

#include "data/DesktopFolder.h"

Record::Record()
    : filePath(desktopFolder())
{
}
