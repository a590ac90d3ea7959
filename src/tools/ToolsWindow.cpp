// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/ToolsWindow.h"

#include "tools/SessionsPage.h"
#include "tools/TimingPage.h"
#include "tools/TokensPage.h"

#include <QTabBar>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize firstSize(1100, 680); // fits into 1366 x 768 with the screen's own bars

} // namespace

ToolsWindow::ToolsWindow(QWidget *parent)
    : QMainWindow(parent)
{
    setWindowTitle(u"Ostrine Tools"_s);
    auto *pages = new QTabWidget;
    pages->tabBar()->setAccessibleName(u"Pages"_s);
    pages->addTab(new TokensPage, u"Tokens"_s);
    pages->addTab(new TimingPage, u"Timing"_s);
    pages->addTab(new SessionsPage, u"Sessions"_s);
    setCentralWidget(pages);
    resize(firstSize);
}
