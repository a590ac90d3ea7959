// SPDX-License-Identifier: GPL-3.0-or-later
// How windows close. No sound is needed: no token gets as far as being played.
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QPushButton>
#include <QWindow>

namespace {

/// Asks @p window to close as the window system does when its close box is pressed; whether it may
/// be closed.
bool pressCloseBox(const QWidget *window)
{
    QCloseEvent request;
    QCoreApplication::sendEvent(window->windowHandle(), &request);
    return request.isAccepted();
}

} // namespace

class TestWindowEnds : public SessionTest
{
    Q_OBJECT

private slots:
    void theSubjectWindowWaitsForTheAnswer_data();
    void theSubjectWindowWaitsForTheAnswer();

private:
    bool makeToken() const;
    bool start() const;
};

bool TestWindowEnds::makeToken() const
{
    return writeFile(path("tokens/MOV001.wav"),
                     WavBytes{.data = WavBytes::samples16({1, 2, 3})}.bytes());
}

/// Prepares a session of one presentation and presses "Go".
bool TestWindowEnds::start() const
{
    if (!makeToken() || !prepare(m_window->pushButtonPractice, path("tokens")))
        return false;
    click(m_window->pushButtonGo);
    return m_window->subjectWindow->isVisible() && !m_window->isEnabled();
}

void TestWindowEnds::theSubjectWindowWaitsForTheAnswer_data()
{
    QTest::addColumn<bool>("byDone");
    QTest::addColumn<bool>("againByCloseBox");
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    for (const bool byDone : {true, false}) {
        for (const bool againByCloseBox : {true, false}) {
            for (const auto answer : {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel})
                QTest::addRow("%s, then %s: %s", byDone ? "Done" : "close box",
                              againByCloseBox ? "close box" : "close()",
                              answer == QMessageBox::Yes  ? "Yes"
                              : answer == QMessageBox::No ? "No"
                                                          : "Cancel")
                    << byDone << againByCloseBox << answer;
        }
    }
}

// Catches a window that closes unasked when it is asked to close once more while its question is
// open. After "No" nobody could use the operator's window again: there would be none to close.
void TestWindowEnds::theSubjectWindowWaitsForTheAnswer()
{
    QFETCH(const bool, byDone);
    QFETCH(const bool, againByCloseBox);
    QFETCH(const QMessageBox::StandardButton, answer);
    QVERIFY(start());
    emit m_window->doneDataCollection(0.25, 0.0, 0);
    const SubjectWindow *window = m_window->subjectWindow;

    bool stayed = true;
    ModalAnswer answers;
    answers.press(answer).when([&] {
        const ModalAnswer nothing;
        for (int times = 0; times < 2; ++times) {
            if (againByCloseBox)
                stayed = stayed && !pressCloseBox(window);
            else
                m_window->subjectWindow->close();
            stayed = stayed && window->isVisible() && window->windowHandle()->isVisible();
        }
        stayed = stayed && nothing.problem().isEmpty();
        return true;
    });
    if (byDone)
        click(subject("pushButtonDone"));
    else
        pressCloseBox(window);
    QCOMPARE(answers.problem(), "");
    QVERIFY(stayed);
    QCOMPARE(window->isVisible(), answer != QMessageBox::Yes);
    QCOMPARE(window->windowHandle()->isVisible(), answer != QMessageBox::Yes);
    QCOMPARE(m_window->isEnabled(), answer == QMessageBox::Yes);
    if (answer == QMessageBox::Yes)
        return;

    answers.press(QMessageBox::Yes);
    pressCloseBox(window);
    QCOMPARE(answers.problem(), "");
    QVERIFY(!window->isVisible());
    QVERIFY(m_window->isEnabled());
}

GUI_TEST_MAIN(TestWindowEnds)
#include "tst_windowends.moc"
