// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/Contrast.h"
#include "support/GuiTestMain.h"
#include "support/MethodTable.h"
#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"

#include <QChartView>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QPointer>
#include <QPushButton>
#include <QResource>
#include <QScopeGuard>
#include <QScreen>
#include <QSignalSpy>
#include <QTextDocument>
#include <QToolTip>
#include <QValueAxis>

#include <memory>

namespace {

QString desktop()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}

/// The object names of what a row layout holds, from left to right.
QStringList namesIn(const QLayout *row)
{
    QStringList names;
    for (int i = 0; i < row->count(); ++i)
        names.append(row->itemAt(i)->widget()->objectName());
    return names;
}

QRect cellOf(const QGridLayout *grid, const QLayoutItem *item)
{
    int row = -1;
    int column = -1;
    int rowSpan = -1;
    int columnSpan = -1;
    for (int i = 0; i < grid->count(); ++i) {
        if (grid->itemAt(i) == item)
            grid->getItemPosition(i, &row, &column, &rowSpan, &columnSpan);
    }
    return {column, row, columnSpan, rowSpan};
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWindowHasItsTitleAndNoIcon();
    void bothWindowsShowAnIconThatIsInTheResources();
    void theSignalsAndSlotsStandInTheirOrder();
    void eachLabelIsShownWithItsText_data();
    void eachLabelIsShownWithItsText();
    void eachButtonAndCheckBoxHasItsText_data();
    void eachButtonAndCheckBoxHasItsText();
    void eachRowHoldsItsControlsInOrder_data();
    void eachRowHoldsItsControlsInOrder();
    void theControlsAreLeftOfThePlots();
    void theHeadingIsCentredAndKeepsItsHeight();
    void theButtonsAreAtLeast60PixelsHigh();
    void eachLabelHasItsFieldAsBuddy_data();
    void eachLabelHasItsFieldAsBuddy();
    void theSelectorsStayOutOfTheWindow();

    void theWindowStartsInTheMiddleOfTheScreen();
    void theWindowTakesItsShareOfTheScreenWithinLimits_data();
    void theWindowTakesItsShareOfTheScreenWithinLimits();

    void eachFieldStartsWithItsTextOpenOrLocked_data();
    void eachFieldStartsWithItsTextOpenOrLocked();
    void onlyPracticeAndQuitCanBePressedAtTheStart();
    void theParametersStartAsTheDefaultDurationNeeds();

    void theTabKeyGoesThroughTheRows();
    void whatIsShownCanBeRead_data();
    void whatIsShownCanBeRead();
    void aLongTextShowsItsEndsAndIsWholeInTheToolTip_data();
    void aLongTextShowsItsEndsAndIsWholeInTheToolTip();
    void aToolTipIsNoHtml();

    void switchingFeedbackOffLocksAutoPlayOn();
    void eachCheckBoxSetsItsOwnField();
    void aPartlyCheckedBoxCountsAsOff();
    void theSessionNumberIsReadAndNamesTheFile_data();
    void theSessionNumberIsReadAndNamesTheFile();
    void theSubjectCodeNamesFolderAndFile_data();
    void theSubjectCodeNamesFolderAndFile();
    void eachSelectorSetsItsFieldAndTheFileName();
    void theFieldsAreReadBackInTheirUnits_data();
    void theFieldsAreReadBackInTheirUnits();
    void theWaveformSpanFollowsTheDuration();

    void theStatusCountsTrialsFromOne();
    void disablingLocksTheWholeWindow();
    void doNothingChangesNothing();
    void refreshingUnlocksEverythingButGo();
    void quitClosesTheWindowAndWritesNothing();

    void eachPreparationDrawsANewOrder();
    void aPreparationLooksUpTheDesktopAgain();
    void goDeliversTheSettingsBeforeTheSubjectWindowShows();
    void anEarlierSubjectWindowHasNoSayAfterASecondGo();

    void theWindowCanBeDestroyedInEveryState_data();
    void theWindowCanBeDestroyedInEveryState();
    void theChartsAreDestroyedBeforeTheControls();

private:
    bool prepare() const;

    std::unique_ptr<QTemporaryDir> m_folder; ///< holds one token
    std::unique_ptr<OperatorWindow> m_window;
};

void TestMainWindow::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(writeFile(m_folder->filePath("a.wav"),
                      WavBytes{.data = WavBytes::samples16({1, 2, 3})}.bytes()));
    m_window = std::make_unique<OperatorWindow>();
}

void TestMainWindow::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

/// Presses "Practice" and chooses the folder; false when no session can be started then.
bool TestMainWindow::prepare() const
{
    ModalAnswer answers;
    answers.choose(m_folder->path());
    m_window->pushButtonPractice->click();
    return answers.problem().isEmpty() && m_window->pushButtonGo->isEnabled();
}

// Catches another title, and an icon where the platform's default is to show.
void TestMainWindow::theWindowHasItsTitleAndNoIcon()
{
    QCOMPARE(m_window->windowTitle(), "Tavel Lab | Ostrine (v014) | Main Window");
    QVERIFY(m_window->windowIcon().pixmap(16).isNull());
}

// Catches another place for the icon, and a window that does not look there.
void TestMainWindow::bothWindowsShowAnIconThatIsInTheResources()
{
    const QString resources = QCoreApplication::applicationDirPath() + "/icon.rcc";
    QVERIFY(QResource::registerResource(resources));
    const auto cleanUp = qScopeGuard([&] { QResource::unregisterResource(resources); });
    const MainWindow operatorWindow;
    const SubjectWindow subjectWindow;
    QVERIFY(!operatorWindow.windowIcon().pixmap(16).isNull());
    QVERIFY(!subjectWindow.windowIcon().pixmap(16).isNull());
}

// Catches a signal or slot that is missing, renamed, out of order or with other arguments.
void TestMainWindow::theSignalsAndSlotsStandInTheirOrder()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(methodTable(meta), QStringList({"signal soundPlaying(int)",
                                             "signal doneDataCollection(double,double,int)",
                                             "signal deliverFeedBackStatus(bool)",
                                             "signal deliverAutoPlayStatus(bool)",
                                             "signal deliverSubCode(QString)",
                                             "signal deliverWavFileName(QString)",
                                             "slot pushButtonPractice_clicked()",
                                             "slot pushButtonExperiment_clicked()",
                                             "slot pushButtonGo_clicked()",
                                             "slot updateMainwindow(int)",
                                             "slot playOneSound()",
                                             "slot doNothing()",
                                             "slot handleAudioStateChanged(QAudio::State)",
                                             "slot comboBoxSesType_currentIndexChanged(int)",
                                             "slot comboBoxSoundType_currentIndexChanged(int)",
                                             "slot comboBoxMainParameter_currentIndexChanged(int)",
                                             "slot lineEditSubCode_textChanged(QString)",
                                             "slot lineEditSesNum_textChanged(QString)",
                                             "slot checkBoxSaveData_stateChanged(int)",
                                             "slot checkBoxFeedBack_stateChanged(int)",
                                             "slot checkBoxAutoPlay_stateChanged(int)",
                                             "slot refreshMainWindow()"}));
    QByteArrayList names;
    for (int i = 0; i < 5; ++i)
        names += meta.method(meta.methodOffset() + i).parameterNames();
    QCOMPARE(names, QByteArrayList({"index", "threshold", "reactionTime", "mainParameterIndex",
                                    "feedBack", "autoPlay", "subCode"}));
}

void TestMainWindow::eachLabelIsShownWithItsText_data()
{
    QTest::addColumn<QString>("text");
    const QList<std::pair<const char *, const char *>> all = {
        {"labelSoundFileInformation", "Sound File Information"},
        {"labelFs", "Sampling rate"},
        {"labelDuration", "Sound duration (ms)"},
        {"labelSi", "Silent interval (ms)"},
        {"labelSubCode", "Subject code"},
        {"labelSesNum", "Session"},
        {"labelNTimes", "N times per token"},
        {"labelWavFilePath", "WAV filepath"},
        {"labelWavFileName", "WAV filename"},
        {"labelOutputFilePath", "Output filepath"},
        {"labelOutputFileName", "Output filename"},
        {"labelStatus", "Status"}};
    for (const auto &[name, text] : all)
        QTest::newRow(name) << text;
}

// Catches a changed label, and one that is not shown.
void TestMainWindow::eachLabelIsShownWithItsText()
{
    const auto *label = m_window->findChild<QLabel *>(QTest::currentDataTag());
    QVERIFY(label);
    QTEST(label->text(), "text");
    QVERIFY(label->isVisibleTo(m_window.get()));
}

void TestMainWindow::eachButtonAndCheckBoxHasItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("pushButtonPractice") << "Practice";
    QTest::newRow("pushButtonExperiment") << "Experiment";
    QTest::newRow("pushButtonGo") << "Go";
    QTest::newRow("pushButtonQuit") << "Quit";
    QTest::newRow("checkBoxSaveData") << "Save data to file";
    QTest::newRow("checkBoxFeedBack") << "Provide feedback";
    QTest::newRow("checkBoxAutoPlay") << "Play sound automatically";
}

// Catches a changed text of a button or check box.
void TestMainWindow::eachButtonAndCheckBoxHasItsText()
{
    const auto *button = m_window->findChild<QAbstractButton *>(QTest::currentDataTag());
    QVERIFY(button);
    QTEST(button->text(), "text");
}

void TestMainWindow::eachRowHoldsItsControlsInOrder_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("names");
    const QList<QStringList> rows = {
        {"labelWavFilePath", "lineEditWavFilePath"},
        {"labelWavFileName", "lineEditWavFileName"},
        {"labelFs", "lineEditFs"},
        {"labelDuration", "lineEditDuration"},
        {"labelSi", "lineEditSi"},
        {"labelSubCode", "lineEditSubCode", "checkBoxSaveData"},
        {"labelSesNum", "lineEditSesNum"},
        {"labelNTimes", "lineEditNTimes"},
        {"checkBoxFeedBack", "checkBoxAutoPlay"},
        {"pushButtonPractice", "pushButtonExperiment", "pushButtonGo", "pushButtonQuit"},
        {"labelOutputFilePath", "lineEditOutputFilePath"},
        {"labelOutputFileName", "lineEditOutputFileName"},
        {"labelStatus", "lineEditStatus"}};
    for (int i = 0; i < rows.size(); ++i)
        QTest::addRow("%d", i + 2) << i + 2 << rows.at(i);
}

// Catches controls in another row or order, and a row which does not span the four columns.
void TestMainWindow::eachRowHoldsItsControlsInOrder()
{
    QFETCH(const int, row);
    QLayoutItem *item = m_window->gridLayoutControls->itemAtPosition(row, 0);
    QVERIFY(item && item->layout());
    QTEST(namesIn(item->layout()), "names");
    QCOMPARE(cellOf(m_window->gridLayoutControls, item), QRect(0, row, 4, 1));
    QVERIFY(qobject_cast<QHBoxLayout *>(item->layout()));
}

// Catches the halves of the window swapped, the plots' share of the width and a filled row 0.
void TestMainWindow::theControlsAreLeftOfThePlots()
{
    QGridLayout *grid = m_window->gridLayoutMain;
    QVERIFY(m_window->QMainWindow::centralWidget()->layout() == grid);
    QVERIFY(grid->itemAtPosition(0, 0)->layout() == m_window->gridLayoutControls);
    QVERIFY(grid->itemAtPosition(0, 1)->layout() == m_window->gridLayoutPlots);
    QCOMPARE(cellOf(grid, grid->itemAtPosition(0, 0)), QRect(0, 0, 1, 1));
    QCOMPARE(cellOf(grid, grid->itemAtPosition(0, 1)), QRect(1, 0, 1, 1));
    QCOMPARE(grid->columnStretch(0), 1);
    QCOMPARE(grid->columnStretch(1), 2);
    QCOMPARE(m_window->rowLayouts.size(), 13);
    QCOMPARE(m_window->gridLayoutControls->count(), 14);
    for (int column = 0; column < 4; ++column)
        QVERIFY(!m_window->gridLayoutControls->itemAtPosition(0, column));
}

// Catches a heading that is not centred, grows in height or may shrink below its least width.
void TestMainWindow::theHeadingIsCentredAndKeepsItsHeight()
{
    const auto *heading = m_window->findChild<QLabel *>("labelSoundFileInformation");
    QVERIFY(m_window->gridLayoutControls->itemAtPosition(1, 0)->widget() == heading);
    QCOMPARE(heading->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    QCOMPARE(heading->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(heading->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    QCOMPARE(heading->minimumWidth(), 100);
}

// Catches a button of the usual, too small height.
void TestMainWindow::theButtonsAreAtLeast60PixelsHigh()
{
    m_window->show();
    for (const QPushButton *button : {m_window->pushButtonPractice, m_window->pushButtonExperiment,
                                      m_window->pushButtonGo, m_window->pushButtonQuit}) {
        QCOMPARE(button->minimumHeight(), 60);
        QVERIFY(button->height() >= 60);
    }
}

void TestMainWindow::eachLabelHasItsFieldAsBuddy_data()
{
    QTest::addColumn<QString>("buddy");
    for (const char *stem : {"WavFilePath", "WavFileName", "Fs", "Duration", "Si", "SubCode",
                             "SesNum", "NTimes", "OutputFilePath", "OutputFileName", "Status"})
        QTest::newRow(stem) << QString("lineEdit") + stem;
}

// Catches a field whose label a screen reader cannot tell.
void TestMainWindow::eachLabelHasItsFieldAsBuddy()
{
    const auto *label = m_window->findChild<QLabel *>(QString("label") + QTest::currentDataTag());
    QVERIFY(label && label->buddy());
    QTEST(label->buddy()->objectName(), "buddy");
}

// Catches a selector that gets into the window, and one without its items.
void TestMainWindow::theSelectorsStayOutOfTheWindow()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    const QList<QWidget *> hidden = {m_window->comboBoxSesType,       m_window->comboBoxSoundType,
                                     m_window->comboBoxMainParameter, m_window->labelSesType,
                                     m_window->labelSoundType,        m_window->labelMainParameter};
    for (const QWidget *widget : hidden) {
        QVERIFY2(!widget->isVisible(), qPrintable(widget->objectName()));
        QVERIFY2(!widget->parentWidget(), qPrintable(widget->objectName()));
    }
    QCOMPARE(m_window->labelSesType->text(), "Session type");
    QCOMPARE(m_window->labelSoundType->text(), "Sound type");
    QCOMPARE(m_window->labelMainParameter->text(), "Main parameter");

    const auto items = [](const QComboBox *comboBox) {
        QStringList texts;
        for (int i = 0; i < comboBox->count(); ++i)
            texts.append(comboBox->itemText(i));
        return texts;
    };
    QCOMPARE(items(m_window->comboBoxSesType), QStringList({"practice", "experiment"}));
    QCOMPARE(items(m_window->comboBoxSoundType), QStringList({".wav files", "reserved"}));
    QCOMPARE(items(m_window->comboBoxMainParameter), QStringList({"sound files", "reserved"}));
    for (const QComboBox *comboBox :
         {m_window->comboBoxSesType, m_window->comboBoxSoundType, m_window->comboBoxMainParameter})
        QCOMPARE(comboBox->currentIndex(), 0);
}

// Catches other shares of the screen or another place than its middle; run on two screens, of which
// the smaller one shows the window as wide as its contents need.
void TestMainWindow::theWindowStartsInTheMiddleOfTheScreen()
{
    const QRect expected =
        testScreen() == QSize(1440, 900) ? QRect(144, 45, 1152, 810) : QRect(80, 40, 640, 720);
    QCOMPARE(QGuiApplication::primaryScreen()->availableSize(), testScreen());
    QCOMPARE(m_window->geometry(), expected);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QCOMPARE(m_window->geometry().topLeft(), expected.topLeft());
    QCOMPARE(m_window->size(), expected.size().expandedTo(m_window->minimumSizeHint()));
    QCOMPARE(m_window->width() == expected.width(), testScreen() == QSize(1440, 900));
}

void TestMainWindow::theWindowTakesItsShareOfTheScreenWithinLimits_data()
{
    QTest::addColumn<bool>("center");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<QPoint>("before");
    QTest::addColumn<QRect>("expected");

    QTest::newRow("centred") << true << 0.5 << 0.25 << QPoint(7, 9) << QRect(200, 300, 400, 200);
    QTest::newRow("truncated") << true << 0.3333 << 0.6666 << QPoint(7, 9)
                               << QRect(267, 133, 266, 533);
    QTest::newRow("above 1") << true << 1.5 << 20.0 << QPoint(7, 9) << QRect(0, 0, 800, 800);
    QTest::newRow("negative") << true << -0.5 << 0.5 << QPoint(7, 9) << QRect(400, 200, 0, 400);
    QTest::newRow("stays") << false << 0.5 << 0.5 << QPoint(120, 90) << QRect(120, 90, 400, 400);
    QTest::newRow("stays, but off the edges")
        << false << 0.5 << 0.5 << QPoint(-30, 12) << QRect(5, 40, 400, 400);
}

// Catches a fraction that is not limited or rounded, and a corner that is not kept.
void TestMainWindow::theWindowTakesItsShareOfTheScreenWithinLimits()
{
    QFETCH(const bool, center);
    QFETCH(const double, width);
    QFETCH(const double, height);
    QFETCH(const QPoint, before);
    m_window->setGeometry(QRect(before, QSize(300, 300)));
    m_window->centerAndResizeMainWindow(center, width, height);
    QTEST(m_window->geometry(), "expected");
}

void TestMainWindow::eachFieldStartsWithItsTextOpenOrLocked_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("lineEditFs") << "48000" << false;
    QTest::newRow("lineEditDuration") << "250.000" << false;
    QTest::newRow("lineEditSi") << "1000.000" << false;
    QTest::newRow("lineEditSubCode") << "CHD001" << true;
    QTest::newRow("lineEditSesNum") << "1" << true;
    QTest::newRow("lineEditNTimes") << "1" << true;
    QTest::newRow("lineEditWavFilePath") << desktop() << false;
    QTest::newRow("lineEditWavFileName") << "MOV001_01.wav" << false;
    QTest::newRow("lineEditOutputFilePath") << desktop() + "/CHD001" << false;
    QTest::newRow("lineEditOutputFileName") << "CHD001_practice001.txt" << false;
    QTest::newRow("lineEditStatus") << "not started yet" << false;
}

// Catches a text of creation time left standing, and a field that is open to be edited or is not.
void TestMainWindow::eachFieldStartsWithItsTextOpenOrLocked()
{
    const auto *lineEdit = m_window->findChild<QLineEdit *>(QTest::currentDataTag());
    QVERIFY(lineEdit);
    QTEST(lineEdit->text(), "text");
    QTEST(lineEdit->isEnabled(), "enabled");
}

// Catches an experiment offered before the practice, a Go without tokens and a switch left off.
void TestMainWindow::onlyPracticeAndQuitCanBePressedAtTheStart()
{
    QVERIFY(m_window->isEnabled());
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(!m_window->pushButtonExperiment->isEnabled());
    QVERIFY(!m_window->pushButtonGo->isEnabled());
    QVERIFY(m_window->pushButtonQuit->isEnabled());
    for (const QCheckBox *checkBox :
         {m_window->checkBoxSaveData, m_window->checkBoxFeedBack, m_window->checkBoxAutoPlay}) {
        QVERIFY2(checkBox->isChecked(), qPrintable(checkBox->objectName()));
        QVERIFY2(checkBox->isEnabled(), qPrintable(checkBox->objectName()));
    }
}

// Catches sizes that do not follow from the default duration, and another format of what is played.
void TestMainWindow::theParametersStartAsTheDefaultDurationNeeds()
{
    QCOMPARE(m_window->data.alwaysPlotEntireWaveformFlag, 1);
    QCOMPARE(m_window->data.nPointsToPlot, 12000);
    QCOMPARE(m_window->data.nFreqPointsToPlot, 682);
    QVERIFY(!m_window->reactionTimer->isValid());
    QVERIFY(!m_window->audioSink);
    QCOMPARE(m_window->audioOutputFormat.sampleRate(), 48000);
    QCOMPARE(m_window->audioOutputFormat.channelCount(), 1);
    QCOMPARE(m_window->audioOutputFormat.sampleFormat(), QAudioFormat::Float);
}

// Catches a session without feedback in which the subject would wait for a "Next" in vain.
void TestMainWindow::switchingFeedbackOffLocksAutoPlayOn()
{
    m_window->show();
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(!m_window->data.autoPlay);

    m_window->checkBoxFeedBack->click();
    QVERIFY(!m_window->data.feedBack);
    QVERIFY(m_window->checkBoxAutoPlay->isChecked());
    QVERIFY(m_window->data.autoPlay);
    QVERIFY(!m_window->checkBoxAutoPlay->isEnabled());

    m_window->checkBoxFeedBack->click();
    QVERIFY(m_window->data.feedBack);
    QVERIFY(m_window->checkBoxAutoPlay->isChecked());
    QVERIFY(m_window->checkBoxAutoPlay->isEnabled());
}

// Catches a check box that is connected to another field or to none.
void TestMainWindow::eachCheckBoxSetsItsOwnField()
{
    m_window->show();
    m_window->checkBoxSaveData->click();
    QVERIFY(!m_window->data.saveData && m_window->data.feedBack && m_window->data.autoPlay);
    m_window->checkBoxAutoPlay->click();
    QVERIFY(!m_window->data.saveData && m_window->data.feedBack && !m_window->data.autoPlay);
    m_window->checkBoxSaveData->click();
    m_window->checkBoxAutoPlay->click();
    QVERIFY(m_window->data.saveData && m_window->data.feedBack && m_window->data.autoPlay);
}

// Catches a state that is taken for on because it is not off.
void TestMainWindow::aPartlyCheckedBoxCountsAsOff()
{
    m_window->checkBoxSaveData_stateChanged(Qt::PartiallyChecked);
    QVERIFY(!m_window->data.saveData);
    m_window->checkBoxAutoPlay_stateChanged(Qt::PartiallyChecked);
    QVERIFY(!m_window->data.autoPlay);
    m_window->checkBoxFeedBack_stateChanged(Qt::PartiallyChecked);
    QVERIFY(!m_window->data.feedBack);
    QVERIFY(!m_window->checkBoxAutoPlay->isEnabled());
}

void TestMainWindow::theSessionNumberIsReadAndNamesTheFile_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("sesNum");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("one digit") << "7" << 7 << "CHD001_practice007.txt";
    QTest::newRow("two digits") << "12" << 12 << "CHD001_practice012.txt";
    QTest::newRow("four digits") << "1234" << 1234 << "CHD001_practice1234.txt";
    QTest::newRow("letters") << "abc" << 0 << "CHD001_practice000.txt";
    QTest::newRow("empty") << "" << 0 << "CHD001_practice000.txt";
    QTest::newRow("hexadecimal") << "0x10" << 0 << "CHD001_practice000.txt";
    QTest::newRow("fraction") << "1.5" << 0 << "CHD001_practice000.txt";
    QTest::newRow("largest") << "2147483647" << 2147483647 << "CHD001_practice2147483647.txt";
    QTest::newRow("too large") << "2147483648" << 0 << "CHD001_practice000.txt";
}

// Catches a number that is not parsed as the base-10 int, and a file name that does not follow.
void TestMainWindow::theSessionNumberIsReadAndNamesTheFile()
{
    QFETCH(const QString, typed);
    m_window->lineEditSesNum->setText(typed);
    QTEST(m_window->data.sesNum, "sesNum");
    QTEST(m_window->data.outputFileName, "fileName");
    QTEST(m_window->lineEditOutputFileName->text(), "fileName");
    m_window->getParameters();
    QTEST(m_window->data.sesNum, "sesNum");
}

void TestMainWindow::theSubjectCodeNamesFolderAndFile_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("short") << "S7";
    QTest::newRow("longer") << "CHD00123";
    QTest::newRow("empty") << "";
    QTest::newRow("letters outside ASCII") << QString::fromUtf8("Zo\u00eb");
    QTest::newRow("percent signs") << "%1%2";
}

// Catches a folder or name that keeps the earlier code, and a code taken for a format.
void TestMainWindow::theSubjectCodeNamesFolderAndFile()
{
    QFETCH(const QString, code);
    m_window->lineEditSubCode->setText(code);
    QCOMPARE(m_window->data.subCode, code);
    QCOMPARE(m_window->data.outputFilePath, desktop() + '/' + code);
    QCOMPARE(m_window->lineEditOutputFilePath->text(), desktop() + '/' + code);
    QCOMPARE(m_window->data.outputFileName, code + "_practice001.txt");
    QCOMPARE(m_window->lineEditOutputFileName->text(), code + "_practice001.txt");
}

// Catches a selector connected to another index, and a name that ignores the session type.
void TestMainWindow::eachSelectorSetsItsFieldAndTheFileName()
{
    m_window->comboBoxSesType->setCurrentIndex(1);
    QCOMPARE(m_window->data.sesTypeIndex, 1);
    QCOMPARE(m_window->lineEditOutputFileName->text(), "CHD001_experiment001.txt");
    for (QComboBox *comboBox : {m_window->comboBoxSoundType, m_window->comboBoxMainParameter}) {
        m_window->lineEditOutputFileName->setText("something else");
        comboBox->setCurrentIndex(1);
        QCOMPARE(m_window->lineEditOutputFileName->text(), "CHD001_experiment001.txt");
    }
    QCOMPARE(m_window->data.soundTypeIndex, 1);
    QCOMPARE(m_window->data.mainParameterIndex, 1);
    m_window->comboBoxSesType->setCurrentIndex(0);
    QCOMPARE(m_window->data.sesTypeIndex, 0);
    QCOMPARE(m_window->data.soundTypeIndex, 1);
}

void TestMainWindow::theFieldsAreReadBackInTheirUnits_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("fs");
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("si");
    QTest::addColumn<int>("nTimes");
    QTest::addColumn<int>("nSamples");
    QTest::newRow("rate") << "lineEditFs"
                          << "22050" << 22050.0 << 0.25 << 1.0 << 1 << 5512;
    QTest::newRow("rate, no number") << "lineEditFs"
                                     << "x" << 0.0 << 0.25 << 1.0 << 1 << 0;
    QTest::newRow("duration") << "lineEditDuration"
                              << "250.021" << 48000.0 << 0.250021 << 1.0 << 1 << 12001;
    QTest::newRow("duration, no number") << "lineEditDuration"
                                         << "" << 48000.0 << 0.0 << 1.0 << 1 << 0;
    QTest::newRow("interval") << "lineEditSi"
                              << "12.5" << 48000.0 << 0.25 << 0.0125 << 1 << 12000;
    QTest::newRow("interval, no number") << "lineEditSi"
                                         << "1,5" << 48000.0 << 0.25 << 0.0 << 1 << 12000;
    QTest::newRow("times") << "lineEditNTimes"
                           << "20" << 48000.0 << 0.25 << 1.0 << 20 << 12000;
    QTest::newRow("times, no number") << "lineEditNTimes"
                                      << "x" << 48000.0 << 0.25 << 1.0 << 0 << 12000;
}

// Catches a field that is not read, read in another unit, or not refused when it is no number.
void TestMainWindow::theFieldsAreReadBackInTheirUnits()
{
    QFETCH(const QString, field);
    QFETCH(const QString, typed);
    m_window->findChild<QLineEdit *>(field)->setText(typed);
    m_window->getParameters();
    QTEST(m_window->data.fs, "fs");
    QTEST(m_window->data.soundDuration, "duration");
    QTEST(m_window->data.si, "si");
    QTEST(m_window->data.nTimes, "nTimes");
    QTEST(m_window->data.nSamples, "nSamples");
    QCOMPARE(m_window->data.nPointsToPlot, m_window->data.nSamples);
}

// Catches a waveform span that does not follow the token's duration back and forth.
void TestMainWindow::theWaveformSpanFollowsTheDuration()
{
    auto *duration = m_window->findChild<QLineEdit *>("lineEditDuration");
    duration->setText("500.000");
    m_window->getParameters();
    QCOMPARE(m_window->data.nPointsToPlot, 24000);
    QCOMPARE(m_window->data.durationToPlot, 0.5);
    duration->setText("100.000");
    m_window->getParameters();
    QCOMPARE(m_window->data.nPointsToPlot, 4800);
    QCOMPARE(m_window->data.durationToPlot, 0.1);
}

// Catches a number that starts at zero, another total and the stored session type in its place.
void TestMainWindow::theStatusCountsTrialsFromOne()
{
    m_window->randomSequence = QList<int>(20, 0);
    m_window->updateStatusString();
    QCOMPARE(m_window->lineEditStatus->text(), "practice 1/20");
    m_window->trialIndex = 19;
    m_window->comboBoxSesType->setCurrentIndex(1);
    m_window->data.sesTypeIndex = 0;
    m_window->updateStatusString();
    QCOMPARE(m_window->lineEditStatus->text(), "experiment 20/20");
}

// Catches a key that jumps between the rows, misses a control or stops at one that takes no input.
void TestMainWindow::theTabKeyGoesThroughTheRows()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    for (QPushButton *button : {m_window->pushButtonExperiment, m_window->pushButtonGo})
        button->setEnabled(true);
    m_window->lineEditSubCode->setFocus();
    QStringList reached;
    for (int i = 0; i < 11; ++i) {
        reached.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(reached, QStringList({"lineEditSubCode", "checkBoxSaveData", "lineEditSesNum",
                                   "lineEditNTimes", "checkBoxFeedBack", "checkBoxAutoPlay",
                                   "pushButtonPractice", "pushButtonExperiment", "pushButtonGo",
                                   "pushButtonQuit", "lineEditSubCode"}));
}

void TestMainWindow::whatIsShownCanBeRead_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

// Catches a field that is too pale to be read: always, or while a session locks the window.
void TestMainWindow::whatIsShownCanBeRead()
{
    QFETCH(const bool, isDark);
    if (isDark)
        m_window->setPalette(QPalette(QColor(60, 60, 60), QColor(40, 40, 40)));
    m_window->show();
    for (const bool isLocked : {false, true}) {
        m_window->setEnabled(!isLocked);
        for (const char *stem : {"WavFilePath", "WavFileName", "Fs", "Duration", "Si",
                                 "OutputFilePath", "OutputFileName", "Status"}) {
            auto *field = m_window->findChild<QLineEdit *>(QString("lineEdit") + stem);
            const QImage image = field->grab().toImage();
            const QRect inside = image.rect().adjusted(3, 3, -3, -3);
            const QColor background = image.pixelColor(inside.bottomRight());
            QVERIFY2(highestContrast(image, inside, background) >= 4.5, stem);
        }
    }
}

void TestMainWindow::aLongTextShowsItsEndsAndIsWholeInTheToolTip_data()
{
    QTest::addColumn<QString>("field");
    for (const char *stem : {"WavFilePath", "WavFileName", "OutputFilePath", "OutputFileName"})
        QTest::newRow(stem) << QString("lineEdit") + stem;
}

// Catches a path of which only the beginning or the end can be seen, one that is cut within a
// letter, changed or not to be seen anywhere, and a tool tip that does not appear.
void TestMainWindow::aLongTextShowsItsEndsAndIsWholeInTheToolTip()
{
    QFETCH(const QString, field);
    auto *lineEdit = m_window->findChild<QLineEdit *>(field);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    const auto picture = [&](const QString &text) {
        lineEdit->setText(text);
        return lineEdit->grab().toImage();
    };
    const QString middle(300, 'x');
    const QImage shown = picture("/abc" + middle + "tokens");
    QCOMPARE(picture("/abc" + middle + middle + "tokens"), shown);
    QVERIFY(picture("/xbc" + middle + "tokens") != shown);
    QVERIFY(picture("/abc" + middle + "tokenx") != shown);
    // Nothing is painted where it would be cut.
    const QColor background = shown.pixelColor(shown.width() - 4, shown.height() - 4);
    QCOMPARE(highestContrast(shown, QRect(shown.width() - 4, 3, 2, shown.height() - 6), background),
             1.0);

    const QString whole = "/abc" + middle + "tokens";
    lineEdit->setText(whole);
    QCOMPARE(lineEdit->text(), whole);
    QTest::mouseMove(lineEdit, QPoint(5, 5));
    QTest::mouseMove(lineEdit, QPoint(15, 5));
    QTRY_COMPARE(QToolTip::text(), whole);
    QToolTip::hideText();
}

// Catches a folder whose name is taken for HTML.
void TestMainWindow::aToolTipIsNoHtml()
{
    const QString name = "/home/<b>tokens</b>";
    m_window->lineEditWavFilePath->setText(name);
    QTextDocument shown;
    shown.setHtml(m_window->lineEditWavFilePath->toolTip());
    QCOMPARE(shown.toPlainText(), name);
}

// Catches a control of the operator's that stays alive while the subject works.
void TestMainWindow::disablingLocksTheWholeWindow()
{
    m_window->disableAllComponents();
    QVERIFY(!m_window->isEnabled());
    QVERIFY(!m_window->pushButtonQuit->isEnabled());
}

// Catches an effect of the slot that is to have none.
void TestMainWindow::doNothingChangesNothing()
{
    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    m_window->doNothing();
    QCOMPARE(sound.size(), 0);
    QVERIFY(m_window->isEnabled());
    QCOMPARE(m_window->lineEditStatus->text(), "not started yet");
}

// Catches an experiment that stays locked after practice, and a Go without preparation.
void TestMainWindow::refreshingUnlocksEverythingButGo()
{
    m_window->disableAllComponents();
    m_window->lineEditNTimes->setEnabled(false);
    m_window->pushButtonPractice->setEnabled(false);
    m_window->pushButtonGo->setEnabled(true);
    m_window->refreshMainWindow();
    QVERIFY(m_window->isEnabled());
    QVERIFY(m_window->lineEditNTimes->isEnabled());
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(m_window->pushButtonExperiment->isEnabled());
    QVERIFY(!m_window->pushButtonGo->isEnabled());
}

// Catches a Quit that asks, does nothing or writes a file.
void TestMainWindow::quitClosesTheWindowAndWritesNothing()
{
    const ModalAnswer nothing;
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTest::mouseClick(m_window->pushButtonQuit, Qt::LeftButton);
    QVERIFY(!m_window->isVisible());
    QVERIFY(!QDir(desktop() + "/CHD001").exists());
    QCOMPARE(nothing.problem(), "");
}

// Catches an order of presentations that comes again: in the same window or in another.
void TestMainWindow::eachPreparationDrawsANewOrder()
{
    m_window->lineEditNTimes->setText("1");
    for (char name = 'b'; name <= 'z'; ++name)
        QVERIFY(writeFile(m_folder->filePath(QString(QChar(name)) + ".wav"),
                          WavBytes{.data = WavBytes::samples16({1, 2, 3})}.bytes()));
    QList<QList<int>> orders;
    for (int preparation = 0; preparation < 4; ++preparation) {
        if (preparation == 2)
            m_window = std::make_unique<OperatorWindow>();
        QVERIFY(prepare());
        QCOMPARE(m_window->randomSequence.size(), 26);
        QVERIFY(!orders.contains(m_window->randomSequence));
        orders.append(m_window->randomSequence);
    }
}

// Catches a base folder that is read once only, when the program starts.
void TestMainWindow::aPreparationLooksUpTheDesktopAgain()
{
    m_window->data.desktopPath = "elsewhere";
    QVERIFY(prepare());
    QCOMPARE(m_window->data.desktopPath, desktop());
}

// Catches a setting that reaches the subject window late, out of turn, never or from an earlier
// reading of the controls.
void TestMainWindow::goDeliversTheSettingsBeforeTheSubjectWindowShows()
{
    QVERIFY(prepare());
    m_window->checkBoxFeedBack->setChecked(false);
    m_window->lineEditSubCode->setText("S7");
    QStringList delivered;
    const auto note = [&](const QString &setting) {
        delivered.append(m_window->subjectWindow->isVisible() ? setting + ", too late" : setting);
    };
    connect(m_window.get(), &MainWindow::deliverFeedBackStatus, this,
            [&](bool feedBack) { note(QString("feedback %1").arg(feedBack)); });
    connect(m_window.get(), &MainWindow::deliverAutoPlayStatus, this,
            [&](bool autoPlay) { note(QString("automatic %1").arg(autoPlay)); });
    connect(m_window.get(), &MainWindow::deliverSubCode, this,
            [&](const QString &code) { note("code " + code); });
    connect(m_window.get(), &MainWindow::deliverWavFileName, this,
            [&](const QString &name) { note("name " + name); });
    m_window->pushButtonGo->click();
    QVERIFY(m_window->subjectWindow->isVisible());
    QCOMPARE(delivered, QStringList({"feedback 0", "automatic 1", "code S7"}));
}

// Catches an earlier subject window that is deleted too soon, still follows the session or still
// has a say in it.
void TestMainWindow::anEarlierSubjectWindowHasNoSayAfterASecondGo()
{
    m_window->show();
    QVERIFY(prepare());
    m_window->pushButtonGo->click();
    const QPointer<SubjectWindow> earlier = m_window->subjectWindow;
    {
        ModalAnswer answers;
        answers.press(QMessageBox::Yes);
        earlier->close();
        QCOMPARE(answers.problem(), "");
    }
    QVERIFY(m_window->isEnabled());

    QVERIFY(prepare());
    m_window->pushButtonGo->click();
    QVERIFY(earlier);
    QVERIFY(earlier->parentWidget() == m_window.get());
    QVERIFY(m_window->subjectWindow != earlier);
    QVERIFY(m_window->subjectWindow->isVisible() && !earlier->isVisible());

    emit m_window->soundPlaying(-1);
    const auto sheet = [](const SubjectWindow *window) {
        return window->findChild<QPushButton *>("pushButtonChoice2")->styleSheet();
    };
    QVERIFY(!sheet(m_window->subjectWindow).isEmpty());
    QCOMPARE(sheet(earlier), "");
    emit m_window->doneDataCollection(0.25, 0.0, 0);
    QVERIFY(!earlier->findChild<QPushButton *>("pushButtonDone")->isVisibleTo(earlier));

    emit earlier->subjectWindowClosed();
    QVERIFY(!m_window->isEnabled());
    emit earlier->subjectResponded(ReadyResponse);
    QCOMPARE(m_window->trialIndex, 0);
    emit m_window->subjectWindow->subjectResponded(ReadyResponse);
    QCOMPARE(m_window->trialIndex, 1);
    m_window.reset();
    QVERIFY(!earlier);
}

void TestMainWindow::theWindowCanBeDestroyedInEveryState_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"built", "shown", "closed", "prepared", "waiting", "with a parent"})
        QTest::newRow(state) << state;
}

// Catches a widget deleted twice or used after it was deleted, and one that is left behind.
void TestMainWindow::theWindowCanBeDestroyedInEveryState()
{
    QFETCH(const QString, state);
    QWidget parent;
    if (state == "with a parent")
        m_window.release()->setParent(&parent);
    const auto before = QApplication::allWidgets().size();
    {
        auto window = std::make_unique<OperatorWindow>();
        if (state != "built")
            window->show();
        if (state == "closed")
            window->close();
        if (state == "prepared" || state == "waiting") {
            ModalAnswer answers;
            answers.choose(m_folder->path());
            QTest::mouseClick(window->pushButtonPractice, Qt::LeftButton);
            QCOMPARE(answers.problem(), "");
            QVERIFY(window->pushButtonGo->isEnabled());
        }
        if (state == "waiting") {
            QTest::mouseClick(window->pushButtonGo, Qt::LeftButton);
            QVERIFY(window->subjectWindow && window->subjectWindow->isVisible());
        }
        QCoreApplication::processEvents();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(QApplication::allWidgets().size(), before);
}

// Catches a chart that outlives the fields, and anything that the window leaves to its parent.
void TestMainWindow::theChartsAreDestroyedBeforeTheControls()
{
    QStringList destroyed;
    const auto watch = [&](const QObject *object, const QString &kind) {
        connect(object, &QObject::destroyed, this, [&destroyed, kind] { destroyed.append(kind); });
    };
    for (const LineChart &chart :
         {m_window->waveformChart, m_window->spectrumChart, m_window->trendChart}) {
        for (const QObject *object : std::initializer_list<const QObject *>{
                 chart.series, chart.horizontalAxis, chart.verticalAxis, chart.chart, chart.view})
            watch(object, "chart");
    }
    QStringList expected(15, "chart");
    for (const QString kind : {"label", "lineEdit", "pushButton", "checkBox", "rowLayout",
                               "gridLayout", "comboBox", "centralWidget"}) {
        for (const QObject *object : m_window->findChildren<QObject *>()) {
            if (object->objectName().startsWith(kind)) {
                watch(object, "control");
                expected.append("control");
            }
        }
    }
    for (const QObject *object : std::initializer_list<const QObject *>{
             m_window->labelSesType, m_window->labelSoundType, m_window->labelMainParameter,
             m_window->comboBoxSesType, m_window->comboBoxSoundType,
             m_window->comboBoxMainParameter}) {
        watch(object, "control");
        expected.append("control");
    }
    QCOMPARE(expected.size(), 15 + 36 + 16 + 1);
    // What is left to the base class goes after its signal.
    watch(m_window.get(), "window");
    expected.append("window");
    m_window.reset();
    QCOMPARE(destroyed, expected);
}

GUI_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
