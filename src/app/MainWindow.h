// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/CWav.h"
#include "audio/PresentationTiming.h"
#include "audio/StreamFollower.h"
#include "audio/TokenSound.h"
#include "data/Data.h"
#include "plots/LineChart.h"

#include <QAudio>
#include <QAudioFormat>
#include <QList>
#include <QMainWindow>
#include <QPointF>
#include <QString>
#include <QTimer>

#include <memory>

class QAudioSink;
class QBuffer;
class QByteArray;
class QCheckBox;
class QComboBox;
class QElapsedTimer;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class SilentStream;
class SubjectWindow;
enum class Category;

/// The operator's window: builds its controls, owns every object of a session and carries out the
/// experiment on the one GUI thread. Headings name the file, in the folder of its topic, that
/// defines the functions below them; the rules applied there are functions of ostrine_core.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // app/MainWindow.cpp
    /// Builds the window with the default parameters; it is shown by whoever creates it.
    explicit MainWindow(QWidget *parent = nullptr);
    /// Silences what plays. Nothing is written, even in the middle of a session.
    ~MainWindow() override;

signals:
    /// The new play count when a token starts; tokenHasEnded when it has, and the answer is timed.
    void soundPlaying(int index);
    /// The end of a session. The first argument that is sent is the duration of the last token in
    /// seconds, and the second the (unused) reactionTime field.
    void doneDataCollection(qreal threshold, qreal reactionTime, qint32 mainParameterIndex);
    /// What the subject window must know of the parameters, at "Go".
    void deliverFeedBackStatus(bool feedBack);
    void deliverAutoPlayStatus(bool autoPlay);
    void deliverSubCode(QString subCode);
    /// The file name, without its folder, of the token that is presented next.
    void deliverWavFileName(QString wavFileName);

public slots:
    // app/MainWindow_session.cpp
    /// Each prepares a session of its type. "Go" is usable afterwards when there are tokens, and
    /// "Experiment" only after an experiment or when the subject window has closed.
    void pushButtonPractice_clicked();
    void pushButtonExperiment_clicked();
    /// Locks this window and shows a new subject window, which starts and drives the session.
    void pushButtonGo_clicked();
    /// Takes a response of the subject (a ResponseCode; any other value shows a warning) and moves
    /// the session on. An answer before the first presentation has no effect.
    void updateMainwindow(int response);

    // audio/MainWindow_playback.cpp
    /// Plays the current token on the default output, unless it has been played maxPlayCount times
    /// since the last response. A failure of the output is only logged: the session then waits for
    /// the end of a token that does not come.
    void playOneSound();

    // app/MainWindow.cpp
    /// Does nothing, and is connected to nothing.
    void doNothing();

    // audio/MainWindow_playback.cpp
    /// Looks at the stream at once when the output has stopped. No other state tells anything.
    void handleAudioStateChanged(QAudio::State audioState);

    // app/MainWindow.cpp
    /// Each copies the control's new state into its parameter and renews the names of the result
    /// files that follow from it. What is not a number gives the session number 0.
    void comboBoxSesType_currentIndexChanged(int index);
    void comboBoxSoundType_currentIndexChanged(int index);
    void comboBoxMainParameter_currentIndexChanged(int index);
    void lineEditSubCode_textChanged(QString arg1);
    void lineEditSesNum_textChanged(QString arg1);
    /// The states are those of Qt::CheckState; only Qt::Checked counts as on. Without feedback,
    /// automatic playing is switched on and locked.
    void checkBoxSaveData_stateChanged(int arg1);
    void checkBoxFeedBack_stateChanged(int arg1);
    void checkBoxAutoPlay_stateChanged(int arg1);
    /// Makes the window usable again when the subject window has closed. "Go" needs a new
    /// preparation first.
    void refreshMainWindow();

protected:
    // app/MainWindow.cpp
    /// Lays the controls out; once, at start-up.
    void setupGUIMainWindow();
    /// Sizes and places the window by the rule of windowGeometry() on the primary screen.
    void centerAndResizeMainWindow(bool center, double widthShare, double heightShare);
    /// Disables the whole window.
    void disableAllComponents();

    // app/MainWindow_parameters.cpp
    /// Copies the parameters into the controls and sizes what depends on them; once, at start-up.
    void initParameters();
    /// Reads the controls back into the parameters and refreshes the sizes derived from them, among
    /// them data.nSamples, which may then differ from the token's. What is not a number becomes 0.
    void getParameters();

    // app/MainWindow_session.cpp
    /// Prepares a session: the folder, the presentation order and the first token. A session that
    /// was broken off is silenced and its data discarded. Without tokens nTokens is 0 and nothing
    /// else is prepared.
    void getReadyToGo();
    /// Draws the presentation order anew, by the system clock.
    void genRandomSequence();
    /// Shows the current token's folder and file name. There must be a record of it.
    void updateWavTextFields();

    // app/MainWindow_results.cpp
    /// Turns the reaction time sums into means; must run exactly once per session.
    void computeResults();
    /// Ends a session: results, signal, and the result files if they are wanted.
    void finishIt();
    /// Shows the type of the session and the number of the next presentation, as in
    /// "practice 1/20".
    void updateStatusString();

    // audio/MainWindow_soundFolder.cpp
    /// Lets the operator choose the sound folder and lists its tokens into the records. There are
    /// none when the operator gives up, nor, after a warning, when the presentations would be more
    /// than maxPresentations.
    void selectFolder();
    /// Makes one default entry and one timing per presentation.
    void initDataEntries();

    // audio/MainWindow_playback.cpp
    /// Loads the token of the current trial and derives its sizes. A token that cannot be used is
    /// logged and leaves the previous token's sound in its place. There must be a record.
    void genWav();
    /// Schedules the current token's presentation, if one is left, and returns the advanced
    /// trialIndex.
    int playWav();
    /// How far the sound server is with the stream of audioSink, which must not be null.
    StreamFollower::Reading readStream() const;

    // data/MainWindow_resultFiles.cpp
    /// Each proposes and shows where the results are to go: the folder of the subject on the
    /// desktop, and the name of the records file in it.
    void updateOutputFilePath();
    void updateOutputFileName();
    /// Asks for the name of the records file and writes the three result files beside each other,
    /// over what is there. A file that cannot be written is shown in a warning and the others are
    /// written all the same; so it is with the empty name of a cancelled dialog. The paths and
    /// names in data are then those of the files: outputFilePath the full path of the records file.
    void writeDataToTxt();

    // plots/MainWindow_plotSizes.cpp
    /// Applies waveformSpan() to the current token.
    void updateNPointsToPlot();

    // plots/MainWindow_waveformAndSpectrum.cpp
    /// Each creates an empty chart and places it; a second call changes nothing.
    void displayEmptyWav();
    void displayEmptyFFT();
    /// Shows the current token. The vertical range covers all of it, also what is not plotted.
    void displayWav();
    /// Computes the current token's spectrum. Weights soundWave in place by the window first. The
    /// lists are empty for a token of a single sample.
    void genFFT();
    /// Shows that spectrum. The vertical range covers all bins, also those that are not plotted.
    void displayFFT();

    // plots/MainWindow_trend.cpp
    /// Creates the empty chart and places it; a second call changes nothing.
    void displayEmptyTrend();
    /// Lays the chart out for the tokens of a session that is being prepared, and shows how often
    /// each was taken for the mother's.
    void updateTrend();

    // The three combo boxes and their labels are in no layout, and never visible.
    QObjectList controls; ///< every widget and layout below, in the order of their creation
    QLabel *labelSesType;
    QLabel *labelSoundType;
    QLabel *labelMainParameter;
    QLabel *labelSoundFileInformation;
    QLabel *labelFs;
    QLabel *labelDuration;
    QLabel *labelSi;
    QLabel *labelSubCode;
    QLabel *labelSesNum;
    QLabel *labelNTimes;
    QLabel *labelWavFilePath;
    QLabel *labelWavFileName;
    QLabel *labelOutputFilePath;
    QLabel *labelOutputFileName;
    QLabel *labelStatus;
    QComboBox *comboBoxSesType;
    QComboBox *comboBoxSoundType;
    QComboBox *comboBoxMainParameter;
    QLineEdit *lineEditFs;
    QLineEdit *lineEditDuration;
    QLineEdit *lineEditSi;
    QLineEdit *lineEditSubCode;
    QLineEdit *lineEditSesNum;
    QLineEdit *lineEditNTimes;
    QLineEdit *lineEditWavFilePath;
    QLineEdit *lineEditWavFileName;
    QLineEdit *lineEditOutputFilePath;
    QLineEdit *lineEditOutputFileName;
    QLineEdit *lineEditStatus;
    QPushButton *pushButtonPractice;
    QPushButton *pushButtonExperiment;
    QPushButton *pushButtonGo;
    QPushButton *pushButtonQuit;
    QCheckBox *checkBoxSaveData;
    QCheckBox *checkBoxFeedBack;
    QCheckBox *checkBoxAutoPlay;
    QList<QHBoxLayout *> rowLayouts; ///< rows 2 to 14 of gridLayoutControls
    QGridLayout *gridLayoutControls;
    QGridLayout *gridLayoutPlots;
    QGridLayout *gridLayoutMain;
    QWidget *centralWidget;

    Data data; ///< the parameters and results of the session

    // What the charts show. Points and ranges are those of the last display; a range is a list of
    // the smallest and the largest value.
    QList<double> soundWave;       ///< the current token's samples, one channel, about -1 .. +1
    QList<double> timeAxis;        ///< ms, one per waveform point
    QList<QPointF> wavePoints;     ///< ms and sample, as many as are plotted
    QList<double> waveRange;       ///< of all samples, also those that are not plotted
    QList<double> frequencies;     ///< Hz, one per bin: nFFT / 2, from 0 to below fs / 2
    QList<double> amplitudes;      ///< linear, one per bin; amplitudeSpectrum() tells the scale
    QList<double> phases;          ///< radians, -pi to pi, one per bin; never shown
    QList<QPointF> spectrumPoints; ///< Hz and amplitude, as many as are plotted
    QList<double> spectrumRange;   ///< of all amplitudes, also those that are not plotted
    qint64 nFFT = 1024;            ///< length of the transform: a power of two, or 0
    double fftDuration = 0.6;      ///< nFFT / fs, in seconds
    double freqResolution = 1.6666666666666667; ///< distance of the bins in Hz
    qint32 fftWindowType = 0;              ///< 0 none, 1 Hann; any other value silences the token
    QList<double> trendX;                  ///< numbers of the tokens, from 1 on
    QList<double> trendY;                  ///< "Mother" answers so far, per token
    QList<QPointF> trendPoints;            ///< pairs of trendX and trendY
    QList<double> trendRange = {0.0, 0.0}; ///< of trendY, also when the axis shows more
    ChartFonts chartFonts;
    LineChart waveformChart;
    LineChart spectrumChart;
    LineChart trendChart;

    // Session flow.
    QList<int> randomSequence; ///< token indexes in presentation order
    qint32 trialIndex = 0;     ///< presentations scheduled so far
    qint32 tokenIndex = 0;     ///< record of the token being presented
    qint32 nTimesSeq = 0;      ///< presentations of each token in randomSequence
    qint32 nTokens = 0;        ///< tokens of the session; 0 when none is prepared
    qint32 playCount = 0;      ///< plays of the current token since the last response
    qint32 maxPlayCount = 0;   ///< plays of a token per presentation: 1 once parameters are set
    QTimer presentationTimer;  ///< runs in the delay before a token
    StreamFollower::Time presentationDue{}; ///< when it is to fire, by streamFollower's clock
    QElapsedTimer *reactionTimer = nullptr; ///< runs from the end of a token; invalid before one
    qint32 reactionTimerStarts = 0;         ///< how often it was started in the window's life
    SubjectWindow *subjectWindow = nullptr; ///< of the last "Go"; a child, also when it is closed
    QString statusString;                   ///< the status line, once a session is prepared

    // The current token and its playing. The pointers are null while nothing plays; after a failure
    // of the output they stay until the next token is played or the next session prepared, and the
    // sink is in the stopped state or takes no more of its buffer.
    CWav wav;                        ///< the last file read, also one that could not be used
    TokenSize currentToken;          ///< of the last token that could be used
    QString soundPath;               ///< full path of the last file read
    QAudioFormat audioOutputFormat;  ///< mono floats at the fs of start-up, and never another
    QByteArray *audioData = nullptr; ///< the token between two silences
    QBuffer *audioBuffer = nullptr;  ///< reads audioData
    QAudioSink *audioSink = nullptr; ///< reads audioBuffer
    std::unique_ptr<SilentStream> silentStream; ///< from "Go" until the subject window has closed
    StreamFollower streamFollower;              ///< tells when the token has been heard
    QList<PresentationTiming> presentationTimings; ///< one per presentation, like data.entries

    // The window's place at start-up, as windowGeometry() takes it.
    bool centerFlag = true;
    double widthFraction = 0.8;
    double heightFraction = 0.9;

private:
    // app/MainWindow.cpp
    template<typename Control>
    Control *keep(const QString &name, Control *control);
    void addRow(int row, const QList<QWidget *> &widgets);

    // app/MainWindow_parameters.cpp
    void showParameters();
    void initPlots();
    void initPlaying();

    // app/MainWindow_session.cpp
    void beginPreparation(SessionType type);
    void prepareNextPresentation();
    void takeAnswer(Category answer);

    // audio/MainWindow_playback.cpp
    void reportStop() const;
    void endSound();
    void keepTiming(StreamFollower::Time clockStart);
    void releaseAudioOutput();

    // plots/MainWindow_plotSizes.cpp
    void sizeSpectrum();
    void sizeTimeAxis();
};
