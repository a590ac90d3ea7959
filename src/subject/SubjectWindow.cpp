// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"

#include "subject/LargeTextButton.h"
#include "subject/WindowGeometry.h"
#include "subject/WindowIcon.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

QString feedbackStyle(bool correct)
{
    return u"QPushButton {    background-image: url(:/imageFiles/%1.png);    background-repeat: "
           "no-repeat;    background-position: center;}QPushButton:hover {    background-color: "
           "rgb(0, 255, 255);    border: 1px solid blue;}"_s.arg(correct ? u"correct"_s
                                                                         : u"incorrect"_s);
}

QString finalText(qreal threshold, qreal reactionTime, qint32 mainParameterIndex)
{
    QString text;
    if (mainParameterIndex == 0)
        text = u"Frequency Difference = "_s;
    else if (mainParameterIndex == 1)
        text = u"Modulation Threshold = "_s;
    return text + QString::number(threshold * 100.0) + u" %,   Reaction Time = "_s +
           QString::number(reactionTime) + u" ms"_s;
}

/// Refuses all requests to close the window whose events it filters.
class CloseRefusal : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::Close)
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

SubjectWindow::SubjectWindow(QWidget *parent)
    : QMainWindow(parent)
    , pushButtonChoice2(new LargeTextButton(u"Mother"_s))
    , pushButtonChoice4(new LargeTextButton(u"Stranger"_s))
    , pushButtonIAmReady(new LargeTextButton(u"I am ready"_s))
    , pushButtonNext(new LargeTextButton(u"Next"_s))
    , pushButtonDone(new LargeTextButton(u"Done"_s))
    , labelResult(new QLabel(u"Threshold = "_s))
    , gridLayout(new QGridLayout)
    , centralWidget(new QWidget)
{
    setObjectName("SubjectWindow");
    pushButtonChoice2->setObjectName("pushButtonChoice2");
    pushButtonChoice4->setObjectName("pushButtonChoice4");
    pushButtonIAmReady->setObjectName("pushButtonIAmReady");
    pushButtonNext->setObjectName("pushButtonNext");
    pushButtonDone->setObjectName("pushButtonDone");
    labelResult->setObjectName("labelResult");
    gridLayout->setObjectName("gridLayout");
    centralWidget->setObjectName("centralWidget");

    connect(pushButtonIAmReady, SIGNAL(clicked(bool)), this, SLOT(pushButtonIAmReady_clicked()));
    connect(pushButtonNext, SIGNAL(clicked(bool)), this, SLOT(pushButtonNext_clicked()));
    connect(pushButtonDone, SIGNAL(clicked(bool)), this, SLOT(close()));
    connect(pushButtonChoice2, SIGNAL(clicked(bool)), this, SLOT(pushButtonChoice2_clicked()));
    connect(pushButtonChoice4, SIGNAL(clicked(bool)), this, SLOT(pushButtonChoice4_clicked()));

    setupGUISubjectWindow();
}

void SubjectWindow::setupGUISubjectWindow()
{
    centerAndResizeSubjectWindow(centerWindow, widthFraction, heightFraction);
    setWindowIcon(ostrineIcon());
    setWindowTitle(u"Tavel Lab | Ostrine (v014) | Subject Window"_s);

    gridLayout->addWidget(pushButtonChoice2, 0, 0, 1, 1);
    gridLayout->addWidget(pushButtonChoice4, 0, 1, 1, 1);
    gridLayout->addWidget(labelResult, 1, 0, 1, 4);
    gridLayout->addWidget(pushButtonIAmReady, 2, 0, 1, 4);
    gridLayout->addWidget(pushButtonNext, 3, 0, 1, 4);
    gridLayout->addWidget(pushButtonDone, 4, 0, 1, 4);
    centralWidget->setLayout(gridLayout);
    setCentralWidget(centralWidget);

    pushButtonChoice2->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    pushButtonChoice4->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    pushButtonNext->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    for (LargeTextButton *button : {pushButtonIAmReady, pushButtonNext, pushButtonDone})
        button->setMinimumHeight(60);
    LargeTextButton::matchTexts({pushButtonChoice2, pushButtonChoice4});
    labelResult->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    labelResult->setAlignment(Qt::AlignHCenter);
    labelResult->setTextInteractionFlags(Qt::TextSelectableByMouse);

    pushButtonChoice2->hide();
    pushButtonChoice4->hide();
    pushButtonDone->hide();
    labelResult->hide();
    pushButtonIAmReady->show();
    pushButtonNext->setVisible(nextButtonMode != 0 && !autoPlay);
}

void SubjectWindow::centerAndResizeSubjectWindow(bool center, double widthShare, double heightShare)
{
    setGeometry(windowGeometry(QGuiApplication::primaryScreen()->availableSize(), center,
                               geometry().topLeft(), widthShare, heightShare));
}

void SubjectWindow::disableAllChoiceButtons()
{
    pushButtonChoice2->setEnabled(false);
    pushButtonChoice4->setEnabled(false);
}

void SubjectWindow::enableAllChoiceButtons()
{
    pushButtonChoice2->setEnabled(true);
    pushButtonChoice4->setEnabled(true);
}

void SubjectWindow::receiveFeedBackStatus(bool status)
{
    feedBack = status;
}

void SubjectWindow::receiveAutoPlayStatus(bool status)
{
    autoPlay = status;
}

void SubjectWindow::receiveSubCode(QString code)
{
    subCode = code;
}

void SubjectWindow::receiveWavFileName(QString fileName)
{
    wavFileName = fileName;
}

void SubjectWindow::lock()
{
    auto *question = findChild<QMessageBox *>();
    QWidget *chosen = question != nullptr ? question->focusWidget() : nullptr;
    setEnabled(false);
    disableAllChoiceButtons();
    if (question != nullptr)
        question->setEnabled(true);
    if (chosen != nullptr)
        chosen->setFocus();
}

void SubjectWindow::awaitToken()
{
    lock();
    pushButtonChoice2->show();
    pushButtonChoice4->show();
    pushButtonIAmReady->hide();
    pushButtonDone->hide();
}

void SubjectWindow::pushButtonIAmReady_clicked()
{
    awaitToken();
    pushButtonNext->setVisible(feedBack); // by feedback and not by automatic playing, on purpose
    emit subjectResponded(ReadyResponse);
}

void SubjectWindow::pushButtonNext_clicked()
{
    awaitToken();
    pushButtonNext->show();
    emit subjectResponded(NextResponse);
}

void SubjectWindow::updateSubjectWindow(int state)
{
    lock();
    if (state != tokenHasEnded)
        return;

    const QString hoverStyle =
        u"QPushButton:hover {background-color: rgb(0, 255, 255); border: 1px solid blue;}"_s;
    pushButtonChoice4->setStyleSheet(
        u" QPushButton {background-color: rgb(190, 190, 190); border: none;} "_s);
    pushButtonChoice2->setStyleSheet(hoverStyle);
    pushButtonChoice4->setStyleSheet(hoverStyle);
    pushButtonChoice2->setPictured(false);
    pushButtonChoice4->setPictured(false);
    enableAllChoiceButtons();
    setEnabled(true);
    pushButtonNext->setVisible(!autoPlay);
    if (!autoPlay)
        pushButtonNext->setEnabled(false);
}

void SubjectWindow::respond(LargeTextButton *button, Category answer, ResponseCode code)
{
    disableAllChoiceButtons();
    pushButtonNext->setEnabled(true);
    if (feedBack) {
        button->setStyleSheet(feedbackStyle(tokenCategory(wavFileName, subCode) == answer));
        button->setPictured(true);
    }
    emit subjectResponded(code);
}

void SubjectWindow::pushButtonChoice2_clicked()
{
    respond(pushButtonChoice2, Category::Mother, MotherResponse);
}

void SubjectWindow::pushButtonChoice4_clicked()
{
    respond(pushButtonChoice4, Category::Stranger, StrangerResponse);
}

void SubjectWindow::finishExperiment(qreal threshold, qreal reactionTime, qint32 mainParameterIndex)
{
    pushButtonChoice2->setVisible(feedBack);
    pushButtonChoice4->setVisible(feedBack);
    pushButtonNext->hide();
    labelResult->setText(finalText(threshold, reactionTime, mainParameterIndex));
    pushButtonDone->show();
    setEnabled(true);
}

void SubjectWindow::closeEvent(QCloseEvent *event)
{
    // When the operator has quit, Qt closes the remaining windows, and nobody is asked.
    if (parentWidget() != nullptr && !parentWidget()->isVisible()) {
        event->accept();
        return;
    }
    // Qt grants a second request unasked while closeEvent() deals with the first.
    CloseRefusal refusal;
    if (QWindow *handle = windowHandle())
        handle->installEventFilter(&refusal);
    const auto answer = QMessageBox::question(
        this, u"Confirmation MessageBox"_s, tr("Do you want to close this window?\n"),
        QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes);
    if (answer == QMessageBox::Yes) {
        emit subjectWindowClosed();
        event->accept();
    } else {
        event->ignore();
    }
}
