// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/ResultTables.h"

#include "data/Parameters.h"

#include <QFileInfo>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

template<typename Value>
void writeValue(QTextStream &stream, const Value &value)
{
    stream << value;
}

void writeValue(QTextStream &stream, bool value)
{
    stream << int(value);
}

void writeValue(QTextStream &stream, const QStringList &value)
{
    stream << value.join(", "_L1);
}

} // namespace

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
    const char *separator = "";
    forEachParameter(data, [&](const char *name, const auto &value) {
        stream << separator << name << ": ";
        writeValue(stream, value);
        separator = "\n";
    });
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
