// SPDX-License-Identifier: GPL-3.0-or-later
// The session: its preparation, the presentation order and the trial loop that the subject's
// responses drive. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "app/PresentationOrder.h"
#include "audio/SilentStream.h"
#include "data/Scoring.h"
#include "subject/SubjectWindow.h"

#include <QAudioDevice>
#include <QComboBox>
#include <QDebug>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMediaDevices>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>

#include <chrono>

using namespace Qt::StringLiterals;

void MainWindow::pushButtonPractice_clicked()
{
    beginPreparation(PracticeSession);
}

void MainWindow::pushButtonExperiment_clicked()
{
    beginPreparation(ExperimentSession);
}

void MainWindow::beginPreparation(SessionType type)
{
    if (busy || closed)
        return;
    const QScopedValueRollback<bool> preparing(busy, true);
    comboBoxSesType->setCurrentIndex(type);
    getReadyToGo();
    pushButtonPractice->setEnabled(true);
    pushButtonExperiment->setEnabled(type == ExperimentSession);
    pushButtonGo->setEnabled(nTokens >= 1);
}

void MainWindow::getReadyToGo()
{
    // A session that was broken off may still be playing a token or have one scheduled; neither may
    // be heard in this one.
    presentationTimer.stop();
    releaseAudioOutput();
    journal.close(SessionEnd::BrokenOff);

    data.records.clear();
    data.entries.clear();
    randomSequence.clear();
    trialIndex = 0;
    tokenIndex = 0;
    nTokens = 0;
    data.sesTypeIndex = comboBoxSesType->currentIndex();
    getParameters();
    nTimesSeq = data.nTimes; // read only once, so that the entries and the order agree
    selectFolder();
    if (nTokens > 0) {
        genRandomSequence();
        genWav();
        displayWav();
        genFFT();
        displayFFT();
        updateTrend();
        updateWavTextFields();
        updateStatusString();
    }
}

void MainWindow::genRandomSequence()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    randomSequence = presentationOrder(nTokens, nTimesSeq, static_cast<quint32>(now));
}

void MainWindow::updateWavTextFields()
{
    lineEditWavFilePath->setText(data.wavFilePath);
    lineEditWavFileName->setText(data.records.at(tokenIndex).filename);
}

void MainWindow::pushButtonGo_clicked()
{
    if (busy || closed)
        return;
    disableAllComponents(); // no control may be used until the subject window has closed
    getParameters();

    if (subjectWindow != nullptr) {
        // The previous session's window is kept, but takes no part in this one.
        disconnect(subjectWindow, nullptr, this, nullptr);
        disconnect(this, nullptr, subjectWindow, nullptr);
    }
    subjectWindow = new SubjectWindow(this);
    connect(subjectWindow, SIGNAL(subjectResponded(int)), this, SLOT(updateMainwindow(int)));
    connect(subjectWindow, SIGNAL(subjectWindowClosed()), this, SLOT(refreshMainWindow()));
    connect(this, SIGNAL(soundPlaying(int)), subjectWindow, SLOT(updateSubjectWindow(int)));
    connect(this, SIGNAL(doneDataCollection(qreal, qreal, qint32)), subjectWindow,
            SLOT(finishExperiment(qreal, qreal, qint32)));
    connect(this, SIGNAL(deliverFeedBackStatus(bool)), subjectWindow,
            SLOT(receiveFeedBackStatus(bool)));
    connect(this, SIGNAL(deliverAutoPlayStatus(bool)), subjectWindow,
            SLOT(receiveAutoPlayStatus(bool)));
    connect(this, SIGNAL(deliverSubCode(QString)), subjectWindow, SLOT(receiveSubCode(QString)));
    connect(this, SIGNAL(deliverWavFileName(QString)), subjectWindow,
            SLOT(receiveWavFileName(QString)));

    silentStream = std::make_unique<SilentStream>(audioOutputFormat);

    emit deliverFeedBackStatus(data.feedBack);
    emit deliverAutoPlayStatus(data.autoPlay);
    emit deliverSubCode(data.subCode);
    subjectWindow->show();
}

void MainWindow::updateMainwindow(int response)
{
    if (closed)
        return;
    playCount = 0;
    switch (response) {
    case ReadyResponse:
        qDebug() << "Test just started";
        getParameters();
        emit deliverWavFileName(data.wavFileName);
        qDebug() << data.wavFileName;
        playWav();
        journal.begin(data, randomSequence, QMediaDevices::defaultAudioOutput().description());
        break;
    case MotherResponse:
    case StrangerResponse:
        takeAnswer(response == MotherResponse ? Category::Mother : Category::Stranger);
        break;
    case NextResponse:
        if (randomSequence.size() <= trialIndex) {
            finishIt();
            break;
        }
        prepareNextPresentation();
        emit deliverWavFileName(data.wavFileName);
        qDebug() << data.wavFileName;
        playWav();
        break;
    default:
        QMessageBox::warning(nullptr, u"Warning"_s, u"Invalid response"_s, QMessageBox::Ok);
        break;
    }
}

void MainWindow::takeAnswer(Category answer)
{
    const auto rt = static_cast<double>(reactionTimer->elapsed());
    const qint32 trial = trialIndex - 1;
    if (trial < 0 || trial >= data.entries.size())
        return; // nothing has been presented that could be answered
    qDebug() << "response: " << (answer == Category::Mother ? MotherResponse : StrangerResponse);

    Record &record = data.records[tokenIndex];
    scoreAnswer(data.entries[trial], record, tokenCategory(data.wavFileName, data.subCode), answer,
                rt);
    journal.answer(
        {trial, tokenIndex, data.entries.at(trial), toJson(presentationTimings.value(trial))});
    if (answer == Category::Mother) {
        trendY[tokenIndex] = record.nMother;
        trendPoints[tokenIndex].setY(record.nMother);
    }
    updateTrend();

    if (randomSequence.size() <= trialIndex) {
        finishIt();
    } else if (!data.feedBack || data.autoPlay) {
        prepareNextPresentation();
        getParameters();
        emit deliverWavFileName(data.wavFileName);
        playWav();
    }
}

/// Loads the token of the next presentation and shows it to the operator.
void MainWindow::prepareNextPresentation()
{
    genWav();
    displayWav();
    genFFT();
    displayFFT();
    updateWavTextFields();
    updateStatusString();
}
