// SPDX-License-Identifier: GPL-3.0-or-later
// The sound folder and the list of tokens. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "app/PresentationOrder.h"
#include "data/DesktopFolder.h"
#include "data/TokenList.h"

#include <QFileDialog>
#include <QMessageBox>

using namespace Qt::StringLiterals;

void MainWindow::selectFolder()
{
    bool again = true;
    while (again && !closed) {
        data.desktopPath = desktopFolder();
        data.wavFilePath = QFileDialog::getExistingDirectory(
            this, u"Select a folder"_s, data.desktopPath, QFileDialog::ReadOnly);
        if (closed)
            break; // the dialog ended with the program, and nothing has been chosen
        data.records = tokensIn(data.wavFilePath);
        again = data.records.isEmpty() &&
                QMessageBox::question(this, u"Question"_s,
                                      u"This folder contains no .wav files.\nDo you want to select "
                                      "another folder?"_s,
                                      QMessageBox::Yes | QMessageBox::No,
                                      QMessageBox::Yes) == QMessageBox::Yes;
    }

    if (!presentationCount(static_cast<int>(data.records.size()), data.nTimes)) {
        QMessageBox::warning(this, u"Warning"_s,
                             u"%1 tokens, %2 times each, are more than the %3 presentations that "
                             "a session can have."_s.arg(data.records.size())
                                 .arg(data.nTimes)
                                 .arg(maxPresentations),
                             QMessageBox::Ok);
        data.records.clear();
    }
    nTokens = static_cast<qint32>(data.records.size());
    initDataEntries();
}

void MainWindow::initDataEntries()
{
    data.entries = QList<Entry>(presentationCount(nTokens, data.nTimes).value_or(0), Entry());
    presentationTimings = QList<PresentationTiming>(data.entries.size());
}
