// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokenFindings.h"

#include "app/FieldText.h"
#include "app/PresentationOrder.h"
#include "audio/CWav.h"
#include "audio/TokenSound.h"
#include "tools/Command.h"
#include "tools/SoundMeasures.h"

#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

const auto notPresented = u"A session would play the token before it in its place."_s;
const auto saveAgain = u"Save it again as a PCM WAV file of 16 bits with one channel."_s;
const auto clickIsHeard = u"A click would be heard."_s;

QString oneDecimal(double value)
{
    return QString::number(value, 'f', 1);
}

QString levelDistance(double distance)
{
    return u"%1 dB %2"_s.arg(oneDecimal(std::abs(distance)),
                             distance > 0 ? u"above"_s : u"below"_s);
}

} // namespace

QString findingWord(FindingKind kind)
{
    switch (kind) {
    case FindingKind::Refused:
        return u"refused"_s;
    case FindingKind::IncompleteHeader:
        return u"incompleteHeader"_s;
    case FindingKind::ImpossibleHeader:
        return u"impossibleHeader"_s;
    case FindingKind::Truncated:
        return u"truncated"_s;
    case FindingKind::NoSamples:
        return u"noSamples"_s;
    case FindingKind::TooManyChannels:
        return u"tooManyChannels"_s;
    case FindingKind::TooLong:
        return u"tooLong"_s;
    case FindingKind::TooLarge:
        return u"tooLarge"_s;
    case FindingKind::DataNotAtByte44:
        return u"dataNotAtByte44"_s;
    case FindingKind::OtherRate:
        return u"otherRate"_s;
    case FindingKind::Stereo:
        return u"stereo"_s;
    case FindingKind::Clipping:
        return u"clipping"_s;
    case FindingKind::Offset:
        return u"offset"_s;
    case FindingKind::Silent:
        return u"silent"_s;
    case FindingKind::SilenceAtStart:
        return u"silenceAtStart"_s;
    case FindingKind::SilenceAtEnd:
        return u"silenceAtEnd"_s;
    case FindingKind::ClickAtEnd:
        return u"clickAtEnd"_s;
    case FindingKind::LevelApart:
        return u"levelApart"_s;
    case FindingKind::ControlCharacter:
        return u"controlCharacter"_s;
    case FindingKind::SameContent:
        return u"sameContent"_s;
    case FindingKind::NoTokens:
        return u"noTokens"_s;
    case FindingKind::NoTokensOfCategory:
        return u"noTokensOfCategory"_s;
    case FindingKind::NoPresentations:
        return u"noPresentations"_s;
    case FindingKind::TooManyPresentations:
        return u"tooManyPresentations"_s;
    case FindingKind::LevelsApartInCategory:
        return u"levelsApartInCategory"_s;
    case FindingKind::LevelsApartBetweenCategories:
        return u"levelsApartBetweenCategories"_s;
    case FindingKind::UndecodableName:
        return u"undecodableName"_s;
    case FindingKind::SpecialFile:
        return u"specialFile"_s;
    }
    return {};
}

bool preventsPresentation(FindingKind kind)
{
    return kind <= FindingKind::TooLarge;
}

Finding refusedByReader(const QString &message)
{
    return {FindingKind::Refused, u"The reader refuses the file: \"%1\"."_s.arg(message),
            notPresented,
            u"Check that the file may be read, and save it again as a PCM WAV file of 16 bits with "
            "one channel."_s};
}

Finding incompleteHeader(qint64 fileSize)
{
    return {FindingKind::IncompleteHeader,
            u"The file has only %1 bytes, and the header alone has %2."_s.arg(fileSize).arg(
                CWav().GetHeaderSize()),
            notPresented, saveAgain};
}

Finding tooLarge()
{
    return {FindingKind::TooLarge,
            u"To read and draw this token takes more memory than this computer has left."_s,
            notPresented, u"Use a shorter sound, or end other programs."_s};
}

std::optional<Finding> presentationObstacle(const CWav &wav)
{
    if (wav.numChannels == 0 || wav.sampleRate == 0)
        return Finding{FindingKind::ImpossibleHeader,
                       u"The header declares no channel or no sampling rate."_s, notPresented,
                       saveAgain};
    if (wav.dataSize > 0 && wav.bytesRead < wav.dataSize)
        return Finding{
            FindingKind::Truncated,
            u"The header declares %1 bytes of samples, but only %2 follow."_s.arg(wav.dataSize)
                .arg(wav.bytesRead),
            notPresented, u"Copy the file again from its origin, or save the sound again."_s};
    if (wav.numSamples / wav.numChannels == 0)
        return Finding{FindingKind::NoSamples, u"The header declares no samples."_s, notPresented,
                       u"Save the sound again, or remove the file."_s};
    if (!canTakeFirstChannel(wav.numChannels))
        return Finding{FindingKind::TooManyChannels,
                       u"The file has %1 channels."_s.arg(wav.numChannels), notPresented,
                       u"Save it with one channel."_s};
    if (!tokenSize(wav))
        return Finding{FindingKind::TooLong,
                       u"By its header the sound lasts longer than an hour."_s, notPresented,
                       u"Use a shorter sound, or correct the sampling rate."_s};
    return std::nullopt;
}

QList<Finding> headerFindings(const CWav &wav, double sessionRate)
{
    QList<Finding> findings;
    if (std::memcmp(wav.dataHeader, "data", sizeof(wav.dataHeader)) != 0)
        findings.append({FindingKind::DataNotAtByte44,
                         u"The samples do not begin at byte 44: another chunk is there."_s,
                         u"A session would play that chunk as sound."_s,
                         u"Save the file without other chunks before the samples."_s});
    const double speed = sessionRate / wav.sampleRate;
    if (wav.sampleRate != 0 && speed != 1)
        findings.append(
            {FindingKind::OtherRate,
             u"The sampling rate is %1 Hz, not %2 Hz."_s.arg(wav.sampleRate).arg(sessionRate),
             u"A session would play it at %1 % of its speed, and so at another "
             "pitch."_s.arg(oneDecimal(speed * 100)),
             u"Convert it to %1 Hz."_s.arg(sessionRate)});
    if (wav.numChannels == 2)
        findings.append({FindingKind::Stereo, u"The file has two channels."_s,
                         u"A session would play the left one alone."_s,
                         u"Save the wanted channel, or a mix of both, as one channel."_s});
    return findings;
}

QList<Finding> soundFindings(const SoundMeasures &measures, double rate)
{
    if (measures.isSilent())
        return {{FindingKind::Silent, u"No sample reaches %1 dBFS."_s.arg(decibels(silenceLimit)),
                 u"The subject would hear nothing."_s, u"Replace the file, or raise its level."_s}};
    QList<Finding> findings;
    if (measures.clipped > 0)
        findings.append({FindingKind::Clipping, u"%1 samples are clipped."_s.arg(measures.clipped),
                         u"The subject would hear it distorted."_s,
                         u"Record it again at a lower level."_s});
    if (std::abs(measures.mean) > largestOffset)
        findings.append({FindingKind::Offset,
                         u"The samples have an offset of %1 % of full scale."_s.arg(
                             oneDecimal(measures.mean * 100)),
                         clickIsHeard,
                         u"Remove the offset, for instance by a high-pass filter."_s});
    const auto milliseconds = [&](qsizetype n) { return static_cast<double>(n) / rate * 1000; };
    if (const double silence = milliseconds(measures.silentAtStart); silence > longestSilence)
        findings.append({FindingKind::SilenceAtStart,
                         u"The sound begins with %1 ms of silence."_s.arg(oneDecimal(silence)),
                         u"The voice would begin that much later than the token."_s,
                         u"Cut the silence off."_s});
    if (const double silence = milliseconds(measures.silentAtEnd); silence > longestSilence)
        findings.append({FindingKind::SilenceAtEnd,
                         u"The sound ends with %1 ms of silence."_s.arg(oneDecimal(silence)),
                         u"Reaction times count from the end of the file, and would be too short "
                         "by as much."_s,
                         u"Cut the silence off."_s});
    if (std::abs(measures.last) > largestLastSample)
        findings.append({FindingKind::ClickAtEnd,
                         u"The sound breaks off at %1 % of full scale."_s.arg(
                             oneDecimal(std::abs(measures.last) * 100)),
                         clickIsHeard, u"Fade its last milliseconds out."_s});
    return findings;
}

QList<Finding> nameFindings(const QString &fileName)
{
    if (withoutControlCharacters(fileName) == fileName)
        return {};
    return {{FindingKind::ControlCharacter,
             u"The name contains a tab, a line break or another control character."_s,
             u"It would break the tables of the result files."_s, u"Rename the file."_s}};
}

Finding sameContent(const QString &other)
{
    return {FindingKind::SameContent, u"The content is the same as of \"%1\"."_s.arg(other),
            u"The subject would hear one sound under two names."_s,
            u"Replace one of the files, or remove it."_s};
}

Finding levelApart(double distance, Category category)
{
    return {FindingKind::LevelApart,
            u"The level is %1 the median of the tokens of this category (%2)."_s.arg(
                levelDistance(distance), categoryWord(category)),
            u"The subject could know it by its loudness."_s,
            u"Bring the tokens to the same level."_s};
}

Finding noTokens()
{
    return {FindingKind::NoTokens, u"The folder contains no .wav files."_s,
            u"A session would ask for another folder."_s, u"Choose the folder of the tokens."_s};
}

Finding noTokensOfCategory(Category category, const QString &subCode)
{
    return {FindingKind::NoTokensOfCategory,
            u"No token is of the category \"%1\" for the subject code \"%2\"."_s.arg(
                categoryWord(category), subCode),
            u"The same answer would be right each time."_s,
            u"Check the subject code: its last three characters must be in the names of the "
            "mother's tokens, and in no other."_s};
}

Finding noPresentations()
{
    return {FindingKind::NoPresentations, u"Each token is to be presented less than once."_s,
            u"A session would play nothing."_s,
            u"Give a number of times per token of 1 or more."_s};
}

Finding tooManyPresentations(qsizetype nTokens, int nTimes)
{
    return {
        FindingKind::TooManyPresentations,
        u"%1 tokens, %2 times each, are more than %3 presentations."_s.arg(nTokens).arg(nTimes).arg(
            maxPresentations),
        u"A session would refuse the folder."_s,
        u"Use fewer tokens, or present each less often."_s};
}

Finding levelsApartInCategory(Category category, double distance, const QString &loudest,
                              const QString &softest)
{
    return {FindingKind::LevelsApartInCategory,
            u"In the category \"%1\" the level of \"%2\" is %3 that of \"%4\"."_s.arg(
                categoryWord(category), loudest, levelDistance(distance), softest),
            u"The subject could know tokens by their loudness."_s,
            u"Bring the tokens to the same level."_s};
}

Finding levelsApartBetweenCategories(Category louder, double distance)
{
    const Category softer = louder == Category::Mother ? Category::Stranger : Category::Mother;
    return {FindingKind::LevelsApartBetweenCategories,
            u"The median level of the category \"%1\" is %2 that of \"%3\"."_s.arg(
                categoryWord(louder), levelDistance(distance), categoryWord(softer)),
            u"The subject could tell the voices by their loudness."_s,
            u"Bring the tokens to the same level."_s};
}

Finding undecodableName(const QString &name)
{
    return {FindingKind::UndecodableName, u"The name of \"%1\" is not UTF-8."_s.arg(name),
            u"A session would leave it out."_s, u"Rename the file."_s};
}

Finding specialFile(const QString &name)
{
    return {FindingKind::SpecialFile,
            u"\"%1\" is no file, but a pipe, a device, a link to nothing or the like."_s.arg(name),
            u"A session would leave it out."_s, u"Put a file in its place, or remove it."_s};
}
