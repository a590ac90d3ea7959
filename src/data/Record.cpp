#include "data/Record.h"

#include "data/DesktopFolder.h"

Record::Record()
    : filePath(desktopFolder())
{
}
