// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TimingDocument.h"

#include "timing/TimingReport.h"

#include <QBuffer>
#include <QPdfWriter>
#include <QTextDocument>

using namespace Qt::StringLiterals;

QByteArray timingDocument(const TimingReport &report, const QString &fileName)
{
    QTextDocument document;
    document.setMetaInformation(QTextDocument::DocumentTitle, u"Timing"_s);
    document.setHtml(toHtml(report));
    if (!fileName.endsWith(".pdf"_L1, Qt::CaseInsensitive))
        return document.toHtml().toUtf8();

    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setTitle(u"Timing"_s);
    writer.setPageSize(QPageSize(QPageSize::A4));
    document.print(&writer);
    return buffer.data();
}
