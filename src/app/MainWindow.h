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
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

signals:
    /// The new play count when a token starts; tokenHasEnded when it has, and the answer is timed.
    void soundPlaying(int index);
    /// The end of a session. The first argument that is sent is the duration of the last token in
    /// seconds, and the second the (unused) reactionTime field.
    void doneDataCollection(qreal threshold, qreal reactionTime, qint32 mainParameterIndex);
    void deliverFeedBackStatus(bool feedBack);
    void deliverAutoPlayStatus(bool autoPlay);
    void deliverSubCode(QString subCode);
    void deliverWavFileName(QString wavFileName);

public slots:
    // app/MainWindow_session.cpp
    void pushButtonPractice_clicked();
    void pushButtonExperiment_clicked();
    void pushButtonGo_clicked();
    /// Takes a response of the subject (a ResponseCode; any other value shows a warning) and moves
    /// the session on.
    void updateMainwindow(int response);

    // audio/MainWindow_playback.cpp
    void playOneSound();

    // app/MainWindow.cpp
    void doNothing();

    // audio/MainWindow_playback.cpp
    void handleAudioStateChanged(QAudio::State audioState);

    // app/MainWindow.cpp
    void comboBoxSesType_currentIndexChanged(int index);
    void comboBoxSoundType_currentIndexChanged(int index);
    void comboBoxMainParameter_currentIndexChanged(int index);
    void lineEditSubCode_textChanged(QString arg1);
    void lineEditSesNum_textChanged(QString arg1);
    void checkBoxSaveData_stateChanged(int arg1);
    void checkBoxFeedBack_stateChanged(int arg1);
    void checkBoxAutoPlay_stateChanged(int arg1);
    /// Makes the window usable again when the subject window has closed.
    void refreshMainWindow();

protected:
    // app/MainWindow.cpp
    void setupGUIMainWindow();
    /// Sizes and places the window by the rule of windowGeometry() on the primary screen.
    void centerAndResizeMainWindow(bool center, double widthShare, double heightShare);
    void disableAllComponents();

    // app/MainWindow_parameters.cpp
    /// Copies the parameters into the controls and sizes what depends on them; once, at start-up.
    void initParameters();
    /// Reads the controls back into the parameters and refreshes the derived sizes.
    void getParameters();

    // app/MainWindow_session.cpp
    /// Prepares a session: the folder, the presentation order and the first token.
    void getReadyToGo();
    void genRandomSequence();
    void updateWavTextFields();

    // app/MainWindow_results.cpp
    /// Turns the reaction time sums into means; must run exactly once per session.
    void computeResults();
    /// Ends a session: results, signal, and the result files if they are wanted.
    void finishIt();
    void updateStatusString();

    // audio/MainWindow_soundFolder.cpp
    /// Lets the operator choose the sound folder and lists its tokens into the records.
    void selectFolder();
    void initDataEntries();

    // audio/MainWindow_playback.cpp
    /// Loads the token of the current trial and derives its sizes. A token that cannot be used
    /// leaves the previous token's sound in its place.
    void genWav();
    /// Schedules the current token's presentation, if one is left, and returns the advanced
    /// trialIndex.
    int playWav();
    /// How far the sound server is with the stream of audioSink, which must not be null.
    StreamFollower::Reading readStream() const;

    // data/MainWindow_resultFiles.cpp
    void updateOutputFilePath();
    void updateOutputFileName();
    void writeDataToTxt();

    // plots/MainWindow_plotSizes.cpp
    void updateNPointsToPlot();

    // plots/MainWindow_waveformAndSpectrum.cpp
    /// Each creates an empty chart and places it; a second call changes nothing.
    void displayEmptyWav();
    void displayEmptyFFT();
    /// Shows the current token. The vertical range covers all of it, also what is not plotted.
    void displayWav();
    /// Computes the current token's spectrum.
    void genFFT();
    /// Shows that spectrum. The vertical range covers all bins, also those that are not plotted.
    void displayFFT();

    // plots/MainWindow_trend.cpp
    void displayEmptyTrend();
    /// Lays the chart out for the tokens of a session that is being prepared, and shows how often
    /// each was taken for the mother's.
    void updateTrend();

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

    Data data;

    // What the charts show.
    QList<double> soundWave; ///< the current token's samples, one channel
    QList<double> timeAxis;  ///< time in ms of each waveform point
    QList<QPointF> wavePoints;
    QList<double> waveRange;
    QList<double> frequencies;
    QList<double> amplitudes;
    QList<double> phases;
    QList<QPointF> spectrumPoints;
    QList<double> spectrumRange;
    qint64 nFFT = 1024;
    double fftDuration = 0.6;
    double freqResolution = 1.6666666666666667;
    qint32 fftWindowType = 0;
    QList<double> trendX; ///< numbers of the tokens, from 1 on
    QList<double> trendY; ///< "Mother" answers so far, per token
    QList<QPointF> trendPoints;
    QList<double> trendRange = {0.0, 0.0};
    ChartFonts chartFonts;
    LineChart waveformChart;
    LineChart spectrumChart;
    LineChart trendChart;

    // Session flow.
    QList<int> randomSequence; ///< token indexes in presentation order
    qint32 trialIndex = 0;     ///< presentations scheduled so far
    qint32 tokenIndex = 0;     ///< record of the token being presented
    qint32 nTimesSeq = 0;
    qint32 nTokens = 0;
    qint32 playCount = 0;
    qint32 maxPlayCount = 0;
    QTimer presentationTimer;               ///< runs in the delay before a token
    StreamFollower::Time presentationDue{}; ///< when it is to fire, by streamFollower's clock
    QElapsedTimer *reactionTimer = nullptr;
    qint32 reactionTimerStarts = 0;
    SubjectWindow *subjectWindow = nullptr;
    QString statusString;

    // The current token and its playing. The pointers are null while nothing plays; after a failure
    // of the output they stay until the next token is played or the next session prepared.
    CWav wav;
    TokenSize currentToken;
    QString soundPath;
    QAudioFormat audioOutputFormat;
    QByteArray *audioData = nullptr;
    QBuffer *audioBuffer = nullptr;
    QAudioSink *audioSink = nullptr;
    std::unique_ptr<SilentStream> silentStream; ///< from "Go" until the subject window has closed
    StreamFollower streamFollower;
    QList<PresentationTiming> presentationTimings; ///< one per presentation, like data.entries

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
