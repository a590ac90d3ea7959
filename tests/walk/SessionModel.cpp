// SPDX-License-Identifier: GPL-3.0-or-later
#include "walk/SessionModel.h"

#include "support/ParametersText.h"

#include <QFileInfo>

#include <cmath>

namespace {

constexpr int mostPresentations = 1'000'000;

const QString hoverStyle =
    "QPushButton:hover {background-color: rgb(0, 255, 255); border: 1px solid blue;}";

QString pictureStyle(bool correct)
{
    return QString("QPushButton {    background-image: url(:/imageFiles/%1.png);    "
                   "background-repeat: no-repeat;    background-position: center;}"
                   "QPushButton:hover {    background-color: rgb(0, 255, 255);    "
                   "border: 1px solid blue;}")
        .arg(correct ? "correct" : "incorrect");
}

int wholeNumber(const QString &text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok ? number : 0;
}

bool isMothers(const QString &fileName, const QString &subCode)
{
    const QString key = subCode.length() < 4 ? subCode : subCode.mid(subCode.length() - 3);
    return fileName.indexOf(key) >= 0;
}

QString word(bool mother)
{
    return mother ? "mother" : "stranger";
}

QString digits(double value)
{
    return QString::number(value, 'g', 6);
}

QString digits(bool value)
{
    return value ? "1" : "0";
}

} // namespace

SessionModel::SessionModel(const QString &desktop, const QString &silentInterval)
    : siText(silentInterval)
    , wavFilePathText(desktop)
{
    data.desktopPath = desktop;
    data.alwaysPlotEntireWaveformFlag = 1;
    updateOutputFilePath();
    updateOutputFileName();
}

SessionModel::State SessionModel::state() const
{
    if (!subject.visible) {
        if (goEnabled)
            return State::Prepared;
        return timerRuns || stream != Stream::None ? State::BrokenOff : State::Idle;
    }
    if (subject.readyVisible)
        return State::Waiting;
    if (subject.doneVisible)
        return State::Finished;
    if (timerRuns)
        return State::Delay;
    if (stream == Stream::Sounding)
        return State::Playing;
    if (stream == Stream::Dead)
        return State::OutputDead;
    if (subject.enabled && subject.choicesEnabled)
        return State::Answering;
    if (subject.enabled && subject.nextVisible && subject.nextEnabled)
        return State::Feedback;
    return State::Locked;
}

void SessionModel::updateOutputFilePath()
{
    data.outputFilePath = data.desktopPath + "/" + data.subCode;
    outputFilePathText = data.outputFilePath;
}

void SessionModel::updateOutputFileName()
{
    QString number = QString::number(data.sesNum);
    while (number.length() < 3)
        number.prepend('0');
    data.outputFileName =
        data.subCode + "_" + (data.sesTypeIndex == 1 ? "experiment" : "practice") + number + ".txt";
    outputFileNameText = data.outputFileName;
}

void SessionModel::typeSubCode(const QString &text)
{
    subCodeText = text;
    data.subCode = text;
    updateOutputFilePath();
    updateOutputFileName();
}

void SessionModel::typeSesNum(const QString &text)
{
    sesNumText = text;
    data.sesNum = wholeNumber(text);
    updateOutputFileName();
}

void SessionModel::typeNTimes(const QString &text)
{
    nTimesText = text;
}

void SessionModel::toggleSaveData()
{
    saveBox = !saveBox;
    data.saveData = saveBox;
}

void SessionModel::toggleFeedBack()
{
    feedBackBox = !feedBackBox;
    data.feedBack = feedBackBox;
    if (!feedBackBox) {
        autoPlayBox = true;
        data.autoPlay = true;
    }
}

void SessionModel::toggleAutoPlay()
{
    autoPlayBox = !autoPlayBox;
    data.autoPlay = autoPlayBox;
}

void SessionModel::getParameters()
{
    data.sesTypeIndex = sesType;
    data.fs = 48000;
    data.soundDuration = durationText.toDouble() / 1000;
    data.si = siText.toDouble() / 1000;
    data.saveData = saveBox;
    data.wavFilePath = wavFilePathText;
    data.wavFileName = wavFileNameText;
    data.subCode = subCodeText;
    data.sesNum = wholeNumber(sesNumText);
    data.nTimes = wholeNumber(nTimesText);
    data.feedBack = feedBackBox;
    data.autoPlay = autoPlayBox;
    data.outputFilePath = data.desktopPath + "/" + data.subCode;
    data.outputFileName = outputFileNameText;
    data.nSamples = static_cast<int>(std::floor(data.soundDuration * data.fs));
    limitPointsToPlot();
}

/// The whole sound is plotted always.
void SessionModel::limitPointsToPlot()
{
    data.nPointsToPlot = static_cast<int>(std::floor(data.durationToPlot * data.fs));
    if (data.nPointsToPlot != data.nSamples) {
        data.nPointsToPlot = data.nSamples;
        data.durationToPlot = data.nSamples / data.fs;
    }
}

void SessionModel::beginPreparation(SessionType type)
{
    if (sesType != type) {
        sesType = type;
        data.sesTypeIndex = type;
        updateOutputFileName();
    }
    closeJournal(SessionEnd::BrokenOff);
    timerRuns = false;
    stream = Stream::None;
    data.records.clear();
    data.entries.clear();
    sequence.clear();
    trialIndex = 0;
    tokenIndex = 0;
    nTokens = 0;
    getParameters();
    nTimesSeq = data.nTimes;
}

void SessionModel::chooseFolder(const QString &path, const QList<TokenFile> &tokens)
{
    data.wavFilePath = path;
    m_tokens = tokens;
    data.records.clear();
    for (const TokenFile &token : tokens) {
        Record record;
        record.filePath = path;
        record.filename = token.name;
        data.records.append(record);
    }
}

bool SessionModel::tooManyPresentations() const
{
    return data.nTimes > 0 && m_tokens.size() * qint64{data.nTimes} > mostPresentations;
}

QString SessionModel::orderProblem(const QList<int> &order) const
{
    const qsizetype tokens = tooManyPresentations() ? 0 : m_tokens.size();
    const int times = qMax(nTimesSeq, 0);
    if (order.size() != tokens * times)
        return QString("%1 presentations of %2 tokens").arg(order.size()).arg(tokens);
    for (int token = 0; token < tokens; ++token) {
        if (order.count(token) != times)
            return QString("token %1 comes %2 times").arg(token).arg(order.count(token));
    }
    return {};
}

void SessionModel::endPreparation(const QList<int> &order)
{
    if (tooManyPresentations()) {
        m_tokens.clear();
        data.records.clear();
    }
    nTokens = static_cast<int>(m_tokens.size());
    const int nEntries = data.nTimes > 0 ? nTokens * data.nTimes : 0;
    data.entries = QList<Entry>(nEntries);
    if (nTokens > 0) {
        sequence = order;
        genWav();
        motherCounts = QList<double>(nTokens, 0.0);
        showToken();
    }
    experimentEnabled = sesType == ExperimentSession;
    goEnabled = nTokens > 0;
}

/// Prepares the token of the next presentation.
void SessionModel::genWav()
{
    tokenIndex = sequence.isEmpty() ? 0 : sequence.at(trialIndex);
    const TokenFile &token = m_tokens.at(tokenIndex);
    data.wavFilePath = data.records.at(tokenIndex).filePath;
    data.wavFileName = token.name;
    if (trialIndex < data.entries.size()) {
        data.entries[trialIndex].filePath = data.wavFilePath;
        data.entries[trialIndex].filename = token.name;
    }
    if (token.readable) {
        nPoints = token.nPoints;
        m_duration = token.nPoints / token.rate;
        level = token.level;
    } else {
        logged.append(QString("Cannot present \"%1/%2\" - the previous sound is played instead.")
                          .arg(data.wavFilePath, token.name));
    }
    data.nSamples = nPoints;
    data.soundDuration = m_duration;
    durationText = QString::number(m_duration * 1000, 'f', 3);
    limitPointsToPlot();
}

void SessionModel::showToken()
{
    wavFilePathText = data.wavFilePath;
    wavFileNameText = data.wavFileName;
    statusText = QString("%1 %2/%3")
                     .arg(sesType == 1 ? "experiment" : "practice")
                     .arg(trialIndex + 1)
                     .arg(sequence.size());
}

void SessionModel::prepareNext()
{
    genWav();
    showToken();
}

void SessionModel::go()
{
    mainEnabled = false;
    getParameters();
    subject = Subject();
    subject.exists = true;
    subject.visible = true;
    subject.feedBack = data.feedBack;
    subject.autoPlay = data.autoPlay;
    subject.subCode = data.subCode;
    outputAwake = true;
    sent.append("deliverFeedBackStatus " + digits(data.feedBack));
    sent.append("deliverAutoPlayStatus " + digits(data.autoPlay));
    sent.append("deliverSubCode " + data.subCode);
}

void SessionModel::schedule()
{
    if (sequence.size() > trialIndex) {
        timerRuns = true;
        timerInterval = static_cast<int>((data.soundDuration + data.si) * 1000);
    }
    ++trialIndex;
}

void SessionModel::deliverWavFileName()
{
    sent.append("deliverWavFileName " + data.wavFileName);
    subject.wavFileName = data.wavFileName;
}

void SessionModel::lockSubject()
{
    subject.enabled = false;
    subject.choicesEnabled = false;
}

void SessionModel::pressReady()
{
    lockSubject();
    subject.choicesVisible = true;
    subject.readyVisible = false;
    subject.nextVisible = subject.feedBack;
    subject.doneVisible = false;
    respond(0, 0);
}

void SessionModel::pressNext()
{
    lockSubject();
    subject.choicesVisible = true;
    subject.readyVisible = false;
    subject.nextVisible = true;
    subject.doneVisible = false;
    respond(5, 0);
}

void SessionModel::pressAnswer(bool mother, double rt)
{
    subject.choicesEnabled = false;
    subject.nextEnabled = true;
    if (subject.feedBack) {
        const bool correct = isMothers(subject.wavFileName, subject.subCode) == mother;
        (mother ? subject.motherStyle : subject.strangerStyle) = pictureStyle(correct);
    }
    respond(mother ? 2 : 4, rt);
}

bool SessionModel::scores() const
{
    return trialIndex > 0 && trialIndex <= data.entries.size();
}

SessionModel::After SessionModel::after(int code) const
{
    switch (code) {
    case 0:
        return After::Nothing;
    case 2:
    case 4:
        return scores() && trialIndex >= sequence.size() && data.saveData ? After::Save
                                                                          : After::Nothing;
    case 5:
        return trialIndex >= sequence.size() && data.saveData ? After::Save : After::Nothing;
    default:
        return After::Warning;
    }
}

void SessionModel::respond(int code, double rt)
{
    playCount = 0;
    if (code == 0) {
        logged.append("Test just started");
        getParameters();
        deliverWavFileName();
        logged.append('"' + data.wavFileName + '"');
        schedule();
        if (!m_journalOpen)
            journals.append({sequence, {}, {}});
        m_journalOpen = true;
    } else if (code == 5 && trialIndex >= sequence.size()) {
        finish();
    } else if (code == 5) {
        prepareNext();
        deliverWavFileName();
        logged.append('"' + data.wavFileName + '"');
        schedule();
    } else if ((code == 2 || code == 4) && scores()) {
        logged.append(QString("response:  %1").arg(code));
        score(code == 2, rt);
        if (trialIndex >= sequence.size()) {
            finish();
        } else if (!data.feedBack || data.autoPlay) {
            prepareNext();
            getParameters();
            deliverWavFileName();
            schedule();
        }
    }
}

void SessionModel::score(bool mother, double rt)
{
    const bool mothers = isMothers(data.wavFileName, data.subCode);
    const bool correct = mothers == mother;
    Entry &entry = data.entries[trialIndex - 1];
    entry.stim = word(mothers);
    entry.resp = word(mother);
    entry.correctness = correct;
    entry.rt = rt;
    Record &record = data.records[tokenIndex];
    record.stim = word(mothers);
    if (mother) {
        record.nMother += 1;
        motherCounts[tokenIndex] = record.nMother;
    } else {
        record.nStranger += 1;
    }
    record.rt += rt;
    if (correct)
        record.rt_correct += rt;
    else
        record.rt_incorrect += rt;
    if (m_journalOpen)
        journals.last().answers.append({trialIndex - 1, tokenIndex, entry});
}

/// The sums become means, and the subject is told.
void SessionModel::finish()
{
    for (Record &record : data.records) {
        const bool mothers = isMothers(record.filename, data.subCode);
        const int nAll = record.nMother + record.nStranger;
        const int nCorrect = mothers ? record.nMother : record.nStranger;
        const int nIncorrect = nAll - nCorrect;
        record.rt = nAll > 0 ? record.rt / nAll : record.rt;
        record.rt_correct = nCorrect > 0 ? record.rt_correct / nCorrect : record.rt_correct;
        record.rt_incorrect =
            nIncorrect > 0 ? record.rt_incorrect / nIncorrect : record.rt_incorrect;
    }
    if (m_journalOpen)
        journals.last().end = SessionEnd::Finished;
    sent.append(QString("doneDataCollection %1 0 0").arg(data.soundDuration, 0, 'g', 17));
    subject.choicesVisible = subject.feedBack;
    subject.nextVisible = false;
    subject.result = "Frequency Difference = " + digits(data.soundDuration * 100.0) +
                     " %,   Reaction Time = 0 ms";
    subject.doneVisible = true;
    subject.enabled = true;
}

void SessionModel::confirmClosing()
{
    subject.visible = false;
    refresh();
    sent.append("subjectWindowClosed");
}

void SessionModel::refresh()
{
    closeJournal(SessionEnd::BrokenOff);
    outputAwake = false;
    mainEnabled = true;
    experimentEnabled = true;
    goEnabled = false;
}

/// @p end is that of a session that has not finished.
void SessionModel::closeJournal(SessionEnd end)
{
    if (m_journalOpen && !journals.last().end)
        journals.last().end = end;
    m_journalOpen = false;
}

/// The subject window learns that a token plays, or by -1 that it has ended.
void SessionModel::playing(int count)
{
    sent.append(QString("soundPlaying %1").arg(count));
    lockSubject();
    if (count != -1)
        return;
    subject.motherStyle = hoverStyle;
    subject.strangerStyle = hoverStyle;
    subject.choicesEnabled = true;
    subject.enabled = true;
    subject.nextVisible = !subject.autoPlay;
    if (!subject.autoPlay)
        subject.nextEnabled = false;
}

void SessionModel::timerFires()
{
    if (!timerRuns)
        return;
    timerRuns = false;
    if (playCount >= 1)
        return;
    stream = Stream::Sounding;
    ++playCount;
    playing(playCount);
}

void SessionModel::soundEnds()
{
    if (stream != Stream::Sounding)
        return;
    stream = Stream::None;
    if (playCount != 1)
        return;
    ++clockStarts;
    playing(-1);
}

void SessionModel::soundFails()
{
    if (stream != Stream::Sounding)
        return;
    stream = Stream::Dead;
    logged.append("Audio stopped unexpectedly");
}

void SessionModel::saveAs(const QString &chosen)
{
    data.outputFilePath = chosen;
    data.outputFileName = chosen.mid(chosen.lastIndexOf('/') + 1);
}

QByteArray SessionModel::recordsFile() const
{
    if (data.records.isEmpty())
        return {};
    QString text = "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n";
    for (qsizetype i = 0; i < data.records.size(); ++i) {
        const Record &record = data.records.at(i);
        text += record.filename + '\t' + QString::number(record.nMother) + '\t' +
                QString::number(record.nStranger) + '\t' + digits(record.rt) + '\t' +
                digits(record.rt_correct) + '\t' + digits(record.rt_incorrect);
        if (i < data.entries.size() - 1)
            text += '\n';
    }
    return text.toUtf8();
}

QByteArray SessionModel::entriesFile() const
{
    if (data.entries.isEmpty())
        return {};
    QStringList lines = {"filename\tstim\tresp\tcorrectness\trt"};
    for (const Entry &entry : data.entries)
        lines.append(entry.filename + '\t' + entry.stim + '\t' + entry.resp + '\t' +
                     digits(entry.correctness) + '\t' + digits(entry.rt));
    return lines.join('\n').toUtf8();
}

QByteArray SessionModel::parametersFile() const
{
    return ParametersText{.outputFilePath = data.outputFilePath,
                          .wavFilePath = data.wavFilePath,
                          .subCode = data.subCode,
                          .outputFileName = data.outputFileName,
                          .outputFileName_entries = data.outputFileName_entries,
                          .outputFileName_parameters = data.outputFileName_parameters,
                          .sesTypeIndex = QString::number(data.sesTypeIndex),
                          .sesNum = QString::number(data.sesNum),
                          .nTimes = QString::number(data.nTimes),
                          .si = digits(data.si),
                          .saveData = digits(data.saveData),
                          .feedBack = digits(data.feedBack),
                          .autoPlay = digits(data.autoPlay)}
        .bytes();
}
