// SPDX-License-Identifier: GPL-3.0-or-later
// The end of a session and the status line. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "data/Scoring.h"

#include <QComboBox>
#include <QLineEdit>

void MainWindow::computeResults()
{
    for (Record &record : data.records)
        formMeans(record, data.subCode);
}

void MainWindow::finishIt()
{
    computeResults();
    journal.finish(data);
    emit doneDataCollection(data.soundDuration, data.reactionTime, data.mainParameterIndex);
    if (data.saveData)
        writeDataToTxt();
}

void MainWindow::updateStatusString()
{
    statusString = data.sesTypeNames.value(comboBoxSesType->currentIndex()) + u' ' +
                   QString::number(trialIndex + 1) + u'/' + QString::number(randomSequence.size());
    lineEditStatus->setText(statusString);
}
