// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/ToolsWindow.h"

#include "tools/SessionsPage.h"
#include "tools/TimingPage.h"
#include "tools/TokensPage.h"

#include <QScreen>
#include <QTabBar>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize firstSize(1100, 680); // on a screen that has so much room

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
    resize(firstSize.boundedTo(screen()->availableSize()));
}
