// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/WindowIcon.h"

#include <QFile>

using namespace Qt::StringLiterals;

QIcon ostrineIcon()
{
    const auto file = u":/TavelLab_icon/Tavel_logo_3D_original.ico"_s;
    // For a file that is not there, Qt would load all its image plug-ins and look what they can
    // read.
    return QFile::exists(file) ? QIcon(file) : QIcon();
}
