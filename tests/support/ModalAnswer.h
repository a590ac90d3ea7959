// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>

/// Answers the modal boxes and file dialogs that open while it exists, in the expected order, by
/// their own widgets. A timer does this, because the code that opens a window waits for the answer.
/// A window that is not expected or stays open is closed, so that the test continues and can fail
/// by problem().
class ModalAnswer : public QObject
{
    Q_OBJECT

public:
    /// A message box as it was shown.
    struct Box
    {
        QString title;
        QString text;
        QMessageBox::Icon icon;
        QMessageBox::StandardButtons buttons;
        QMessageBox::StandardButton defaultButton;
        QWidget *parent;
    };

    /// A file dialog as it was shown.
    struct Dialog
    {
        QString title;
        QString folder;
        QString typed; ///< what stood in the name field
        QFileDialog::AcceptMode acceptMode;
        QFileDialog::FileMode fileMode;
        QFileDialog::Options options;
        QStringList nameFilters;
        QString selectedNameFilter;
        QWidget *parent;
    };

    ModalAnswer();

    /// The next is a message box: press @p button.
    ModalAnswer &press(QMessageBox::StandardButton button);
    /// The next is a message box: press the escape key.
    ModalAnswer &escape();
    /// The next is a file dialog: type @p path and confirm.
    ModalAnswer &choose(const QString &path);
    /// The next is a file dialog: confirm what it proposes.
    ModalAnswer &confirm();
    /// The next is a file dialog: cancel it.
    ModalAnswer &cancel();
    /// The window expected last is answered as soon as @p condition holds.
    ModalAnswer &when(const std::function<bool()> &condition);

    const QList<Box> &boxes() const { return m_boxes; }
    const QList<Dialog> &dialogs() const { return m_dialogs; }

    /// What went wrong, one line for each; empty when exactly the expected windows opened.
    QByteArray problem() const;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    /// Tries to answer @p modal; false when it is not ready for it yet.
    using Answer = std::function<bool(QWidget *modal)>;

    ModalAnswer &expect(Answer answer);
    void record(QWidget *modal);
    void closeByForce(QWidget *modal, const QString &why);

    QList<Answer> m_answers;
    QPointer<QWidget> m_current;
    bool m_answered = false; ///< whether m_current has been given its answer
    QElapsedTimer m_open;    ///< how long m_current has been seen
    QList<Box> m_boxes;
    QList<Dialog> m_dialogs;
    QStringList m_problems;
};
