#include "data/Entry.h"

#include "data/DesktopFolder.h"

Entry::Entry()
    : filePath(desktopFolder())
{
}
