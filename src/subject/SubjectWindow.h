// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/TokenCategory.h"

#include <QMainWindow>
#include <QString>

#include <array>

class LargeTextButton;
class QGridLayout;
class QLabel;

/// The codes that subjectResponded(int) carries.
enum ResponseCode {
    ReadyResponse = 0,
    MotherResponse = 2,
    StrangerResponse = 4,
    NextResponse = 5,
};

/// The argument of soundPlaying(int) when a token has ended and an answer is awaited. When a token
/// starts, the argument is the number of the play.
inline constexpr int tokenHasEnded = -1;

/// The subject's window, which starts the session, takes the answers and shows feedback. The main
/// window drives it by signals. All that it knows of a token is the file name, by which it chooses
/// the feedback picture.
class SubjectWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit SubjectWindow(QWidget *parent = nullptr);

    void setupGUISubjectWindow();

    /// Sizes and places the window on the primary screen by the rule of windowGeometry().
    void centerAndResizeSubjectWindow(bool center, double widthShare, double heightShare);

    void disableAllChoiceButtons();

signals:
    void subjectResponded(int response); ///< a ResponseCode
    void subjectWindowClosed();          ///< the subject confirmed closing

public slots:
    void pushButtonIAmReady_clicked();
    void receiveFeedBackStatus(bool status);
    void receiveAutoPlayStatus(bool status);
    void receiveSubCode(QString code);
    void receiveWavFileName(QString fileName);
    void pushButtonNext_clicked();
    void enableAllChoiceButtons();

    /// @p state is tokenHasEnded when an answer is awaited; any other value means that a token
    /// plays, and locks the window.
    void updateSubjectWindow(int state);

    void pushButtonChoice2_clicked();
    void pushButtonChoice4_clicked();

    /// Shows the end of data collection.
    void finishExperiment(qreal threshold, qreal reactionTime, qint32 mainParameterIndex);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    /// Takes @p answer, given by @p button: shows the feedback picture and then emits the signal.
    void respond(LargeTextButton *button, Category answer, ResponseCode code);

    /// Disables the window and both answer buttons, but not the question whether to close, which
    /// may be open: as a child of the window it would be disabled too.
    void lock();

    /// Locks the window until the next token has been heard.
    void awaitToken();

    LargeTextButton *pushButtonChoice2;
    LargeTextButton *pushButtonChoice4;
    LargeTextButton *pushButtonIAmReady;
    LargeTextButton *pushButtonNext;
    LargeTextButton *pushButtonDone;
    QLabel *labelResult;
    QGridLayout *gridLayout;
    QWidget *centralWidget;
    qint32 nextButtonMode = 0;
    bool feedBack = false;
    bool autoPlay = false;
    QString subCode;
    QString wavFileName;
    std::array<qint32, 4> backgroundColor{240, 240, 240, 255};
    std::array<qint32, 4> highlightColor{255, 255, 0, 255};
    bool centerWindow = true;
    double widthFraction = 0.4;
    double heightFraction = 0.4;
};
