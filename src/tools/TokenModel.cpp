// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokenModel.h"

#include "app/ToolTip.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {

/// What is to be thought of a token, the worst first.
enum class Result { NotPresented, Doubtful, Good };

Result resultOf(const CheckedToken &token)
{
    if (!token.isPresented())
        return Result::NotPresented;
    return token.findings.isEmpty() ? Result::Good : Result::Doubtful;
}

QString resultText(Result result)
{
    switch (result) {
    case Result::NotPresented:
        return u"Not played"_s;
    case Result::Doubtful:
        return u"Doubtful"_s;
    case Result::Good:
        return u"Good"_s;
    }
    return {};
}

QStyle::StandardPixmap resultIcon(Result result)
{
    switch (result) {
    case Result::NotPresented:
        return QStyle::SP_MessageBoxCritical;
    case Result::Doubtful:
        return QStyle::SP_MessageBoxWarning;
    case Result::Good:
        break;
    }
    return QStyle::SP_DialogApplyButton;
}

/// A text colour that can be read on the table's background, be it light or dark.
QVariant resultColour(Result result)
{
    const bool isDark = QApplication::palette().color(QPalette::Base).lightness() < 128;
    switch (result) {
    case Result::NotPresented:
        return QColor(isDark ? "#ff8a80" : "#b00020");
    case Result::Doubtful:
        return QColor(isDark ? "#ffd180" : "#7a4f00");
    case Result::Good:
        break;
    }
    return {};
}

QString facts(const CheckedToken &token)
{
    QStringList all;
    for (const Finding &finding : token.findings)
        all.append(finding.fact);
    return all.join(u' ');
}

QString shownText(const CheckedToken &token, TokenColumn column)
{
    return column == TokenColumn::Findings ? facts(token) : tokenField(token, column);
}

} // namespace

void TokenModel::setCheck(const FolderCheck &check)
{
    beginResetModel();
    m_check = check;
    endResetModel();
}

int TokenModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_check.tokens.size());
}

int TokenModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 1 + nTokenColumns;
}

QVariant TokenModel::resultData(const CheckedToken &token, int role) const
{
    const Result result = resultOf(token);
    switch (role) {
    case Qt::DisplayRole:
        return resultText(result);
    case Qt::DecorationRole:
        return QApplication::style()->standardIcon(resultIcon(result));
    case Qt::ForegroundRole:
        return resultColour(result);
    case sortRole:
        return static_cast<int>(result);
    default:
        return {};
    }
}

QVariant TokenModel::data(const QModelIndex &index, int role) const
{
    const CheckedToken &token = m_check.tokens.at(index.row());
    if (index.column() == 0)
        return resultData(token, role);
    const auto column = static_cast<TokenColumn>(index.column() - 1);
    const bool isText = column == TokenColumn::Name || column == TokenColumn::Category ||
                        column == TokenColumn::Findings;
    switch (role) {
    case Qt::DisplayRole:
        return shownText(token, column);
    case Qt::ToolTipRole:
        return plainToolTip(shownText(token, column));
    case Qt::ForegroundRole:
        return column == TokenColumn::Findings ? resultColour(resultOf(token)) : QVariant();
    case Qt::TextAlignmentRole:
        return QVariant(Qt::AlignVCenter | (isText ? Qt::AlignLeft : Qt::AlignRight));
    case sortRole:
        break;
    default:
        return {};
    }
    switch (column) {
    case TokenColumn::Number:
        return token.number;
    case TokenColumn::Rate:
        return token.rate;
    case TokenColumn::Bits:
        return token.bits;
    case TokenColumn::Channels:
        return token.channels;
    case TokenColumn::Duration:
        return token.duration;
    case TokenColumn::Peak:
        return token.measures.peak;
    case TokenColumn::Rms:
        return token.measures.rms;
    case TokenColumn::Findings:
        return token.findings.size();
    case TokenColumn::Name:
    case TokenColumn::Category:
        break;
    }
    return tokenField(token, column);
}

QVariant TokenModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == 0 ? u"Result"_s : tokenColumnTitle(static_cast<TokenColumn>(section - 1));
}
