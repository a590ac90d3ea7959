// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Columns.h"

#include <QHeaderView>
#include <QStyledItemDelegate>
#include <QTableView>

#include <algorithm>

namespace {

class MiddleElision : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        option->textElideMode = Qt::ElideMiddle;
    }
};

} // namespace

void fitColumns(QTableView *table)
{
    table->resizeColumnsToContents();
    const int widest = table->viewport()->width() / 4;
    QHeaderView *header = table->horizontalHeader();
    for (int column = 0; column < header->count(); ++column) {
        const int least = header->sectionSizeHint(column);
        header->resizeSection(column,
                              std::min(header->sectionSize(column), std::max(widest, least)));
    }
}

void elideMiddle(QTableView *table, int column)
{
    table->setItemDelegateForColumn(column, new MiddleElision(table));
}
