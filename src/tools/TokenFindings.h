// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/TokenCategory.h"

#include <QList>
#include <QString>

#include <optional>

class CWav;
struct SoundMeasures;

/// More than this is found: the silence at either end in ms, the mean and the last sample relative
/// to full scale, and the distance of two levels in dB.
inline constexpr double longestSilence = 100;
inline constexpr double largestOffset = 0.01;
inline constexpr double largestLastSample = 0.01;
inline constexpr double largestLevelDistance = 3;

/// What can be wrong with a token or with a folder of tokens.
enum class FindingKind {
    // A session presents the token before instead.
    Refused,          ///< by the reader
    IncompleteHeader, ///< the file is shorter than a header
    ImpossibleHeader, ///< no channel, or no sampling rate
    Truncated,        ///< fewer samples than the header declares
    NoSamples,
    TooManyChannels,
    TooLong,
    TooLarge, ///< for the memory of this computer

    DataNotAtByte44,
    OtherRate,
    Stereo,
    Clipping,
    Offset,
    Silent,
    SilenceAtStart,
    SilenceAtEnd,
    ClickAtEnd,
    LevelApart,
    ControlCharacter,
    SameContent,

    // Of the folder.
    NoTokens,
    NoTokensOfCategory,
    NoPresentations,
    TooManyPresentations,
    LevelsApartInCategory,
    LevelsApartBetweenCategories,
    UndecodableName,
    SpecialFile,
};

/// The name of @p kind for scripts, as in "dataNotAtByte44".
QString findingWord(FindingKind kind);

/// Whether a session does not present a token of which this was found.
bool preventsPresentation(FindingKind kind);

/// One thing that was found, in whole sentences.
struct Finding
{
    FindingKind kind;
    QString fact;   ///< what is so
    QString effect; ///< what it would do in a session
    QString cure;   ///< what to do about it

    QString text() const { return fact + u' ' + effect + u' ' + cure; }
};

/// The file has been refused with the message @p message of the reader.
Finding refusedByReader(const QString &message);
/// The file has only @p fileSize bytes.
Finding incompleteHeader(qint64 fileSize);
/// There is not enough memory for a session to present the token.
Finding tooLarge();

/// What keeps the experiment from presenting the file that @p wav has loaded, if anything does.
std::optional<Finding> presentationObstacle(const CWav &wav);

/// What else its header tells. The session plays at @p sessionRate Hz.
QList<Finding> headerFindings(const CWav &wav, double sessionRate);

/// What its samples tell, at the file's own sampling rate in Hz.
QList<Finding> soundFindings(const SoundMeasures &measures, double rate);

/// What the name of the file tells.
QList<Finding> nameFindings(const QString &fileName);

/// The token has the same content as the one named @p other.
Finding sameContent(const QString &other);
/// The level of the token is @p distance dB above the median of its category.
Finding levelApart(double distance, Category category);

Finding noTokens();
Finding noTokensOfCategory(Category category, const QString &subCode);
Finding noPresentations();
Finding tooManyPresentations(qsizetype nTokens, int nTimes);
/// In @p category the token @p loudest is @p distance dB louder than @p softest.
Finding levelsApartInCategory(Category category, double distance, const QString &loudest,
                              const QString &softest);
/// The median level of the tokens of @p louder is @p distance dB above that of the others.
Finding levelsApartBetweenCategories(Category louder, double distance);
Finding undecodableName(const QString &name);
Finding specialFile(const QString &name);
