// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QFile>
#include <QSize>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

/// The size of the off-screen display: 800 x 800, or what OSTRINE_TEST_SCREEN tells ("1440x900").
inline QSize testScreen()
{
    const QStringList sides = qEnvironmentVariable("OSTRINE_TEST_SCREEN", "800x800").split('x');
    return {sides.first().toInt(), sides.last().toInt()};
}

/// Runs @p Test on an off-screen display, with a home folder of its own and with Qt's own file
/// dialogs, whose widgets a test can reach.
template<typename Test>
int runGuiTest(int argc, char *argv[])
{
    const QTemporaryDir home;
    if (!home.isValid())
        return EXIT_FAILURE;
    qputenv("HOME", home.path().toLocal8Bit());
    // Without a runtime folder the sound library makes one among the temporary files and leaves it.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", home.path().toLocal8Bit());
    QByteArray platform = "offscreen";
    if (qEnvironmentVariableIsSet("OSTRINE_TEST_SCREEN")) {
        QFile file(home.filePath("screen.json"));
        if (!file.open(QIODevice::WriteOnly))
            return EXIT_FAILURE;
        file.write(QString(R"({"screens": [{"name": "", "x": 0, "y": 0, "width": %1, "height": %2,
                               "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
                       .arg(testScreen().width())
                       .arg(testScreen().height())
                       .toUtf8());
        platform += ":configfile=" + file.fileName().toLocal8Bit();
    }
    qputenv("QT_QPA_PLATFORM", platform);
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    QApplication application(argc, argv);
    // Without this the first window that closes would end the event loop of a later dialog.
    QApplication::setQuitOnLastWindowClosed(false);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define GUI_TEST_MAIN(Test)                                                                        \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        return runGuiTest<Test>(argc, argv);                                                       \
    }
