// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QTableView;

/// Makes the columns of @p table as wide as their contents, but none so wide that long names leave
/// no room for the others.
void fitColumns(QTableView *table);

/// Leaves out the middle of what is too long for this column: names differ at their ends.
void elideMiddle(QTableView *table, int column);
