#pragma once

#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

/// Runs @p Test on an off-screen display, with a home folder of its own and with Qt's own file
/// dialogs, whose widgets a test can reach.
template<typename Test>
int runGuiTest(int argc, char *argv[])
{
    const QTemporaryDir home;
    if (!home.isValid())
        return EXIT_FAILURE;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    QApplication application(argc, argv);
    // Windows come and go: without this the first to close would end the loop of a later dialog.
    QApplication::setQuitOnLastWindowClosed(false);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define GUI_TEST_MAIN(Test)                                                                        \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        return runGuiTest<Test>(argc, argv);                                                       \
    }
