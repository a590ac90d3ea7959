// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Data.h"
#include "data/Journal.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// A token file as the walk has made it.
struct TokenFile
{
    QString name;
    int nPoints = 0;
    double rate = 48000;
    double level = 0;     ///< all its samples have this value
    bool readable = true; ///< otherwise the sound before it is presented again
};

/// What both windows must show and hold. It is a second account of the rules: of the program's own
/// code it uses the data classes as containers, and nothing else.
class SessionModel
{
public:
    /// What happens at the end of a response.
    enum class After { Nothing, Save, Warning };

    /// The state of the session as far as no dialog is open.
    enum class State {
        Idle,       ///< nothing is prepared
        Prepared,   ///< "Go" can be pressed
        BrokenOff,  ///< as Idle, but a token of the session before is still to come or sounds
        Waiting,    ///< for "I am ready"
        Delay,      ///< before a token
        Playing,    ///< a token sounds
        OutputDead, ///< the sound has failed
        Answering,  ///< an answer is awaited
        Feedback,   ///< "Next" is awaited
        Finished,   ///< "Done" is awaited
        Locked,     ///< nothing is awaited and nothing will come: the window can only be closed
    };

    enum class Stream { None, Sounding, Dead };

    /// The window of the last "Go".
    struct Subject
    {
        bool exists = false;
        bool visible = false;
        bool enabled = true;
        bool choicesVisible = false;
        bool choicesEnabled = true;
        bool readyVisible = true;
        bool nextVisible = false;
        bool nextEnabled = true;
        bool doneVisible = false;
        QString motherStyle;
        QString strangerStyle;
        QString result = "Threshold = ";
        bool feedBack = false;
        bool autoPlay = false;
        QString subCode;
        QString wavFileName;
    };

    /// What the journal of a session must tell.
    struct Journaled
    {
        struct Answer
        {
            int trial = 0; ///< from 0 on
            int token = 0;
            Entry entry;
        };

        QList<int> order;
        QList<Answer> answers;
        std::optional<SessionEnd> end;
    };

    explicit SessionModel(const QString &desktop, const QString &silentInterval);

    State state() const;

    // What the operator does with the controls.
    void typeSubCode(const QString &text);
    void typeSesNum(const QString &text);
    void typeNTimes(const QString &text);
    void toggleSaveData();
    void toggleFeedBack();
    void toggleAutoPlay();
    void go();

    // A preparation: it begins, each time a folder is chosen, and it ends. The order of the tokens
    // is drawn by the program; orderProblem() tells what is wrong with it.
    void beginPreparation(SessionType type);
    void chooseFolder(const QString &path, const QList<TokenFile> &tokens);
    bool tooManyPresentations() const;
    QString orderProblem(const QList<int> &order) const;
    void endPreparation(const QList<int> &order);

    // What the subject does.
    void pressReady();
    void pressAnswer(bool mother, double rt);
    void pressNext();
    void confirmClosing();

    /// What follows a response with @p code, before it is given.
    After after(int code) const;
    /// Whether an answer now would be scored.
    bool scores() const;
    /// The response @p code arrives; @p rt counts only for an answer.
    void respond(int code, double rt);

    // What the sound does.
    void timerFires();
    void soundEnds();
    void soundFails();

    /// Nothing is shown any more from here on; the open journal ends.
    void quit() { closeJournal(SessionEnd::Quit); }

    /// The records file gets the full path @p chosen.
    void saveAs(const QString &chosen);
    QByteArray recordsFile() const;
    QByteArray entriesFile() const;
    QByteArray parametersFile() const;

    bool mainEnabled = true;
    bool experimentEnabled = false;
    bool goEnabled = false;
    int sesType = 0;
    bool saveBox = true;
    bool feedBackBox = true;
    bool autoPlayBox = true;
    QString subCodeText = "CHD001";
    QString sesNumText = "1";
    QString nTimesText = "1";
    QString siText;
    QString durationText = "250.000";
    QString wavFilePathText;
    QString wavFileNameText = "MOV001_01.wav";
    QString outputFilePathText;
    QString outputFileNameText;
    QString statusText = "not started yet";

    Data data;
    QList<int> sequence;
    int trialIndex = 0;
    int tokenIndex = 0;
    int nTokens = 0;
    int nTimesSeq = 0;
    int playCount = 0;
    int clockStarts = 0;
    bool outputAwake = false; ///< a silent stream keeps the output awake
    bool timerRuns = false;
    int timerInterval = 0; ///< ms, of the last start
    Stream stream = Stream::None;
    QList<double> motherCounts; ///< as the trend chart shows them
    int nPoints = 0;            ///< of the sound that is presented
    double level = 0;           ///< of that sound

    Subject subject;
    QList<Journaled> journals;

    // What the program must have sent and logged since these were cleared last.
    QStringList sent;
    QStringList logged;

private:
    void updateOutputFilePath();
    void updateOutputFileName();
    void getParameters();
    void genWav();
    void limitPointsToPlot();
    void prepareNext();
    void showToken();
    void schedule();
    void score(bool mother, double rt);
    void finish();
    void deliverWavFileName();
    void refresh();
    void playing(int count);
    void lockSubject();
    void closeJournal(SessionEnd end);

    bool m_journalOpen = false; ///< the last of journals
    QList<TokenFile> m_tokens;
    double m_duration = 0; ///< of the last token that could be read
};
