// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The tally of one sound token: one per .wav file of the chosen folder.
class Record
{
public:
    Record();

    QString filePath;          ///< folder of the token's file
    QString filename;          ///< file name with suffix, as in "MOV001_01.wav"
    QString stim;              ///< category word, empty until the token has been answered
    qint32 nMother = 0;        ///< number of "mother" answers
    qint32 nStranger = 0;      ///< number of "stranger" answers
    double rt = 0.0;           ///< reaction times in ms: the sum, after the session the mean
    double rt_correct = 0.0;   ///< the same over the correct answers
    double rt_incorrect = 0.0; ///< the same over the incorrect answers
};
