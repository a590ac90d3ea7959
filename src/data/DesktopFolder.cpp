#include "data/DesktopFolder.h"

#include <QStandardPaths>

QString desktopFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}
