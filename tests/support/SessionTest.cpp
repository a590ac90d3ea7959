// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SessionTest.h"

#include "data/Journal.h"
#include "subject/SubjectWindow.h"

#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>

void SessionTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir().mkpath(path("tokens")));
    m_window = std::make_unique<OperatorWindow>();
    m_window->show();
    m_window->checkBoxSaveData->setChecked(false);
    m_window->lineEditSi->setText("20.000");
}

void SessionTest::cleanup()
{
    m_window.reset();
    m_folder.reset();
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    QVERIFY(QDir(desktop + "/CHD001").removeRecursively());
    QVERIFY(QDir(journalFolder()).removeRecursively());
}

QPushButton *SessionTest::subject(const char *name) const
{
    return m_window->subjectWindow->findChild<QPushButton *>(name);
}

void SessionTest::click(QPushButton *button) const
{
    QTest::mouseClick(button, Qt::LeftButton);
}

bool SessionTest::prepare(QPushButton *button, const QString &folder) const
{
    ModalAnswer answers;
    answers.choose(folder);
    click(button);
    return answers.problem().isEmpty() && m_window->pushButtonGo->isEnabled();
}

bool SessionTest::awaitAnswering() const
{
    return QTest::qWaitFor([this] { return subject("pushButtonChoice2")->isEnabled(); },
                           longestWait);
}

bool SessionTest::closeSubjectWindow(QMessageBox::StandardButton button) const
{
    ModalAnswer answers;
    answers.press(button);
    m_window->subjectWindow->close();
    return answers.problem().isEmpty() &&
           m_window->subjectWindow->isVisible() == (button != QMessageBox::Yes);
}
