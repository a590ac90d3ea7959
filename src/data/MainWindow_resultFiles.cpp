// SPDX-License-Identifier: GPL-3.0-or-later
// The result files and their proposed names. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "data/ResultFiles.h"
#include "data/ResultTables.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;

void MainWindow::updateOutputFilePath()
{
    data.outputFilePath = data.desktopPath + u'/' + data.subCode;
    lineEditOutputFilePath->setText(data.outputFilePath);
}

void MainWindow::updateOutputFileName()
{
    data.outputFileName = proposedFileName(data);
    lineEditOutputFileName->setText(data.outputFileName);
}

void MainWindow::writeDataToTxt()
{
    const QScopedValueRollback<bool> saving(busy, true);
    if (!QFileInfo(data.outputFilePath + u'/').dir().exists())
        QDir().mkpath(data.outputFilePath);

    // With Qt 6.4 a desktop with Wayland can close the subject window behind the dialog, and with
    // it the journal.
    const Journal::Session session = journal.session();

    // A cancelled dialog gives an empty name, which fails to open like any other that cannot be
    // written.
    QString selectedFilter = u"Text files (*.txt)"_s;
    const QString chosen = QFileDialog::getSaveFileName(
        this, tr("Save a file"), data.outputFilePath + u'/' + data.outputFileName,
        u"All files (*.*);; Text files (*.txt)"_s, &selectedFilter,
        QFileDialog::DontConfirmOverwrite);
    if (closed && chosen.isEmpty())
        return; // the dialog ended with the program, and the operator has not cancelled it

    const auto warn = [this](const QString &text) {
        QMessageBox::warning(this, u"Warning"_s, text, QMessageBox::Ok);
    };
    journal.save(session, writeResultFiles(data, data.entries.size(), chosen, warn));
}
