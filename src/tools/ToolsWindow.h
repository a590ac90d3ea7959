// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

/// The companion's window: a page for each thing that decides, outside of a session, whether the
/// session is worth anything.
class ToolsWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ToolsWindow(QWidget *parent = nullptr);
};
