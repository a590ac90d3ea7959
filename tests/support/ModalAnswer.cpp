// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ModalAnswer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimerEvent>

namespace {

constexpr int pollingInterval = 10;     // ms
constexpr qint64 longestOpening = 5000; // ms after which a window counts as stuck

QLineEdit *nameField(const QFileDialog *dialog)
{
    return dialog->findChild<QLineEdit *>("fileNameEdit");
}

/// Presses the confirming button of @p dialog; false as long as it is disabled.
bool pressConfirm(QFileDialog *dialog)
{
    const auto standard = dialog->acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save
                                                                          : QDialogButtonBox::Open;
    QPushButton *button = dialog->findChild<QDialogButtonBox *>("buttonBox")->button(standard);
    if (button == nullptr || !button->isEnabled())
        return false;
    button->click();
    return true;
}

} // namespace

ModalAnswer::ModalAnswer()
{
    startTimer(pollingInterval);
}

ModalAnswer &ModalAnswer::expect(Answer answer)
{
    m_answers.append(std::move(answer));
    return *this;
}

ModalAnswer &ModalAnswer::press(QMessageBox::StandardButton button)
{
    return expect([button](QWidget *modal) {
        const auto *box = qobject_cast<QMessageBox *>(modal);
        if (box == nullptr || box->button(button) == nullptr)
            return false;
        QTest::mouseClick(box->button(button), Qt::LeftButton);
        return true;
    });
}

ModalAnswer &ModalAnswer::escape()
{
    return expect([](QWidget *modal) {
        if (qobject_cast<QMessageBox *>(modal) == nullptr)
            return false;
        QTest::keyClick(modal, Qt::Key_Escape);
        return true;
    });
}

ModalAnswer &ModalAnswer::choose(const QString &path)
{
    return expect([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (dialog == nullptr)
            return false;
        nameField(dialog)->setText(path);
        return pressConfirm(dialog);
    });
}

ModalAnswer &ModalAnswer::confirm()
{
    return expect([](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        return dialog != nullptr && pressConfirm(dialog);
    });
}

ModalAnswer &ModalAnswer::cancel()
{
    return expect([](QWidget *modal) {
        const auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (dialog == nullptr)
            return false;
        dialog->findChild<QDialogButtonBox *>("buttonBox")
            ->button(QDialogButtonBox::Cancel)
            ->click();
        return true;
    });
}

ModalAnswer &ModalAnswer::when(const std::function<bool()> &condition)
{
    const Answer answer = m_answers.takeLast();
    return expect([condition, answer](QWidget *modal) { return condition() && answer(modal); });
}

QByteArray ModalAnswer::problem() const
{
    QStringList problems = m_problems;
    if (!m_answers.isEmpty())
        problems.append(QString("%1 expected windows did not open").arg(m_answers.size()));
    return problems.join('\n').toUtf8();
}

void ModalAnswer::timerEvent(QTimerEvent *)
{
    QWidget *modal = QApplication::activeModalWidget();
    if (modal == nullptr) {
        m_current = nullptr;
        return;
    }
    if (modal != m_current) {
        m_current = modal;
        m_answered = false;
        m_open.start();
        record(modal);
        if (m_answers.isEmpty()) {
            closeByForce(modal, "was not expected");
            return;
        }
    }
    if (!m_answered && !m_answers.isEmpty()) {
        // Taken out first: the answer runs the event loop, and this may be called again within.
        m_answered = true;
        const Answer answer = m_answers.takeFirst();
        if (answer(modal))
            return;
        m_answers.prepend(answer);
        m_answered = false;
    }
    if (m_open.elapsed() > longestOpening) {
        if (!m_answered && !m_answers.isEmpty())
            m_answers.removeFirst();
        closeByForce(modal, "did not take its answer");
    }
}

void ModalAnswer::record(QWidget *modal)
{
    if (const auto *box = qobject_cast<QMessageBox *>(modal)) {
        m_boxes.append({box->windowTitle(), box->text(), box->icon(), box->standardButtons(),
                        box->standardButton(box->defaultButton()), box->parentWidget()});
    } else if (const auto *dialog = qobject_cast<QFileDialog *>(modal)) {
        m_dialogs.append({dialog->windowTitle(), dialog->directory().path(),
                          nameField(dialog)->text(), dialog->acceptMode(), dialog->fileMode(),
                          dialog->options(), dialog->nameFilters(), dialog->selectedNameFilter(),
                          dialog->parentWidget()});
    }
}

void ModalAnswer::closeByForce(QWidget *modal, const QString &why)
{
    const auto *box = qobject_cast<QMessageBox *>(modal);
    m_problems.append(
        QString("the window \"%1\" %2 %3")
            .arg(modal->windowTitle(), why, box != nullptr ? box->text() : QString()));
    if (auto *dialog = qobject_cast<QDialog *>(modal))
        dialog->reject();
    else
        modal->close();
}
