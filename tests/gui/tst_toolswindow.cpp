// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "support/Contrast.h"
#include "support/Controls.h"
#include "support/GuiTestMain.h"
#include "support/WavFile.h"
#include "tools/ToolsWindow.h"

#include <QAbstractAxis>
#include <QChart>
#include <QChartView>
#include <QGraphicsTextItem>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QSet>
#include <QTabWidget>
#include <QTableView>
#include <QTextDocument>

#include <memory>

/// What the companion's window looks like on screens and desktops of all kinds.
class TestToolsWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWindowIsNoLargerThanTheScreen();
    void everyControlHasRoomForItsText_data();
    void everyControlHasRoomForItsText();
    void everyChartFollowsThePalette_data();
    void everyChartFollowsThePalette();
    void longTokenNamesLeaveRoomForTheOtherColumns();
    void longSessionNamesLeaveRoomForTheOtherColumns();
    void anEmptySessionHasDistinctTimes();

private:
    void open();
    QTabWidget *pages() const { return m_window->findChild<QTabWidget *>(); }
    QTableView *table(const QString &name) const
    {
        return namedControl<QTableView>(*m_window, name);
    }
    void writeJournal(const QString &subCode, const QString &fileName, bool isAnswered) const;
    void openSessions();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolsWindow> m_window;
};

void TestToolsWindow::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QDir(journalFolder()).removeRecursively();
}

void TestToolsWindow::cleanup()
{
    m_window.reset();
}

void TestToolsWindow::open()
{
    m_window = std::make_unique<ToolsWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

/// The journal of a session of one presentation.
void TestToolsWindow::writeJournal(const QString &subCode, const QString &fileName,
                                   bool isAnswered) const
{
    QVERIFY(QDir().mkpath(journalFolder()));
    QString journal =
        QString(
            R"({"type":"session","started":"2026-11-22T08:00:00.000Z","parameters":{"subCode":"%1",)"
            R"("sesTypeNames":["practice","experiment"],"sesTypeIndex":0,"sesNum":3,"saveData":true,)"
            R"("outputFileName":"CHD_practice003.txt"},"tokens":["%2"],"order":[0]})"
            "\n")
            .arg(subCode, fileName);
    if (isAnswered) {
        journal +=
            QString(R"({"type":"answer","trial":1,"token":0,"filename":"%1","stim":"stranger",)"
                    R"("resp":"mother","rt":500,)"
                    R"("presentation":{"clockStart":12.5,"tokenEnd":11.25,"block":40}})"
                    "\n")
                .arg(fileName);
    }
    QVERIFY(writeFile(journalFolder() + "/1.jsonl", journal.toUtf8()));
}

void TestToolsWindow::openSessions()
{
    open();
    m_window->resize(1100, 680);
    pages()->setCurrentIndex(2);
    QTRY_COMPARE(table("Sessions")->model()->rowCount(), 1);
    QCoreApplication::processEvents();
}

// Catches a window of which a small screen shows only a part.
void TestToolsWindow::theWindowIsNoLargerThanTheScreen()
{
    open();
    const QSize available = m_window->screen()->availableSize();
    QVERIFY(available.width() < 1100);
    QCOMPARE(m_window->size(), QSize(available.width(), 680));
}

void TestToolsWindow::everyControlHasRoomForItsText_data()
{
    QTest::addColumn<int>("pixelSize");
    QTest::addColumn<QSize>("size");
    QTest::newRow("usual font, 1366 x 768") << 12 << QSize(1100, 680);
    QTest::newRow("usual font, 1920 x 1080 at twice the scale") << 12 << QSize(960, 500);
    QTest::newRow("large font, 1366 x 768") << 24 << QSize(1100, 680);
    QTest::newRow("large font, 1024 x 768") << 24 << QSize(950, 680);
}

// Catches a button, label, progress bar or title of a chart whose text is cut, and a field for a
// path that shows only its last letters.
void TestToolsWindow::everyControlHasRoomForItsText()
{
    QFETCH(const int, pixelSize);
    QFETCH(const QSize, size);
    const QFont usual = QApplication::font();
    const auto restore = qScopeGuard([&] { QApplication::setFont(usual); });
    QFont font = usual;
    font.setPixelSize(pixelSize);
    QApplication::setFont(font);
    open();
    m_window->resize(size);
    for (int page = 0; page < pages()->count(); ++page) {
        pages()->setCurrentIndex(page);
        QTest::qWait(50);
        QCOMPARE(m_window->size(), size);
        const QWidget *shown = pages()->currentWidget();
        for (const auto *button : shown->findChildren<QPushButton *>()) {
            if (button->isVisible())
                QVERIFY2(button->width() >= button->sizeHint().width() &&
                             button->height() >= button->fontMetrics().height(),
                         qPrintable(button->text()));
        }
        for (const auto *label : shown->findChildren<QLabel *>()) {
            if (label->isVisible())
                QVERIFY2(label->height() >= label->heightForWidth(label->width()) &&
                             (label->wordWrap() || label->width() >= label->sizeHint().width()),
                         qPrintable(label->text()));
        }
        for (const auto *bar : shown->findChildren<QProgressBar *>()) {
            if (bar->isVisible())
                QVERIFY2(bar->width() > bar->fontMetrics().horizontalAdvance(bar->text()),
                         qPrintable(bar->text()));
        }
        for (const auto *view : shown->findChildren<QChartView *>()) {
            QSet<QString> texts;
            for (const QGraphicsItem *item : view->scene()->items()) {
                const auto *text = dynamic_cast<const QGraphicsTextItem *>(item);
                if (text != nullptr && text->isVisible())
                    texts.insert(text->toPlainText());
            }
            QStringList titles = {view->chart()->title()};
            for (const QAbstractAxis *axis : view->chart()->axes(Qt::Vertical))
                titles.append(axis->titleText());
            for (const QString &title : std::as_const(titles))
                QVERIFY2(title.isEmpty() || texts.contains(title), qPrintable(title));
        }
    }
    pages()->setCurrentIndex(0);
    QVERIFY(m_window->findChild<QLineEdit *>("lineEditFolder")->width() > size.width() / 2);
}

void TestToolsWindow::everyChartFollowsThePalette_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

// Catches a chart that is white on a dark desktop, or whose texts are as dark as it.
void TestToolsWindow::everyChartFollowsThePalette()
{
    QFETCH(const bool, isDark);
    const QPalette before = QApplication::palette();
    const auto restore = qScopeGuard([&] { QApplication::setPalette(before); });
    open();
    if (isDark)
        QApplication::setPalette(QPalette(QColor(60, 60, 60), QColor(40, 40, 40)));
    const QColor base = QApplication::palette().color(QPalette::Base);
    QCOMPARE(base.lightness() < 128, isDark);
    int nCharts = 0;
    for (int page = 0; page < pages()->count(); ++page) {
        pages()->setCurrentIndex(page);
        QTest::qWait(50);
        for (auto *view : pages()->currentWidget()->findChildren<QChartView *>()) {
            ++nCharts;
            const QImage image = view->grab().toImage();
            QCOMPARE(image.pixelColor(image.width() - 12, 4), base);
            const QRect title(image.width() / 4, 2, image.width() / 2, 16);
            QVERIFY(highestContrast(image, title, base) >= 4.5);
            const QRect labels(2, 20, 40, image.height() - 25);
            QVERIFY(highestContrast(image, labels, base) >= 4.5);
        }
    }
    QCOMPARE(nCharts, 4);
}

// Catches names that push the results out of the window, or that can nowhere be read as a whole,
// and findings whose middle is left out.
void TestToolsWindow::longTokenNamesLeaveRoomForTheOtherColumns()
{
    const QString name = "<b>" + QString(200, 'x') + "_001.wav";
    for (const QString &other :
         {name, QString(name).replace("_001", "a001"), QString(name).replace("_001", "b001")})
        QVERIFY(writeFile(
            m_folder->filePath(other),
            WavBytes{.numChannels = 2, .sampleRate = 44100, .data = other.toUtf8()}.bytes()));
    open();
    m_window->resize(1100, 680);
    m_window->findChild<QLineEdit *>("lineEditFolder")->setText(m_folder->path());
    m_window->findChild<QPushButton *>("pushButtonCheck")->click();
    QTableView *tokens = table("Tokens");
    QTRY_COMPARE(tokens->model()->rowCount(), 3);
    QTRY_VERIFY(tokens->columnWidth(2) <= tokens->viewport()->width() / 3);
    QVERIFY(tokens->columnWidth(2) >= 150);
    // Their ends can be told apart.
    const auto cell = [&](int row, int column) {
        const QRect place = tokens->visualRect(tokens->model()->index(row, column));
        return tokens->viewport()->grab(place).toImage();
    };
    QVERIFY(cell(1, 2) != cell(2, 2));
    // A finding is read from its beginning, as far as there is room.
    const int findings = tokens->model()->columnCount() - 1;
    const QString text = tokens->model()->index(1, findings).data().toString();
    QVERIFY2(text.contains(" Hz. The file has two channels."), qPrintable(text));
    tokens->scrollTo(tokens->model()->index(1, findings));
    const QImage narrow = cell(1, findings);
    QVERIFY(narrow.width() < tokens->fontMetrics().horizontalAdvance(text));
    m_window->resize(2000, 680);
    const QRect beginning(0, 0, narrow.width() * 3 / 4, narrow.height());
    QTRY_COMPARE(cell(1, findings).copy(beginning), narrow.copy(beginning));
    QTextDocument toolTip;
    toolTip.setHtml(tokens->model()->index(0, 2).data(Qt::ToolTipRole).toString());
    QCOMPARE(toolTip.toPlainText(), name);
}

// Catches a subject code that pushes the result files out of the window, and a token that pushes
// out its reaction time.
void TestToolsWindow::longSessionNamesLeaveRoomForTheOtherColumns()
{
    writeJournal(QString(200, 'S'), QString(200, 'x') + ".wav", true);
    openSessions();
    for (const QString name : {"Sessions", "Answers of the chosen session"}) {
        const QTableView *shown = table(name);
        QVERIFY(shown->columnWidth(1) <= shown->viewport()->width() / 3);
        QVERIFY(shown->itemDelegateForColumn(1) != nullptr);
        QCOMPARE(shown->model()->index(0, 1).data(Qt::ToolTipRole).toString().size(),
                 shown->model()->index(0, 1).data().toString().size());
    }
    const QHeaderView *header = table("Sessions")->horizontalHeader();
    QVERIFY(header->sectionViewportPosition(6) < header->viewport()->width() - 100);
}

// Catches an axis of times on which the same number stands twice.
void TestToolsWindow::anEmptySessionHasDistinctTimes()
{
    writeJournal("CHD001", "a.wav", false);
    openSessions();
    QTest::qWait(50);
    const auto *view = pages()->currentWidget()->findChild<QChartView *>();
    const QRectF plot = view->chart()->mapRectToScene(view->chart()->plotArea());
    QStringList labels;
    for (const QGraphicsItem *item : view->scene()->items()) {
        const auto *text = dynamic_cast<const QGraphicsTextItem *>(item);
        if (text != nullptr && text->isVisible() && !text->toPlainText().isEmpty() &&
            text->sceneBoundingRect().right() <= plot.left() + 2)
            labels.append(text->toPlainText());
    }
    QVERIFY(labels.size() > 2);
    QCOMPARE(QSet<QString>(labels.cbegin(), labels.cend()).size(), labels.size());
}

GUI_TEST_MAIN(TestToolsWindow)
#include "tst_toolswindow.moc"
