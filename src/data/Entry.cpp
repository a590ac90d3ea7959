// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Entry.h"

#include "data/DesktopFolder.h"

Entry::Entry()
    : filePath(desktopFolder())
{
}
