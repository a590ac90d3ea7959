// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/ResultTables.h"

#include "data/Data.h"

#include <QFileInfo>
#include <QTextStream>

using namespace Qt::StringLiterals;

void writeRecordsTable(QTextStream &stream, const QList<Record> &records, qsizetype nEntries)
{
    if (records.isEmpty())
        return;

    stream << "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n";
    for (qsizetype i = 0; i < records.size(); ++i) {
        const Record &record = records.at(i);
        stream << record.filename << '\t' << record.nMother << '\t' << record.nStranger << '\t'
               << record.rt << '\t' << record.rt_correct << '\t' << record.rt_incorrect;
        if (i < nEntries - 1)
            stream << '\n';
    }
}

void writeEntriesTable(QTextStream &stream, const QList<Entry> &entries)
{
    if (entries.isEmpty())
        return;

    stream << "filename\tstim\tresp\tcorrectness\trt\n";
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const Entry &entry = entries.at(i);
        stream << entry.filename << '\t' << entry.stim << '\t' << entry.resp << '\t'
               << int(entry.correctness) << '\t' << entry.rt;
        if (i < entries.size() - 1)
            stream << '\n';
    }
}

void writeParameters(QTextStream &stream, const Data &data)
{
    stream << "fs: " << data.fs << '\n'
           << "alwaysPlotEntireWaveformFlag: " << data.alwaysPlotEntireWaveformFlag << '\n'
           << "upperFrequencyToPlot: " << data.upperFrequencyToPlot << '\n'
           << "outputFilePath: " << data.outputFilePath << '\n'
           << "wavFilePath: " << data.wavFilePath << '\n'
           << "subCode: " << data.subCode << '\n'
           << "outputFileName: " << data.outputFileName << '\n'
           << "outputFileName_entries: " << data.outputFileName_entries << '\n'
           << "outputFileName_parameters: " << data.outputFileName_parameters << '\n'
           << "sesTypeNames: " << data.sesTypeNames.join(", "_L1) << '\n'
           << "sesTypeIndex: " << data.sesTypeIndex << '\n'
           << "soundTypeNames: " << data.soundTypeNames.join(", "_L1) << '\n'
           << "soundTypeIndex: " << data.soundTypeIndex << '\n'
           << "mainParameterNames: " << data.mainParameterNames.join(", "_L1) << '\n'
           << "mainParameterIndex: " << data.mainParameterIndex << '\n'
           << "sesNum: " << data.sesNum << '\n'
           << "nTimes: " << data.nTimes << '\n'
           << "si: " << data.si << '\n'
           << "threshold: " << data.threshold << '\n'
           << "reactionTime: " << data.reactionTime << '\n'
           << "saveData: " << int(data.saveData) << '\n'
           << "feedBack: " << int(data.feedBack) << '\n'
           << "autoPlay: " << int(data.autoPlay);
}

QString proposedFileName(const Data &data)
{
    const QString number = QString::number(data.sesNum).rightJustified(3, u'0');
    return data.subCode + u'_' + data.sesTypeNames.value(data.sesTypeIndex) + number + u".txt"_s;
}

QString companionFileName(const QFileInfo &recordsFile, const QString &topic)
{
    return recordsFile.completeBaseName() + u'_' + topic + u'.' + recordsFile.suffix();
}
