// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

struct TimingReport;

/// The report as a document: PDF if @p fileName ends with ".pdf", otherwise HTML.
QByteArray timingDocument(const TimingReport &report, const QString &fileName);
