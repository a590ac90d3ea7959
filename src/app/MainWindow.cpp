// SPDX-License-Identifier: GPL-3.0-or-later
// The operator's window: its controls, their layout and their simple handlers.
// Declared in app/MainWindow.h.

#include "app/MainWindow.h"

#include "app/FieldText.h"
#include "app/OneLineValidator.h"
#include "app/ShownField.h"
#include "audio/SilentStream.h"
#include "subject/WindowGeometry.h"
#include "subject/WindowIcon.h"

#include <QApplication>
#include <QChartView>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

using namespace Qt::StringLiterals;

/// Names @p control and keeps it until the window is destroyed.
template<typename Control>
Control *MainWindow::keep(const QString &name, Control *control)
{
    control->setObjectName(name);
    controls.append(control);
    return control;
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , labelSesType(keep("labelSesType", new QLabel(u"Session type"_s)))
    , labelSoundType(keep("labelSoundType", new QLabel(u"Sound type"_s)))
    , labelMainParameter(keep("labelMainParameter", new QLabel(u"Main parameter"_s)))
    , labelSoundFileInformation(
          keep("labelSoundFileInformation", new QLabel(u"Sound File Information"_s)))
    , labelFs(keep("labelFs", new QLabel(u"Sampling rate"_s)))
    , labelDuration(keep("labelDuration", new QLabel(u"Sound duration (ms)"_s)))
    , labelSi(keep("labelSi", new QLabel(u"Silent interval (ms)"_s)))
    , labelSubCode(keep("labelSubCode", new QLabel(u"Subject code"_s)))
    , labelSesNum(keep("labelSesNum", new QLabel(u"Session"_s)))
    , labelNTimes(keep("labelNTimes", new QLabel(u"N times per token"_s)))
    , labelWavFilePath(keep("labelWavFilePath", new QLabel(u"WAV filepath"_s)))
    , labelWavFileName(keep("labelWavFileName", new QLabel(u"WAV filename"_s)))
    , labelOutputFilePath(keep("labelOutputFilePath", new QLabel(u"Output filepath"_s)))
    , labelOutputFileName(keep("labelOutputFileName", new QLabel(u"Output filename"_s)))
    , labelStatus(keep("labelStatus", new QLabel(u"Status"_s)))
    , comboBoxSesType(keep("comboBoxSesType", new QComboBox))
    , comboBoxSoundType(keep("comboBoxSoundType", new QComboBox))
    , comboBoxMainParameter(keep("comboBoxMainParameter", new QComboBox))
    , lineEditFs(keep("lineEditFs", new ShownField(u"40000"_s)))
    , lineEditDuration(keep("lineEditDuration", new ShownField(u"250.000"_s)))
    , lineEditSi(keep("lineEditSi", new ShownField(u"1000.000"_s)))
    , lineEditSubCode(keep("lineEditSubCode", new QLineEdit(u"SUB001"_s)))
    , lineEditSesNum(keep("lineEditSesNum", new QLineEdit(u"1"_s)))
    , lineEditNTimes(keep("lineEditNTimes", new QLineEdit(u"1"_s)))
    , lineEditWavFilePath(keep("lineEditWavFilePath", new ShownField(u"."_s)))
    , lineEditWavFileName(keep("lineEditWavFileName", new ShownField(u"File001.wav"_s)))
    , lineEditOutputFilePath(keep("lineEditOutputFilePath", new ShownField(u"."_s)))
    , lineEditOutputFileName(keep("lineEditOutputFileName", new ShownField(u"SUB001.dat"_s)))
    , lineEditStatus(keep("lineEditStatus", new ShownField))
    , pushButtonPractice(keep("pushButtonPractice", new QPushButton(u"Practice"_s)))
    , pushButtonExperiment(keep("pushButtonExperiment", new QPushButton(u"Experiment"_s)))
    , pushButtonGo(keep("pushButtonGo", new QPushButton(u"Go"_s)))
    , pushButtonQuit(keep("pushButtonQuit", new QPushButton(u"Quit"_s)))
    , checkBoxSaveData(keep("checkBoxSaveData", new QCheckBox(u"Save data to file"_s)))
    , checkBoxFeedBack(keep("checkBoxFeedBack", new QCheckBox(u"Provide feedback"_s)))
    , checkBoxAutoPlay(keep("checkBoxAutoPlay", new QCheckBox(u"Play sound automatically"_s)))
{
    setObjectName("MainWindow");
    constexpr int firstRow = 2;
    constexpr int lastRow = 14;
    for (int row = firstRow; row <= lastRow; ++row)
        rowLayouts.append(keep(u"rowLayout%1"_s.arg(row), new QHBoxLayout));
    gridLayoutControls = keep("gridLayoutControls", new QGridLayout);
    gridLayoutPlots = keep("gridLayoutPlots", new QGridLayout);
    gridLayoutMain = keep("gridLayoutMain", new QGridLayout);
    centralWidget = keep("centralWidget", new QWidget);

    connect(pushButtonPractice, SIGNAL(clicked()), this, SLOT(pushButtonPractice_clicked()));
    connect(pushButtonExperiment, SIGNAL(clicked()), this, SLOT(pushButtonExperiment_clicked()));
    connect(pushButtonGo, SIGNAL(clicked()), this, SLOT(pushButtonGo_clicked()));
    connect(pushButtonQuit, SIGNAL(clicked()), this, SLOT(close()));
    connect(comboBoxSesType, SIGNAL(currentIndexChanged(int)), this,
            SLOT(comboBoxSesType_currentIndexChanged(int)));
    connect(comboBoxSoundType, SIGNAL(currentIndexChanged(int)), this,
            SLOT(comboBoxSoundType_currentIndexChanged(int)));
    connect(comboBoxMainParameter, SIGNAL(currentIndexChanged(int)), this,
            SLOT(comboBoxMainParameter_currentIndexChanged(int)));
    connect(lineEditSubCode, SIGNAL(textChanged(QString)), this,
            SLOT(lineEditSubCode_textChanged(QString)));
    connect(lineEditSesNum, SIGNAL(textChanged(QString)), this,
            SLOT(lineEditSesNum_textChanged(QString)));
    connect(checkBoxSaveData, SIGNAL(stateChanged(int)), this,
            SLOT(checkBoxSaveData_stateChanged(int)));
    connect(checkBoxFeedBack, SIGNAL(stateChanged(int)), this,
            SLOT(checkBoxFeedBack_stateChanged(int)));
    connect(checkBoxAutoPlay, SIGNAL(stateChanged(int)), this,
            SLOT(checkBoxAutoPlay_stateChanged(int)));

    presentationTimer.setSingleShot(true);
    connect(&presentationTimer, &QTimer::timeout, this, &MainWindow::playOneSound);
    connect(&streamFollower, &StreamFollower::stalled, this, &MainWindow::reportStop);
    connect(&streamFollower, &StreamFollower::tokenHeard, this, [this] {
        // Releasing the output may take some 10 ms, so the reaction clock is started first.
        endSound();
        releaseAudioOutput();
    });

    for (QLineEdit *lineEdit : {lineEditSubCode, lineEditSesNum, lineEditNTimes})
        lineEdit->setValidator(new OneLineValidator(lineEdit));

    // Qt posts a request to quit too, but drops it if a dialog opens before the request is handled.
    connect(
        qApp, &QGuiApplication::lastWindowClosed, this, [] { QCoreApplication::exit(); },
        Qt::QueuedConnection);

    setupGUIMainWindow();
    initParameters();
    displayEmptyWav();
    displayEmptyFFT();
    displayEmptyTrend();
}

MainWindow::~MainWindow()
{
    // Releasing the output processes pending events, which must not start a presentation.
    presentationTimer.stop();
    releaseAudioOutput();
    silentStream.reset();
    journal.close(SessionEnd::Quit);

    for (const LineChart *chart : {&waveformChart, &spectrumChart, &trendChart})
        delete chart->view;

    delete reactionTimer;

    qDeleteAll(controls);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    closed = true;
    QMainWindow::closeEvent(event);
}

void MainWindow::addRow(int row, const QList<QWidget *> &widgets)
{
    QHBoxLayout *layout = rowLayouts.at(row - 2);
    for (QWidget *widget : widgets)
        layout->addWidget(widget);
    if (auto *label = qobject_cast<QLabel *>(widgets.first()))
        label->setBuddy(widgets.at(1));
    gridLayoutControls->addLayout(layout, row, 0, 1, 4);
}

void MainWindow::setupGUIMainWindow()
{
    centerAndResizeMainWindow(centerFlag, widthFraction, heightFraction);
    setWindowIcon(ostrineIcon());
    setWindowTitle(u"Tavel Lab | Ostrine (v014) | Main Window"_s);

    gridLayoutControls->addWidget(labelSoundFileInformation, 1, 0, 1, 4);
    addRow(2, {labelWavFilePath, lineEditWavFilePath});
    addRow(3, {labelWavFileName, lineEditWavFileName});
    addRow(4, {labelFs, lineEditFs});
    addRow(5, {labelDuration, lineEditDuration});
    addRow(6, {labelSi, lineEditSi});
    addRow(7, {labelSubCode, lineEditSubCode, checkBoxSaveData});
    addRow(8, {labelSesNum, lineEditSesNum});
    addRow(9, {labelNTimes, lineEditNTimes});
    addRow(10, {checkBoxFeedBack, checkBoxAutoPlay});
    addRow(11, {pushButtonPractice, pushButtonExperiment, pushButtonGo, pushButtonQuit});
    addRow(12, {labelOutputFilePath, lineEditOutputFilePath});
    addRow(13, {labelOutputFileName, lineEditOutputFileName});
    addRow(14, {labelStatus, lineEditStatus});
    labelSesType->setBuddy(comboBoxSesType);
    labelSoundType->setBuddy(comboBoxSoundType);
    labelMainParameter->setBuddy(comboBoxMainParameter);

    gridLayoutMain->addLayout(gridLayoutControls, 0, 0, 1, 1);
    gridLayoutMain->addLayout(gridLayoutPlots, 0, 1, 1, 1);
    centralWidget->setLayout(gridLayoutMain);
    setCentralWidget(centralWidget);

    labelSoundFileInformation->setAlignment(Qt::AlignHCenter);
    labelSoundFileInformation->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    labelSoundFileInformation->setMinimumWidth(100);
    for (QPushButton *button :
         {pushButtonPractice, pushButtonExperiment, pushButtonGo, pushButtonQuit})
        button->setMinimumHeight(60);
    // The trend chart has the longest title at its vertical axis.
    for (int row = 0; row <= 2; ++row)
        gridLayoutPlots->setRowStretch(row, row == 2 ? 5 : 4);
    gridLayoutMain->setColumnStretch(0, 1);
    gridLayoutMain->setColumnStretch(1, 2);
}

void MainWindow::centerAndResizeMainWindow(bool center, double widthShare, double heightShare)
{
    setGeometry(windowGeometry(QGuiApplication::primaryScreen()->availableSize(), center,
                               geometry().topLeft(), widthShare, heightShare));
}

void MainWindow::disableAllComponents()
{
    setEnabled(false);
}

void MainWindow::doNothing() {}

void MainWindow::comboBoxSesType_currentIndexChanged(int index)
{
    data.sesTypeIndex = index;
    updateOutputFileName();
}

void MainWindow::comboBoxSoundType_currentIndexChanged(int index)
{
    data.soundTypeIndex = index;
    updateOutputFileName();
}

void MainWindow::comboBoxMainParameter_currentIndexChanged(int index)
{
    data.mainParameterIndex = index;
    updateOutputFileName();
}

void MainWindow::lineEditSubCode_textChanged(QString arg1)
{
    data.subCode = arg1;
    updateOutputFilePath();
    updateOutputFileName();
}

void MainWindow::lineEditSesNum_textChanged(QString arg1)
{
    data.sesNum = intOrZero(arg1);
    updateOutputFileName();
}

void MainWindow::checkBoxSaveData_stateChanged(int arg1)
{
    data.saveData = arg1 == Qt::Checked;
}

void MainWindow::checkBoxFeedBack_stateChanged(int arg1)
{
    data.feedBack = arg1 == Qt::Checked;
    // Without feedback the next token always plays automatically, and the check box shows that.
    if (!data.feedBack)
        checkBoxAutoPlay->setChecked(true);
    checkBoxAutoPlay->setEnabled(data.feedBack);
}

void MainWindow::checkBoxAutoPlay_stateChanged(int arg1)
{
    data.autoPlay = arg1 == Qt::Checked;
}

void MainWindow::refreshMainWindow()
{
    journal.close(SessionEnd::BrokenOff);
    silentStream.reset(); // may process events, during which the controls must still be disabled
    setEnabled(true);
    lineEditNTimes->setEnabled(true);
    pushButtonPractice->setEnabled(true);
    pushButtonExperiment->setEnabled(true);
    pushButtonGo->setEnabled(false);
}
