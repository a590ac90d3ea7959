// SPDX-License-Identifier: GPL-3.0-or-later
// The result files and their proposed names. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "data/ResultTables.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QTextStream>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// Writes the file @p path by @p write. What goes wrong is shown in a warning box over @p window,
/// which names a file that cannot be opened as @p shownName.
void writeResultFile(QWidget *window, const QString &path, const QString &shownName,
                     const std::function<void(QTextStream &)> &write)
{
    const auto warn = [window](const QString &text) {
        QMessageBox::warning(window, u"Warning"_s, text, QMessageBox::Ok);
    };
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        warn(u"could not open file for writing \r\n"_s + shownName);
        return;
    }
    QTextStream stream(&file);
    write(stream);
    stream.flush();
    const bool written = file.flush() && stream.status() == QTextStream::Ok;
    file.close();
    if (!written || file.error() != QFileDevice::NoError)
        warn(u"could not write to file \r\n"_s + path);
}

} // namespace

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
    if (!QFileInfo(data.outputFilePath + u'/').dir().exists())
        QDir().mkpath(data.outputFilePath);

    // A cancelled dialog gives an empty name, which fails to open like any other that cannot be
    // written.
    QString selectedFilter = u"Text files (*.txt)"_s;
    const QString chosen = QFileDialog::getSaveFileName(
        this, tr("Save a file"), data.outputFilePath + u'/' + data.outputFileName,
        u"All files (*.*);; Text files (*.txt)"_s, &selectedFilter,
        QFileDialog::DontConfirmOverwrite);

    const QFileInfo recordsFile(chosen);
    data.outputFilePath = recordsFile.filePath();
    data.outputFileName = recordsFile.fileName();
    const QDir folder = recordsFile.dir();
    if (!folder.exists())
        QDir().mkpath(data.outputFilePath);

    writeResultFile(this, chosen, data.outputFilePath + data.outputFileName,
                    [this](QTextStream &stream) {
                        writeRecordsTable(stream, data.records, data.entries.size());
                    });

    data.outputFileName_entries = companionFileName(recordsFile, u"entries"_s);
    writeResultFile(this, folder.filePath(data.outputFileName_entries),
                    data.outputFilePath + data.outputFileName_entries,
                    [this](QTextStream &stream) { writeEntriesTable(stream, data.entries); });

    data.outputFileName_parameters = companionFileName(recordsFile, u"parameters"_s);
    writeResultFile(this, folder.filePath(data.outputFileName_parameters),
                    data.outputFilePath + data.outputFileName_parameters,
                    [this](QTextStream &stream) { writeParameters(stream, data); });
}
