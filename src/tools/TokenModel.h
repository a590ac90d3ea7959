// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/TokenReport.h"

#include <QAbstractTableModel>

/// The tokens of a checked folder as a table. The first column says in a word and by an icon what
/// is to be thought of the token; the others are those of the report.
class TokenModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The role of what rows are sorted by: numbers as such.
    static constexpr int sortRole = Qt::UserRole;

    /// The column in which a column of the report is.
    static constexpr int place(TokenColumn column) { return static_cast<int>(column) + 1; }

    using QAbstractTableModel::QAbstractTableModel;

    void setCheck(const FolderCheck &check);
    const FolderCheck &check() const { return m_check; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QVariant resultData(const CheckedToken &token, int role) const;

    FolderCheck m_check;
};
