// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/CWav.h"
#include "audio/PresentationTiming.h"
#include "audio/StreamFollower.h"
#include "audio/TokenSound.h"
#include "data/Data.h"
#include "data/Journal.h"
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
/// experiment on the one GUI thread. A heading names the file that defines the functions below it;
/// the rules that they apply are functions of ostrine_core.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // app/MainWindow.cpp
    /// Builds the window with the default parameters, without showing it.
    explicit MainWindow(QWidget *parent = nullptr);
    /// Stops the sound that is playing. Writes no result file, even in the middle of a session; the
    /// session's journal then says that the program was quit.
    ~MainWindow() override;

signals:
    /// The new play count when a token starts; tokenHasEnded when it has ended and the answer is
    /// being timed.
    void soundPlaying(int index);
    /// The session has ended. In spite of its name the first argument is the duration of the last
    /// token in seconds; the second is the reactionTime field, which is unused.
    void doneDataCollection(qreal threshold, qreal reactionTime, qint32 mainParameterIndex);
    /// The parameters that the subject window needs, sent at "Go".
    void deliverFeedBackStatus(bool feedBack);
    void deliverAutoPlayStatus(bool autoPlay);
    void deliverSubCode(QString subCode);
    /// The file name, without its folder, of the token that is presented next.
    void deliverWavFileName(QString wavFileName);

public slots:
    // app/MainWindow_session.cpp
    /// Each prepares a session of its type. "Go" is enabled afterwards if there are tokens.
    /// "Experiment" is enabled by the preparation of an experiment and when the subject window has
    /// closed, and disabled by that of a practice session. Neither these nor "Go" have an effect
    /// while a session is being prepared or saved.
    void pushButtonPractice_clicked();
    void pushButtonExperiment_clicked();
    /// Locks this window and shows a new subject window, which starts and drives the session.
    void pushButtonGo_clicked();
    /// Takes a response of the subject (a ResponseCode; any other value shows a warning) and moves
    /// the session on. An answer before the first presentation has no effect.
    void updateMainwindow(int response);

    // audio/MainWindow_playback.cpp
    /// Plays the current token on the default output, unless it has been played maxPlayCount times
    /// since the last response. If the output fails, that is only logged, and the session keeps
    /// waiting for the end of the token.
    void playOneSound();

    // app/MainWindow.cpp
    /// Does nothing, and is connected to nothing.
    void doNothing();

    // audio/MainWindow_playback.cpp
    /// Looks at the stream at once when the output has stopped. Other states are ignored.
    void handleAudioStateChanged(QAudio::State audioState);

    // app/MainWindow.cpp
    /// Each copies the control's new state into its parameter and updates the proposed folder and
    /// name of the result files that depend on it. A session number that is no number becomes 0.
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
    /// Ends the program. Until then, nothing is begun, asked or saved any more.
    void closeEvent(QCloseEvent *event) override;
    /// Lays out the controls. Called once, at start-up.
    void setupGUIMainWindow();
    /// Sizes and places the window on the primary screen by the rule of windowGeometry().
    void centerAndResizeMainWindow(bool center, double widthShare, double heightShare);
    /// Disables the whole window.
    void disableAllComponents();

    // app/MainWindow_parameters.cpp
    /// Copies the parameters into the controls and sizes the lists that depend on them. Called
    /// once, at start-up.
    void initParameters();
    /// Reads the controls back into the parameters and updates the sizes derived from them. One of
    /// these is data.nSamples, which may then differ from the token's. A text that is no number
    /// becomes 0.
    void getParameters();

    // app/MainWindow_session.cpp
    /// Prepares a session: the folder, the presentation order and the first token. Stops the sound
    /// of a session that was broken off, and discards its data. Without tokens nTokens is 0 and
    /// nothing else is prepared.
    void getReadyToGo();
    /// Draws a new presentation order, seeded by the system clock.
    void genRandomSequence();
    /// Shows the current token's folder and file name. data.records must contain the token.
    void updateWavTextFields();

    // app/MainWindow_results.cpp
    /// Turns the reaction time sums into means; must run exactly once per session.
    void computeResults();
    /// Ends a session: computes the results, emits doneDataCollection and, if wanted, writes the
    /// result files.
    void finishIt();
    /// Shows the type of the session and the number of the next presentation, as in
    /// "practice 1/20".
    void updateStatusString();

    // audio/MainWindow_soundFolder.cpp
    /// Lets the operator choose the sound folder and lists its tokens in data.records. The list is
    /// empty if the operator gives up or, after a warning, if there would be more presentations
    /// than maxPresentations.
    void selectFolder();
    /// Makes one default entry and one timing per presentation.
    void initDataEntries();

    // audio/MainWindow_playback.cpp
    /// Loads the token of the current trial and derives its sizes. If the token cannot be used,
    /// that is logged and the previous token's sound is kept. data.records must not be empty.
    void genWav();
    /// Schedules the presentation of the current token, if one is left. Always advances trialIndex,
    /// and returns it.
    int playWav();
    /// How much of the stream of audioSink the sound server has taken and played. audioSink must
    /// not be null. Virtual so that a test can take the server's place.
    virtual StreamFollower::Reading readStream() const;
    /// Stops the sound that is playing, if there is one, and deletes its output. No end of it is
    /// signalled. Pending events may be processed meanwhile.
    void releaseAudioOutput();

    // data/MainWindow_resultFiles.cpp
    /// Each proposes and shows where the results are to go: the folder of the subject on the
    /// desktop, and the name of the records file in it.
    void updateOutputFilePath();
    void updateOutputFileName();
    /// Asks for the name of the records file and writes the three result files to one folder,
    /// replacing older ones. A warning is shown for each file that cannot be written, and the
    /// others are still written; a cancelled dialog gives an empty name, to which no records file
    /// can be written. The paths and names in data become those of the files, and outputFilePath
    /// becomes the full path of the records file.
    void writeDataToTxt();

    // plots/MainWindow_plotSizes.cpp
    /// Applies waveformSpan() to the current token.
    void updateNPointsToPlot();

    // plots/MainWindow_waveformAndSpectrum.cpp
    /// Each creates an empty chart and places it; a second call changes nothing.
    void displayEmptyWav();
    void displayEmptyFFT();
    /// Shows the current token. The vertical range covers all of it, even what is not plotted.
    void displayWav();
    /// Weights soundWave by the window, in place, and computes its spectrum. The lists are empty
    /// for a token of a single sample.
    void genFFT();
    /// Shows that spectrum. The vertical range covers all bins, even those that are not plotted.
    void displayFFT();

    // plots/MainWindow_trend.cpp
    /// Creates the empty chart and places it; a second call changes nothing.
    void displayEmptyTrend();
    /// Shows how often each token was taken for the mother's. While a session is being prepared, it
    /// lays out the chart for the tokens of that session first.
    void updateTrend();

    // The three combo boxes and their labels are in no layout and are never visible.
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

    Data data;                        ///< the parameters and results of the session
    Journal journal{journalFolder()}; ///< open from "I am ready" until the subject window closes

    // What the charts show. Points and ranges are those of the last display; a range is a list of
    // the smallest and the largest value.
    QList<double> soundWave;       ///< the current token's samples, one channel, about -1 .. +1
    QList<double> timeAxis;        ///< ms, one per waveform point
    QList<QPointF> wavePoints;     ///< ms and sample, as many as are plotted
    QList<double> waveRange;       ///< of all samples, even those that are not plotted
    QList<double> frequencies;     ///< Hz, one per bin: nFFT / 2, from 0 to below fs / 2
    QList<double> amplitudes;      ///< linear, one per bin; amplitudeSpectrum() gives the scale
    QList<double> phases;          ///< radians, -pi to pi, one per bin; never shown
    QList<QPointF> spectrumPoints; ///< Hz and amplitude, as many as are plotted
    QList<double> spectrumRange;   ///< of all amplitudes, even those that are not plotted
    qint64 nFFT = 1024;            ///< length of the transform: a power of two, or 0
    double fftDuration = 0.6;      ///< nFFT / fs, in seconds
    double freqResolution = 1.6666666666666667; ///< distance between bins in Hz
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
    bool busy = false;         ///< a session is being prepared or saved, with dialogs
    bool closed = false;       ///< this window has been closed, and the program ends
    qint32 playCount = 0;      ///< plays of the current token since the last response
    qint32 maxPlayCount = 0;   ///< plays of a token per presentation: 1 once parameters are set
    QTimer presentationTimer;  ///< runs during the delay before a token
    StreamFollower::Time presentationDue{}; ///< when it is to fire, by streamFollower's clock
    QElapsedTimer *reactionTimer = nullptr; ///< runs from the end of a token; invalid before one
    qint32 reactionTimerStarts = 0;         ///< how often it has been started in this window
    SubjectWindow *subjectWindow = nullptr; ///< of the last "Go"; stays a child when it has closed
    QString statusString;                   ///< the status line, once a session is prepared

    // The current token and its playback. The pointers are null while nothing plays. After a
    // failure of the output they are kept until the next token is played or the next session is
    // prepared; the sink has then stopped, or the sound server takes no more samples from it.
    CWav wav;                        ///< the last file read, even if it could not be used
    TokenSize currentToken;          ///< of the last token that could be used
    qint64 currentTokenMemory = 0;   ///< its tokenMemory()
    QString soundPath;               ///< full path of the last file read
    QAudioFormat audioOutputFormat;  ///< mono floats at the fs of start-up; never changes
    QByteArray *audioData = nullptr; ///< the token between two silences
    QBuffer *audioBuffer = nullptr;  ///< reads audioData
    QAudioSink *audioSink = nullptr; ///< reads audioBuffer
    std::unique_ptr<SilentStream> silentStream; ///< from "Go" until the subject window has closed
    StreamFollower streamFollower;              ///< tells when the token has been heard
    QList<PresentationTiming> presentationTimings; ///< one per presentation, like data.entries

    // The window's size and place at start-up: arguments of windowGeometry().
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

    // plots/MainWindow_plotSizes.cpp
    void sizeSpectrum();
    void sizeTimeAxis();
};
