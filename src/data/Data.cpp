// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Data.h"

#include "data/DesktopFolder.h"

using namespace Qt::StringLiterals;

Data::Data()
    : desktopPath(desktopFolder())
    , outputFilePath(desktopPath + u"/CHD001"_s)
    , wavFilePath(desktopPath)
    , subCode(u"CHD001"_s)
    , outputFileName(subCode + u"_records.txt"_s)
    , outputFileName_entries(subCode + u"_entries.txt"_s)
    , outputFileName_parameters(subCode + u"_parameters.txt"_s)
    , sesTypeNames{u"practice"_s, u"experiment"_s}
    , soundTypeNames{u".wav files"_s, u"reserved"_s}
    , mainParameterNames{u"sound files"_s, u"reserved"_s}
    , wavFileName(u"MOV001_01.wav"_s)
{
}
