// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/TokenCheck.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

class QTextStream;

/// The columns of a table of checked tokens.
enum class TokenColumn {
    Number,
    Name,
    Category,
    Rate,
    Bits,
    Channels,
    Duration,
    Peak,
    Rms,
    Findings,
};
inline constexpr int nTokenColumns = 10;

QString tokenColumnTitle(TokenColumn column);

/// What the table says of @p token in @p column, without the findings: empty where it is unknown,
/// and control characters of names as in "\t".
QString tokenField(const CheckedToken &token, TokenColumn column);

/// A title line and a line for each token, separated by tabs; the last column holds the findings in
/// sentences.
void writeTokenTable(QTextStream &out, const FolderCheck &check);

/// What is in the folder and how long a session lasts, in sentences.
QStringList folderSummary(const FolderCheck &check);

/// All of @p check; what is unknown is null.
QJsonObject toJson(const FolderCheck &check);
