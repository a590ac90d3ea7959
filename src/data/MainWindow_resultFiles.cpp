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

    writeResultFile(chosen, data.outputFileName, [this](QTextStream &stream) {
        writeRecordsTable(stream, data.records, data.entries.size());
    });

    data.outputFileName_entries = companionFileName(recordsFile, u"entries"_s);
    writeResultFile(folder.filePath(data.outputFileName_entries), data.outputFileName_entries,
                    [this](QTextStream &stream) { writeEntriesTable(stream, data.entries); });

    data.outputFileName_parameters = companionFileName(recordsFile, u"parameters"_s);
    writeResultFile(folder.filePath(data.outputFileName_parameters), data.outputFileName_parameters,
                    [this](QTextStream &stream) { writeParameters(stream, data); });
}

template<typename Write>
void MainWindow::writeResultFile(const QString &path, const QString &fileName, Write write)
{
    const auto warn = [this](const QString &text) {
        QMessageBox::warning(this, u"Warning"_s, text, QMessageBox::Ok);
    };
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        warn(u"could not open file for writing \r\n"_s + data.outputFilePath + fileName);
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
