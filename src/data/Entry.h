// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// One trial: one presentation of a token and the answer to it.
class Entry
{
public:
    Entry();

    QString filePath;         ///< folder of the token's file
    QString filename;         ///< file name of the token presented
    QString stim;             ///< category word of the token
    QString resp;             ///< category word of the answer
    bool correctness = false; ///< whether resp equals stim
    double rt = 0.0;          ///< reaction time in whole ms, from the end of the sound
};
