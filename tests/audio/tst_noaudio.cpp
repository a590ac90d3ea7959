// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/GuiTestMain.h"
#include "support/OperatorWindow.h"

#include <QSignalSpy>

class TestNoAudio : public QObject
{
    Q_OBJECT

private slots:
    void startingWithoutSoundWarnsOnce();
    void playingWithoutSoundEnablesNoAnswer();
};

// Catches a program that does not start, or starts without a word, where nothing can be played.
void TestNoAudio::startingWithoutSoundWarnsOnce()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "Raw audio format not supported by backend, cannot play audio.");
    const OperatorWindow window;
}

// Catches an answer that is asked for, and timed, although nothing was heard; and a crash when the
// next play finds what is left of this one.
void TestNoAudio::playingWithoutSoundEnablesNoAnswer()
{
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.soundWave = QList<double>(12000, 0.5);
    for (int play = 0; play < 3; ++play) {
        window.playCount = 0;
        window.playOneSound();
        QTest::qWait(500);
    }
    for (const QList<QVariant> &signal : playing)
        QCOMPARE(signal.at(0).toInt(), 1);
    QCOMPARE(playing.size(), 3);
}

GUI_TEST_MAIN(TestNoAudio)

#include "tst_noaudio.moc"
