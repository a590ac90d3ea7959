// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/MethodTable.h"
#include "support/ModalAnswer.h"

#include <QGridLayout>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QSignalSpy>

#include <memory>

namespace {

const QString hoverSheet =
    "QPushButton:hover {background-color: rgb(0, 255, 255); border: 1px solid blue;}";
const QString correctSheet =
    "QPushButton {    background-image: url(:/imageFiles/correct.png);    background-repeat: "
    "no-repeat;    background-position: center;}QPushButton:hover {    background-color: rgb(0, "
    "255, 255);    border: 1px solid blue;}";
const QString incorrectSheet =
    "QPushButton {    background-image: url(:/imageFiles/incorrect.png);    background-repeat: "
    "no-repeat;    background-position: center;}QPushButton:hover {    background-color: rgb(0, "
    "255, 255);    border: 1px solid blue;}";

const QList<const char *> everything = {"pushButtonChoice2", "pushButtonChoice4",
                                        "labelResult",       "pushButtonIAmReady",
                                        "pushButtonNext",    "pushButtonDone"};

} // namespace

class TestSubjectWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theSignalsAndSlotsStandInTheirOrder();
    void theWindowStartsWithItsTextsAndOneButton();
    void eachWidgetHasItsCellInTheGrid();
    void answerButtonsFillTheWindowAndTheResultCanBeCopied();
    void theWindowStartsInTheMiddleOfTheScreen();
    void theWindowTakesItsShareOfTheScreenWithinLimits_data();
    void theWindowTakesItsShareOfTheScreenWithinLimits();
    void theFeedbackPicturesAreInTheProgram_data();
    void theFeedbackPicturesAreInTheProgram();

    void theAnswersAreAsLargeAsFits_data();
    void theAnswersAreAsLargeAsFits();
    void theOtherButtonsAreAlikeAndReadable();
    void theWindowCanShrinkAgain();
    void aLargeSystemFontIsKept();
    void pictureAndTextDoNotHideEachOther_data();
    void pictureAndTextDoNotHideEachOther();

    void eachStateShowsAndEnablesItsButtons_data();
    void eachStateShowsAndEnablesItsButtons();
    void eachButtonSendsItsCodeOnce_data();
    void eachButtonSendsItsCodeOnce();
    void eachTapCountsOnce_data();
    void eachTapCountsOnce();
    void aTapLeavesNoButtonHighlighted();
    void aTokenTakesOneAnswerAndOneNext();
    void theAnswerButtonsAreSwitchedTogetherAndAlone();

    void noAnswerIsTakenWhileATokenSounds();
    void feedbackIsShownOnThePressedButtonAlone_data();
    void feedbackIsShownOnThePressedButtonAlone();
    void thePictureStaysUntilTheNextTokenHasBeenHeard();
    void thePictureIsChosenBeforeTheAnswerIsSent();
    void strangerTurnsGreyBeforeItTakesTheHoverSheet();

    void theResultIsWrittenButNotShown_data();
    void theResultIsWrittenButNotShown();

    void theWindowClosesOnlyWhenConfirmed_data();
    void theWindowClosesOnlyWhenConfirmed();
    void theQuestionKeepsItsFocusAsATokenComes();
    void theWindowClosesUnaskedAfterTheOperatorsWindow();

private:
    QPushButton *button(const char *name) const { return m_window->findChild<QPushButton *>(name); }
    void click(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    void tap(const char *name) const;
    QRect inked(const QPushButton *button) const;
    QStringList visible() const;
    QStringList enabled() const;

    std::unique_ptr<SubjectWindow> m_window;
};

void TestSubjectWindow::init()
{
    m_window = std::make_unique<SubjectWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestSubjectWindow::cleanup()
{
    m_window.reset();
}

/// What can be seen, in the order of the grid.
QStringList TestSubjectWindow::visible() const
{
    QStringList names;
    for (const char *name : everything) {
        if (m_window->findChild<QWidget *>(name)->isVisible())
            names.append(name);
    }
    return names;
}

/// What can be seen and used.
QStringList TestSubjectWindow::enabled() const
{
    QStringList names;
    for (const QString &name : visible()) {
        if (m_window->findChild<QWidget *>(name)->isEnabled())
            names.append(name);
    }
    return names;
}

/// Touches a button with a finger.
void TestSubjectWindow::tap(const char *name) const
{
    static QPointingDevice *const screen = QTest::createTouchDevice();
    QWidget *target = button(name);
    const QPoint middle = target->rect().center();
    QTest::touchEvent(target, screen).press(0, middle, target);
    QTest::touchEvent(target, screen).release(0, middle, target);
}

/// The pixels of @p button, without its edge, that are much darker than its background: its text.
QRect TestSubjectWindow::inked(const QPushButton *button) const
{
    const QImage image = m_window->grab().toImage();
    const QRect area(button->mapTo(m_window.get(), QPoint()), button->size());
    QRect found;
    for (int x = area.left() + 4; x <= area.right() - 4; ++x) {
        for (int y = area.top() + 4; y <= area.bottom() - 4; ++y) {
            if (image.pixelColor(x, y).lightness() < 128)
                found |= QRect(x, y, 1, 1);
        }
    }
    return found.translated(-area.topLeft());
}

// Catches a signal or slot that is missing, out of order or with other arguments.
void TestSubjectWindow::theSignalsAndSlotsStandInTheirOrder()
{
    QCOMPARE(methodTable(SubjectWindow::staticMetaObject),
             QStringList({"signal subjectResponded(int)", "signal subjectWindowClosed()",
                          "slot pushButtonIAmReady_clicked()", "slot receiveFeedBackStatus(bool)",
                          "slot receiveAutoPlayStatus(bool)", "slot receiveSubCode(QString)",
                          "slot receiveWavFileName(QString)", "slot pushButtonNext_clicked()",
                          "slot enableAllChoiceButtons()", "slot updateSubjectWindow(int)",
                          "slot pushButtonChoice2_clicked()", "slot pushButtonChoice4_clicked()",
                          "slot finishExperiment(double,double,int)"}));
}

// Catches a changed title or text, and an icon where the platform's default is to show.
void TestSubjectWindow::theWindowStartsWithItsTextsAndOneButton()
{
    QCOMPARE(m_window->windowTitle(), "Tavel Lab | Ostrine (v014) | Subject Window");
    QVERIFY(m_window->windowIcon().pixmap(16).isNull());
    QCOMPARE(button("pushButtonChoice2")->text(), "Mother");
    QCOMPARE(button("pushButtonChoice4")->text(), "Stranger");
    QCOMPARE(button("pushButtonIAmReady")->text(), "I am ready");
    QCOMPARE(button("pushButtonNext")->text(), "Next");
    QCOMPARE(button("pushButtonDone")->text(), "Done");
    QCOMPARE(m_window->findChild<QLabel *>("labelResult")->text(), "Threshold = ");
    QCOMPARE(visible(), QStringList("pushButtonIAmReady"));
    QCOMPARE(enabled(), QStringList("pushButtonIAmReady"));
}

// Catches a widget in another cell or with another span.
void TestSubjectWindow::eachWidgetHasItsCellInTheGrid()
{
    const auto *grid =
        qobject_cast<QGridLayout *>(m_window->QMainWindow::centralWidget()->layout());
    QVERIFY(grid);
    QCOMPARE(grid->count(), 6);
    const QList<QRect> cells = {{0, 0, 1, 1}, {1, 0, 1, 1}, {0, 1, 4, 1},
                                {0, 2, 4, 1}, {0, 3, 4, 1}, {0, 4, 4, 1}};
    for (int i = 0; i < everything.size(); ++i) {
        int row = -1;
        int column = -1;
        int rowSpan = -1;
        int columnSpan = -1;
        const int index = grid->indexOf(m_window->findChild<QWidget *>(everything.at(i)));
        grid->getItemPosition(index, &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(QRect(column, row, columnSpan, rowSpan), cells.at(i));
    }
}

// Catches answer buttons that do not fill the window, and a label that cannot be copied from.
void TestSubjectWindow::answerButtonsFillTheWindowAndTheResultCanBeCopied()
{
    for (const char *name : {"pushButtonChoice2", "pushButtonChoice4"}) {
        QCOMPARE(button(name)->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(button(name)->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    }
    QCOMPARE(button("pushButtonNext")->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(button("pushButtonNext")->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(button("pushButtonNext")->minimumHeight(), 60);
    const auto *label = m_window->findChild<QLabel *>("labelResult");
    QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(label->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    QCOMPARE(label->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    QCOMPARE(label->textInteractionFlags(), Qt::TextSelectableByMouse);
}

// Catches other shares of the screen or another place than its middle; run on two screens.
void TestSubjectWindow::theWindowStartsInTheMiddleOfTheScreen()
{
    QCOMPARE(QGuiApplication::primaryScreen()->availableSize(), testScreen());
    QCOMPARE(m_window->geometry(), testScreen() == QSize(1440, 900) ? QRect(432, 270, 576, 360)
                                                                    : QRect(240, 240, 320, 320));
}

void TestSubjectWindow::theWindowTakesItsShareOfTheScreenWithinLimits_data()
{
    QTest::addColumn<bool>("center");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<QPoint>("before");
    QTest::addColumn<QRect>("expected");

    QTest::newRow("centred") << true << 0.75 << 0.5 << QPoint(7, 9) << QRect(100, 200, 600, 400);
    QTest::newRow("truncated") << true << 0.3333 << 0.6666 << QPoint(7, 9)
                               << QRect(267, 133, 266, 533);
    QTest::newRow("above 1") << true << 1.5 << 20.0 << QPoint(7, 9) << QRect(0, 0, 800, 800);
    QTest::newRow("stays") << false << 0.5 << 0.5 << QPoint(120, 90) << QRect(120, 90, 400, 400);
    QTest::newRow("stays, but off the edges")
        << false << 0.5 << 0.5 << QPoint(-30, 12) << QRect(5, 40, 400, 400);
}

// Catches a fraction that is not limited or rounded, and a corner that is not kept.
void TestSubjectWindow::theWindowTakesItsShareOfTheScreenWithinLimits()
{
    QFETCH(const bool, center);
    QFETCH(const double, width);
    QFETCH(const double, height);
    QFETCH(const QPoint, before);
    m_window->setGeometry(QRect(before, QSize(300, 300)));
    m_window->centerAndResizeSubjectWindow(center, width, height);
    QTEST(m_window->geometry(), "expected");
}

void TestSubjectWindow::theFeedbackPicturesAreInTheProgram_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("correct") << ":/imageFiles/correct.png";
    QTest::newRow("incorrect") << ":/imageFiles/incorrect.png";
}

// Catches a picture that is not compiled in, is empty or of another size.
void TestSubjectWindow::theFeedbackPicturesAreInTheProgram()
{
    QFETCH(const QString, path);
    const QImage picture(path);
    QCOMPARE(picture.size(), QSize(400, 225));
    QVERIFY(picture.hasAlphaChannel());
    QVERIFY(picture != QImage(":/imageFiles/" +
                              QString(path.contains("/inc") ? "correct.png" : "incorrect.png")));
    QRect drawn;
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (qAlpha(picture.pixel(x, y)) > 0)
                drawn |= QRect(x, y, 1, 1);
        }
    }
    QVERIFY(drawn.width() >= 160 && drawn.width() <= 180);
    QVERIFY(drawn.height() >= 120 && drawn.height() <= 134);
    QVERIFY((drawn.center() - picture.rect().center()).manhattanLength() <= 2);
}

void TestSubjectWindow::theAnswersAreAsLargeAsFits_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("small screen at twice the scale") << QSize(384, 216);
    QTest::newRow("1024 x 768") << QSize(409, 307);
    QTest::newRow("1366 x 768") << QSize(546, 307);
    QTest::newRow("1920 x 1080") << QSize(768, 432);
    QTest::newRow("maximised") << QSize(1366, 740);
    QTest::newRow("wide and low") << QSize(1200, 216);
}

// Catches answers in letters that nobody reads from two metres, that are clipped or touch the
// edge, or of which one is larger than the other.
void TestSubjectWindow::theAnswersAreAsLargeAsFits()
{
    QFETCH(const QSize, size);
    m_window->resize(size);
    m_window->receiveFeedBackStatus(true);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    QCoreApplication::processEvents();
    const QPushButton *mother = button("pushButtonChoice2");
    const QPushButton *stranger = button("pushButtonChoice4");
    QCOMPARE(mother->font(), stranger->font());
    for (const QPushButton *answer : {mother, stranger}) {
        const QRect text = inked(answer);
        const QRect bounds = answer->rect();
        // At least a tenth of the edge stays free, in all, and either direction is used up.
        QVERIFY(text.width() <= bounds.width() * 0.92);
        QVERIFY(text.height() <= bounds.height() * 0.6);
        QVERIFY((text.center() - bounds.center()).manhattanLength() < 4 + bounds.height() / 10);
    }
    const QRect longer = inked(stranger);
    QVERIFY(longer.width() >= stranger->width() * 0.8 ||
            longer.height() >= stranger->height() * 0.4);
    // Capital letters of 6 mm on a screen of 96 dots per inch.
    QVERIFY(inked(mother).height() >= 23);
}

// Catches a first or last button that is lower than "Next" or written smaller.
void TestSubjectWindow::theOtherButtonsAreAlikeAndReadable()
{
    m_window->resize(546, 307);
    m_window->receiveFeedBackStatus(true);
    QCoreApplication::processEvents();
    const auto look = [this](const char *name) {
        return QPair(button(name)->height(), button(name)->font().pixelSize());
    };
    const auto ready = look("pushButtonIAmReady");
    QVERIFY(inked(button("pushButtonIAmReady")).height() >= 20);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    click("pushButtonChoice2");
    QCoreApplication::processEvents();
    QCOMPARE(look("pushButtonNext"), ready);
    m_window->finishExperiment(0.25, 0.0, 0);
    QCoreApplication::processEvents();
    QCOMPARE(look("pushButtonDone"), ready);
}

// Catches a window that keeps the room for its large letters when it is made small again, and
// letters that stay large.
void TestSubjectWindow::theWindowCanShrinkAgain()
{
    m_window->receiveFeedBackStatus(true);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    m_window->resize(320, 260);
    QCoreApplication::processEvents();
    const int small = button("pushButtonChoice2")->font().pixelSize();
    const QSize least = m_window->minimumSizeHint();
    m_window->resize(800, 760);
    QCoreApplication::processEvents();
    QVERIFY(button("pushButtonChoice2")->font().pixelSize() > 2 * small);
    QCOMPARE(m_window->minimumSizeHint(), least);
    m_window->resize(320, 260);
    QCoreApplication::processEvents();
    QCOMPARE(m_window->size(), QSize(320, 260));
    QCOMPARE(button("pushButtonChoice2")->font().pixelSize(), small);
}

// Catches letters that are smaller than those of the desktop, or clipped because of them.
void TestSubjectWindow::aLargeSystemFontIsKept()
{
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPixelSize(36);
    QApplication::setFont(large);
    const auto restore = qScopeGuard([&] { QApplication::setFont(usual); });
    init();
    m_window->resize(1, 1);
    m_window->receiveFeedBackStatus(true);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    QCoreApplication::processEvents();
    for (const char *name : {"pushButtonChoice2", "pushButtonChoice4", "pushButtonNext"}) {
        const QPushButton *shown = button(name);
        QVERIFY(shown->font().pixelSize() >= 36);
        QVERIFY(shown->fontMetrics().horizontalAdvance(shown->text()) <= shown->width());
        QVERIFY(shown->fontMetrics().height() <= shown->height());
    }
}

void TestSubjectWindow::pictureAndTextDoNotHideEachOther_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("pressed");
    for (const QSize size : {QSize(409, 307), QSize(546, 307), QSize(768, 432), QSize(800, 760)}) {
        QTest::addRow("mother, %d x %d", size.width(), size.height())
            << size << "pushButtonChoice2";
        QTest::addRow("stranger, %d x %d", size.width(), size.height())
            << size << "pushButtonChoice4";
    }
}

// Catches a text that lies over the feedback picture, is clipped below it or stays there when the
// picture has gone, and a picture that is clipped, from the window on a screen of 1024 x 768 on.
void TestSubjectWindow::pictureAndTextDoNotHideEachOther()
{
    QFETCH(const QSize, size);
    QFETCH(const QString, pressed);
    m_window->resize(size);
    m_window->receiveFeedBackStatus(true);
    m_window->receiveSubCode("CHD001");
    m_window->receiveWavFileName("MOV001_01.wav");
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    QCoreApplication::processEvents();
    QPushButton *answer = button(pressed.toLatin1());
    const QImage before = answer->grab().toImage();
    click(pressed.toLatin1());
    const QImage picture(pressed == "pushButtonChoice2" ? ":/imageFiles/correct.png"
                                                        : ":/imageFiles/incorrect.png");

    const QImage shown = answer->grab().toImage();
    answer->setText("");
    const QImage withoutText = answer->grab().toImage();
    QRect text;
    QRect drawn;
    const QPoint offset = shown.rect().center() - picture.rect().center();
    for (int x = 0; x < shown.width(); ++x) {
        for (int y = 0; y < shown.height(); ++y) {
            if (shown.pixel(x, y) != withoutText.pixel(x, y))
                text |= QRect(x, y, 1, 1);
        }
    }
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (qAlpha(picture.pixel(x, y)) > 0)
                drawn |= QRect(QPoint(x, y) + offset, QSize(1, 1));
        }
    }
    QVERIFY(shown.rect().contains(drawn));
    QVERIFY(text.height() >= 20);
    QVERIFY(text.top() > drawn.bottom());
    QVERIFY(text.bottom() < shown.height() - 1);
    QVERIFY(text.left() > 1 && text.right() < shown.width() - 2);

    answer->setText(pressed == "pushButtonChoice2" ? "Mother" : "Stranger");
    m_window->updateSubjectWindow(-1);
    QCoreApplication::processEvents();
    QCOMPARE(answer->grab().toImage(), before);
}

void TestSubjectWindow::eachStateShowsAndEnablesItsButtons_data()
{
    QTest::addColumn<bool>("feedBack");
    QTest::addColumn<bool>("autoPlay");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("visible");
    QTest::addColumn<QStringList>("enabled");

    const QStringList choices = {"pushButtonChoice2", "pushButtonChoice4"};
    const QStringList withNext = choices + QStringList("pushButtonNext");
    const QStringList withDone = choices + QStringList("pushButtonDone");
    const QStringList none;
    const QStringList ready = {"ready"};
    const QStringList heard = {"ready", "1", "-1"};
    const QStringList answered = heard + QStringList("mother");

    QTest::newRow("waiting") << true << false << QStringList() << QStringList("pushButtonIAmReady")
                             << QStringList("pushButtonIAmReady");
    QTest::newRow("ready, feedback") << true << false << ready << withNext << none;
    QTest::newRow("ready, feedback, automatic") << true << true << ready << withNext << none;
    QTest::newRow("ready") << false << false << ready << choices << none;
    QTest::newRow("ready, automatic") << false << true << ready << choices << none;
    for (const char *repetition : {"0", "1", "3", "-2"})
        QTest::addRow("playing %s", repetition)
            << true << false << (ready + QStringList(repetition)) << withNext << none;
    QTest::newRow("playing after an answer")
        << true << false << (QStringList(answered) << "1") << withNext << none;
    QTest::newRow("answering") << true << false << heard << withNext << choices;
    QTest::newRow("answering, automatic") << true << true << heard << choices << choices;
    QTest::newRow("answering, no feedback") << false << false << heard << withNext << choices;
    QTest::newRow("answering, no feedback, automatic")
        << false << true << heard << choices << choices;
    QTest::newRow("answered mother")
        << true << false << answered << withNext << QStringList("pushButtonNext");
    QTest::newRow("answered stranger") << true << false << (QStringList(heard) << "stranger")
                                       << withNext << QStringList("pushButtonNext");
    QTest::newRow("answered, automatic") << true << true << answered << choices << none;
    QTest::newRow("next pressed") << true << false << (QStringList(answered) << "next") << withNext
                                  << none;
    // Nobody can press it while it is hidden, but the slot is public.
    QTest::newRow("next called while it is hidden")
        << true << true << (QStringList(heard) << "call next") << withNext << none;
    QTest::newRow("second token, automatic") << true << true
                                             << (QStringList(answered) << "1"
                                                                       << "-1")
                                             << choices << choices;
    QTest::newRow("second token") << true << false
                                  << (QStringList(answered) << "next"
                                                            << "1"
                                                            << "-1")
                                  << withNext << choices;
    QTest::newRow("finished, feedback") << true << false << (QStringList(answered) << "finish")
                                        << withDone << QStringList("pushButtonDone");
    QTest::newRow("finished, feedback, automatic")
        << true << true << (QStringList(answered) << "finish") << withDone
        << QStringList("pushButtonDone");
    QTest::newRow("finished while locked") << true << true
                                           << (QStringList(ready) << "1"
                                                                  << "finish")
                                           << withDone << QStringList("pushButtonDone");
    QTest::newRow("ready after the end") << true << true
                                         << (QStringList() << "finish"
                                                           << "ready")
                                         << withNext << none;
    QTest::newRow("next after the end") << true << false
                                        << (QStringList(answered) << "finish"
                                                                  << "-1"
                                                                  << "mother"
                                                                  << "next")
                                        << withNext << none;
    QTest::newRow("finished") << false << true << (QStringList(answered) << "finish")
                              << QStringList("pushButtonDone") << QStringList("pushButtonDone");
}

// Catches a button that can be seen or pressed in a state in which it must not, or cannot where
// it must.
void TestSubjectWindow::eachStateShowsAndEnablesItsButtons()
{
    QFETCH(const bool, feedBack);
    QFETCH(const bool, autoPlay);
    QFETCH(const QStringList, steps);
    m_window->receiveFeedBackStatus(feedBack);
    m_window->receiveAutoPlayStatus(autoPlay);
    for (const QString &step : steps) {
        if (step == "ready")
            click("pushButtonIAmReady");
        else if (step == "mother")
            click("pushButtonChoice2");
        else if (step == "stranger")
            click("pushButtonChoice4");
        else if (step == "next")
            click("pushButtonNext");
        else if (step == "call next")
            m_window->pushButtonNext_clicked();
        else if (step == "finish")
            m_window->finishExperiment(0.25, 0.0, 0);
        else
            m_window->updateSubjectWindow(step.toInt());
    }
    QTEST(visible(), "visible");
    QTEST(enabled(), "enabled");
}

void TestSubjectWindow::eachButtonSendsItsCodeOnce_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("pushButtonIAmReady") << 0;
    QTest::newRow("pushButtonChoice2") << 2;
    QTest::newRow("pushButtonChoice4") << 4;
    QTest::newRow("pushButtonNext") << 5;
}

// Catches a button that sends another code, none or more than one.
void TestSubjectWindow::eachButtonSendsItsCodeOnce()
{
    QFETCH(const int, code);
    m_window->receiveFeedBackStatus(true);
    if (code != 0) {
        click("pushButtonIAmReady");
        m_window->updateSubjectWindow(-1);
    }
    if (code == 5)
        click("pushButtonChoice2");
    const QSignalSpy responses(m_window.get(), &SubjectWindow::subjectResponded);
    click(QTest::currentDataTag());
    QCOMPARE(responses.size(), 1);
    QCOMPARE(responses.at(0).at(0).toInt(), code);
}

void TestSubjectWindow::eachTapCountsOnce_data()
{
    eachButtonSendsItsCodeOnce_data();
}

// Catches a button that does not answer to a finger, or answers twice to one tap or to a second tap
// that follows at once.
void TestSubjectWindow::eachTapCountsOnce()
{
    QFETCH(const int, code);
    m_window->receiveFeedBackStatus(true);
    if (code != 0) {
        tap("pushButtonIAmReady");
        m_window->updateSubjectWindow(-1);
        QCoreApplication::processEvents();
    }
    if (code == 5)
        tap("pushButtonChoice2");
    const QSignalSpy responses(m_window.get(), &SubjectWindow::subjectResponded);
    tap(QTest::currentDataTag());
    QCOMPARE(responses.size(), 1);
    QCOMPARE(responses.at(0).at(0).toInt(), code);
    tap(QTest::currentDataTag());
    QCOMPARE(responses.size(), 1);
}

// Catches the button of the last tap in another colour than the other, as if a mouse pointed at it,
// while the next answer is awaited.
void TestSubjectWindow::aTapLeavesNoButtonHighlighted()
{
    tap("pushButtonIAmReady");
    for (const char *name : {"pushButtonChoice2", "pushButtonChoice4"}) {
        m_window->updateSubjectWindow(-1);
        QCoreApplication::processEvents();
        const QImage before = button(name)->grab().toImage();
        tap(name);
        m_window->updateSubjectWindow(1);
        m_window->updateSubjectWindow(-1);
        QCoreApplication::processEvents();
        QCOMPARE(button(name)->grab().toImage().pixelColor(10, 10), before.pixelColor(10, 10));
    }
}

// Catches a second answer to the same token, by either button, and a second Next.
void TestSubjectWindow::aTokenTakesOneAnswerAndOneNext()
{
    m_window->receiveFeedBackStatus(true);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    const QSignalSpy responses(m_window.get(), &SubjectWindow::subjectResponded);
    click("pushButtonChoice2");
    click("pushButtonChoice2");
    click("pushButtonChoice4");
    QCOMPARE(responses.size(), 1);
    click("pushButtonNext");
    click("pushButtonNext");
    QCOMPARE(responses.size(), 2);
}

// Catches an operation on both answer buttons that touches one of them or anything else.
void TestSubjectWindow::theAnswerButtonsAreSwitchedTogetherAndAlone()
{
    m_window->disableAllChoiceButtons();
    QVERIFY(!button("pushButtonChoice2")->isEnabled());
    QVERIFY(!button("pushButtonChoice4")->isEnabled());
    QVERIFY(button("pushButtonIAmReady")->isEnabled());
    QVERIFY(m_window->isEnabled());
    m_window->enableAllChoiceButtons();
    QVERIFY(button("pushButtonChoice2")->isEnabled());
    QVERIFY(button("pushButtonChoice4")->isEnabled());
    QVERIFY(!button("pushButtonChoice2")->isVisible());
}

// Catches an answer by mouse or keyboard while the token still sounds.
void TestSubjectWindow::noAnswerIsTakenWhileATokenSounds()
{
    m_window->receiveFeedBackStatus(true);
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(1);
    const QSignalSpy responses(m_window.get(), &SubjectWindow::subjectResponded);
    for (const char *name : {"pushButtonChoice2", "pushButtonChoice4", "pushButtonNext"}) {
        click(name);
        QTest::keyClick(button(name), Qt::Key_Space);
    }
    QCOMPARE(responses.size(), 0);
}

void TestSubjectWindow::feedbackIsShownOnThePressedButtonAlone_data()
{
    QTest::addColumn<QString>("subCode");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<bool>("feedBack");
    QTest::addColumn<QString>("pressed");
    QTest::addColumn<QString>("sheet");

    const auto both = [](const char *name, const QString &code, const QString &file, bool mother) {
        QTest::addRow("%s: mother", name) << code << file << true << "pushButtonChoice2"
                                          << (mother ? correctSheet : incorrectSheet);
        QTest::addRow("%s: stranger", name) << code << file << true << "pushButtonChoice4"
                                            << (mother ? incorrectSheet : correctSheet);
    };
    both("mother's token", "CHD001", "MOV001_01.wav", true);
    both("stranger's token", "CHD001", "MOV002_01.wav", false);
    both("whole code inside, its end not", "CHD001", "CHD00.wav", false);
    both("code of three", "ABC", "xABC.wav", true);
    both("code of three, other name", "ABC", "xBC.wav", false);
    both("code of four", "ABCD", "BCD.wav", true);
    both("code of two", "S7", "tokenS7.wav", true);
    both("empty code", "", "anything.wav", true);
    both("case differs", "chd00a", "MOV00A.wav", false);
    QTest::newRow("no feedback: mother")
        << "CHD001"
        << "MOV001_01.wav" << false << "pushButtonChoice2" << hoverSheet;
    QTest::newRow("no feedback: stranger")
        << "CHD001"
        << "MOV001_01.wav" << false << "pushButtonChoice4" << hoverSheet;
}

// Catches praise for a wrong answer, a picture on the other button and one that is not wanted.
void TestSubjectWindow::feedbackIsShownOnThePressedButtonAlone()
{
    QFETCH(const QString, subCode);
    QFETCH(const QString, fileName);
    QFETCH(const bool, feedBack);
    QFETCH(const QString, pressed);
    m_window->receiveFeedBackStatus(feedBack);
    m_window->receiveSubCode(subCode);
    m_window->receiveWavFileName(fileName);
    click("pushButtonIAmReady");
    QCOMPARE(button("pushButtonChoice2")->styleSheet(), "");
    m_window->updateSubjectWindow(1);
    m_window->updateSubjectWindow(-1);
    QCOMPARE(button("pushButtonChoice2")->styleSheet(), hoverSheet);
    QCOMPARE(button("pushButtonChoice4")->styleSheet(), hoverSheet);
    click(pressed.toLatin1());
    QTEST(button(pressed.toLatin1())->styleSheet(), "sheet");
    const char *other = pressed == "pushButtonChoice2" ? "pushButtonChoice4" : "pushButtonChoice2";
    QCOMPARE(button(other)->styleSheet(), hoverSheet);
}

// Catches a picture that vanishes while the next token plays or stays for its answer.
void TestSubjectWindow::thePictureStaysUntilTheNextTokenHasBeenHeard()
{
    m_window->receiveFeedBackStatus(true);
    m_window->receiveSubCode("CHD001");
    m_window->receiveWavFileName("MOV002_01.wav");
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    click("pushButtonChoice2");
    click("pushButtonNext");
    m_window->updateSubjectWindow(1);
    QCOMPARE(button("pushButtonChoice2")->styleSheet(), incorrectSheet);
    m_window->updateSubjectWindow(-1);
    QCOMPARE(button("pushButtonChoice2")->styleSheet(), hoverSheet);
}

// Catches a picture chosen by the next token's name, which arrives in answer to the signal.
void TestSubjectWindow::thePictureIsChosenBeforeTheAnswerIsSent()
{
    m_window->receiveFeedBackStatus(true);
    m_window->receiveSubCode("CHD001");
    m_window->receiveWavFileName("MOV001_01.wav");
    click("pushButtonIAmReady");
    m_window->updateSubjectWindow(-1);
    QString sheet;
    connect(m_window.get(), &SubjectWindow::subjectResponded, this, [&] {
        sheet = button("pushButtonChoice2")->styleSheet();
        m_window->receiveWavFileName("MOV002_01.wav");
    });
    click("pushButtonChoice2");
    QCOMPARE(sheet, correctSheet);
    QCOMPARE(button("pushButtonChoice2")->styleSheet(), correctSheet);
}

// Catches the sheets of "Stranger" in another order, or one of them left out.
void TestSubjectWindow::strangerTurnsGreyBeforeItTakesTheHoverSheet()
{
    /// Notes every sheet that a button gets.
    struct Sheets : QObject
    {
        QStringList set;
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::StyleChange)
                set.append(qobject_cast<QWidget *>(watched)->styleSheet());
            return false;
        }
    } sheets;
    click("pushButtonIAmReady");
    button("pushButtonChoice4")->installEventFilter(&sheets);
    m_window->updateSubjectWindow(1);
    QCOMPARE(sheets.set, QStringList());
    m_window->updateSubjectWindow(-1);
    QCOMPARE(sheets.set,
             QStringList({" QPushButton {background-color: rgb(190, 190, 190); border: none;} ",
                          hoverSheet}));
}

void TestSubjectWindow::theResultIsWrittenButNotShown_data()
{
    QTest::addColumn<double>("threshold");
    QTest::addColumn<double>("reactionTime");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");
    QTest::newRow("frequency") << 0.25 << 812.5 << 0
                               << "Frequency Difference = 25 %,   Reaction Time = 812.5 ms";
    QTest::newRow("modulation") << 0.25 << 812.5 << 1
                                << "Modulation Threshold = 25 %,   Reaction Time = 812.5 ms";
    QTest::newRow("another index") << 0.25 << 0.0 << 2 << "25 %,   Reaction Time = 0 ms";
    QTest::newRow("negative index") << 1.0 << 0.0 << -1 << "100 %,   Reaction Time = 0 ms";
    QTest::newRow("six digits") << 0.0123456789 << 1234.5678 << 0
                                << "Frequency Difference = 1.23457 %,   Reaction Time = 1234.57 ms";
    QTest::newRow("scientific") << 12345678.0 << 0.00001234 << 0
                                << "Frequency Difference = 1.23457e+09 %,   Reaction Time = "
                                   "1.234e-05 ms";
}

// Catches another prefix or notation, and the label shown.
void TestSubjectWindow::theResultIsWrittenButNotShown()
{
    QFETCH(const double, threshold);
    QFETCH(const double, reactionTime);
    QFETCH(const int, index);
    m_window->finishExperiment(threshold, reactionTime, index);
    const auto *label = m_window->findChild<QLabel *>("labelResult");
    QTEST(label->text(), "text");
    QVERIFY(!label->isVisible());
}

void TestSubjectWindow::theWindowClosesOnlyWhenConfirmed_data()
{
    QTest::addColumn<QString>("by");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("closes");
    for (const char *by : {"close", "Done"}) {
        QTest::addRow("%s, Yes", by) << by << int(QMessageBox::Yes) << true;
        QTest::addRow("%s, No", by) << by << int(QMessageBox::No) << false;
        QTest::addRow("%s, Cancel", by) << by << int(QMessageBox::Cancel) << false;
        QTest::addRow("%s, escape", by) << by << 0 << false;
    }
}

// Catches a window that closes unasked or against the answer, and a changed question.
void TestSubjectWindow::theWindowClosesOnlyWhenConfirmed()
{
    QFETCH(const QString, by);
    QFETCH(const int, answer);
    QFETCH(const bool, closes);
    const QSignalSpy closed(m_window.get(), &SubjectWindow::subjectWindowClosed);
    if (by == "Done")
        m_window->finishExperiment(0.25, 0.0, 0);

    ModalAnswer answers;
    if (answer == 0)
        answers.escape();
    else
        answers.press(QMessageBox::StandardButton(answer));
    if (by == "Done")
        click("pushButtonDone");
    else
        m_window->close();

    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 1);
    const ModalAnswer::Box box = answers.boxes().first();
    QCOMPARE(box.title, "Confirmation MessageBox");
    QCOMPARE(box.text, "Do you want to close this window?\n");
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    QCOMPARE(box.defaultButton, QMessageBox::Yes);
    QVERIFY(box.parent == m_window.get());
    QCOMPARE(closed.size(), closes ? 1 : 0);
    QCOMPARE(m_window->isVisible(), !closes);
}

// Catches a question that is locked when a token starts, or forgets which button has been chosen:
// Enter would then close the window in spite of "No".
void TestSubjectWindow::theQuestionKeepsItsFocusAsATokenComes()
{
    click("pushButtonIAmReady");
    QStringList problems;
    ModalAnswer answers;
    answers.press(QMessageBox::No).when([&] {
        const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QAbstractButton *no = box->button(QMessageBox::No);
        no->setFocus();
        for (const int state : {1, -1, 1}) {
            m_window->updateSubjectWindow(state);
            if (m_window->isEnabled() != (state == -1))
                problems.append(QString("the window after %1").arg(state));
            if (!box->isEnabled() || !no->isEnabled() || box->focusWidget() != no)
                problems.append(QString("the question after %1").arg(state));
        }
        return true;
    });
    m_window->close();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(problems, QStringList());
    QVERIFY(m_window->isVisible());
}

// Catches a question that nobody is left to answer, and a report of closing to a window that is
// closed itself.
void TestSubjectWindow::theWindowClosesUnaskedAfterTheOperatorsWindow()
{
    const ModalAnswer nothing;
    QWidget operatorsWindow;
    operatorsWindow.show();
    SubjectWindow window(&operatorsWindow);
    window.show();
    const QSignalSpy closed(&window, &SubjectWindow::subjectWindowClosed);
    QVERIFY(operatorsWindow.close());
    QVERIFY(window.close());
    QCOMPARE(nothing.problem(), "");
    QCOMPARE(closed.size(), 0);
}

GUI_TEST_MAIN(TestSubjectWindow)
#include "tst_subjectwindow.moc"
