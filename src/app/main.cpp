// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MainWindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    MainWindow window;
    window.show();
    return QApplication::exec();
}
