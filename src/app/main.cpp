// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MainWindow.h"

#include <QApplication>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"ostrine"_s); // names the folder of the journals
    MainWindow window;
    window.show();
    return QApplication::exec();
}
