// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Contrast.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/Noise.h"
#include "support/Recording.h"
#include "support/WavFile.h"
#include "tools/TokensPage.h"

#include <QAccessible>
#include <QChartView>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QProgressBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QSet>
#include <QSpinBox>
#include <QTableView>
#include <QTextBrowser>
#include <QTextDocument>

#include <filesystem>
#include <memory>

namespace {

constexpr int checkTimeout = 20000; // ms

/// A tone that is alike on both sides of 0, with so many periods of 8 samples.
QByteArray tone(int nPeriods)
{
    return WavBytes::samples16({4000, 8000, 4000, 0, -4000, -8000, -4000, 0}).repeated(nPeriods);
}

} // namespace

/// The page as its user sees and operates it.
class TestTokensPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theTableShowsTheFolder();
    void theFolderIsChosenInADialog();
    void aFolderThatIsNotThereIsNamed();
    void subjectCodeAndTimesAreThoseOfTheFields();
    void theFindingsOfTheFolderAreShown();
    void namesAreShownAsTheyAre();
    void resultsCanBeReadOnEveryDesktop_data();
    void resultsCanBeReadOnEveryDesktop();
    void numbersAreSortedAsNumbers();
    void theChosenTokenIsDescribedAndDrawn();
    void aTokenThatIsGoneIsNamed();
    void theTableIsExported();
    void aTableThatCannotBeWrittenIsNamed();
    void aCheckCanBeStopped();
    void thePageCanBeClosedDuringACheck();
    void everyControlHasANameAndIsReachedByTheKeyboard();
    void theChosenTokenIsHeard();

private:
    template<typename Widget>
    Widget *child(const char *name) const
    {
        return m_page->findChild<Widget *>(name);
    }
    void click(const char *button) const
    {
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
    }
    void check(const QString &folder) const;
    QTableView *table() const { return child<QTableView>("tableView"); }
    QString cell(int row, int column) const
    {
        return table()->model()->index(row, column).data().toString();
    }
    QStringList column(int column) const;
    QString message() const { return child<QLabel>("labelMessage")->text(); }
    qsizetype drawnPoints() const;
    bool isChecking() const { return child<QPushButton>("pushButtonStop")->isVisible(); }

    QString path(const QString &name) const { return m_folder->filePath(name); }
    void makeTokens() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TokensPage> m_page;
};

void TestTokensPage::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_page = std::make_unique<TokensPage>();
    m_page->resize(1300, 680);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
}

void TestTokensPage::cleanup()
{
    m_page.reset();
    m_folder.reset();
}

/// Types the folder's name, and checks it.
void TestTokensPage::check(const QString &folder) const
{
    auto *const field = child<QLineEdit>("lineEditFolder");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, folder);
    click("pushButtonCheck");
    QTRY_VERIFY_WITH_TIMEOUT(!isChecking(), checkTimeout);
}

QStringList TestTokensPage::column(int column) const
{
    QStringList texts;
    for (int row = 0; row < table()->model()->rowCount(); ++row)
        texts.append(cell(row, column));
    return texts;
}

qsizetype TestTokensPage::drawnPoints() const
{
    const QChart *chart = child<QChartView>("waveform")->chart();
    return qobject_cast<QLineSeries *>(chart->series().first())->points().size();
}

/// A good token, one that is not presented, one that is doubtful for two reasons, and a longer one.
void TestTokensPage::makeTokens() const
{
    QVERIFY(writeFile(path("a001.wav"), WavBytes{.data = tone(1500)}.bytes()));
    QVERIFY(writeFile(path("b001.wav"), WavBytes{.audioFormat = 3, .data = tone(10)}.bytes()));
    const QByteArray breaksOff = tone(500).chopped(4) + WavBytes::samples16({4000, 0});
    QVERIFY(writeFile(path("C002.wav"), WavBytes{.numChannels = 2, .data = breaksOff}.bytes()));
    QVERIFY(writeFile(path("d002.wav"), WavBytes{.data = tone(8000)}.bytes()));
}

// Catches a token that is missing or in another row, a result by colour alone, and a summary of
// another folder.
void TestTokensPage::theTableShowsTheFolder()
{
    makeTokens();
    QVERIFY(!child<QPushButton>("pushButtonExport")->isEnabled());
    check(m_folder->path());
    QCOMPARE(column(0), QStringList({"Good", "Not played", "Doubtful", "Good"}));
    QCOMPARE(column(1), QStringList({"1", "2", "3", "4"}));
    QCOMPARE(column(2), QStringList({"a001.wav", "b001.wav", "C002.wav", "d002.wav"}));
    QCOMPARE(column(3), QStringList({"mother", "mother", "stranger", "stranger"}));
    QCOMPARE(column(7), QStringList({"250.000", "", "41.667", "1333.333"}));
    QCOMPARE(cell(0, 10), "");
    QVERIFY(cell(1, 10).startsWith("The reader refuses the file"));
    QCOMPARE(cell(2, 10),
             "The file has two channels. The sound breaks off at 12.2 % of full scale.");
    const auto alignment = [this](int column) {
        return table()->model()->index(0, column).data(Qt::TextAlignmentRole).toInt();
    };
    QCOMPARE(alignment(2), int(Qt::AlignLeft | Qt::AlignVCenter));
    QCOMPARE(alignment(7), int(Qt::AlignRight | Qt::AlignVCenter));
    QSet<qint64> icons;
    for (int row = 0; row < 3; ++row)
        icons.insert(
            table()->model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>().cacheKey());
    QCOMPARE(icons.size(), 3);
    QCOMPARE(message(), "Findings: 2 of 4 tokens, and 0 of the folder.");
    const QString folder = child<QTextBrowser>("textFolder")->toPlainText();
    QVERIFY2(folder.contains("4 tokens: 2 of the mother and 2 of strangers."), qPrintable(folder));
    QVERIFY(child<QPushButton>("pushButtonExport")->isEnabled());
    QVERIFY(table()->hasFocus());
}

// Catches a dialog whose choice is not checked, and one that takes the choice away when cancelled.
void TestTokensPage::theFolderIsChosenInADialog()
{
    makeTokens();
    ModalAnswer answers;
    answers.choose(m_folder->path()).cancel();
    click("pushButtonChoose");
    QTRY_VERIFY_WITH_TIMEOUT(!isChecking(), checkTimeout);
    QCOMPARE(table()->model()->rowCount(), 4);
    click("pushButtonChoose");
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.dialogs().at(1).folder, m_folder->path());
    QCOMPARE(child<QLineEdit>("lineEditFolder")->text(), m_folder->path());
    QVERIFY(!isChecking());
}

// Catches a folder that is not there being shown as an empty one, and what was shown being lost.
void TestTokensPage::aFolderThatIsNotThereIsNamed()
{
    click("pushButtonCheck");
    QCOMPARE(message(), "Choose a folder first.");
    makeTokens();
    check(m_folder->path());
    check(path("none"));
    QCOMPARE(message(), "The folder " + path("none") + " does not exist.");
    // A path that is longer than the line can be read as a whole.
    QTextDocument toolTip;
    toolTip.setHtml(child<QLabel>("labelMessage")->toolTip());
    QCOMPARE(toolTip.toPlainText(), message());
    QCOMPARE(table()->model()->rowCount(), 4);
}

// Catches fields that are not read.
void TestTokensPage::subjectCodeAndTimesAreThoseOfTheFields()
{
    makeTokens();
    QCOMPARE(child<QLineEdit>("lineEditSubCode")->text(), "CHD001");
    child<QLineEdit>("lineEditSubCode")->setText("CHD002");
    child<QSpinBox>("spinBoxNTimes")->setValue(3);
    check(m_folder->path());
    QCOMPARE(column(3), QStringList({"stranger", "stranger", "mother", "mother"}));
    QVERIFY(child<QTextBrowser>("textFolder")->toPlainText().contains("12 presentations"));
}

// Catches a finding of the folder that is only counted, and one that is kept when it is cured.
void TestTokensPage::theFindingsOfTheFolderAreShown()
{
    makeTokens();
    const auto text = [this] { return child<QTextBrowser>("textFolder")->toPlainText(); };
    child<QLineEdit>("lineEditSubCode")->setText("CHD009");
    check(m_folder->path());
    QCOMPARE(message(), "Findings: 2 of 4 tokens, and 1 of the folder.");
    QVERIFY2(text().contains("No token is of the category \"mother\" for the subject code "
                             "\"CHD009\". The same answer would be right each time. Check"),
             qPrintable(text()));
    child<QLineEdit>("lineEditSubCode")->setText("CHD001");
    check(m_folder->path());
    QVERIFY2(!text().contains("No token"), qPrintable(text()));
}

// Catches a name that is taken for markup in one of the texts.
void TestTokensPage::namesAreShownAsTheyAre()
{
    for (const char *name : {"<i>a001.wav", "<i>b001.wav"})
        QVERIFY(writeFile(path(name), WavBytes{.data = tone(1500)}.bytes()));
    QVERIFY(writeFile(path("<i>.txt"), "no token"));
    check(m_folder->path());
    const auto text = [this] { return child<QTextBrowser>("textToken")->toPlainText(); };
    QVERIFY2(text().startsWith("<i>a001.wav"), qPrintable(text()));
    QTest::keyClick(table(), Qt::Key_Down);
    QVERIFY2(text().startsWith("<i>b001.wav") &&
                 text().contains("The content is the same as of \"<i>a001.wav\"."),
             qPrintable(text()));
    const QString folder = child<QTextBrowser>("textFolder")->toPlainText();
    QVERIFY2(folder.contains(": <i>.txt."), qPrintable(folder));
}

void TestTokensPage::resultsCanBeReadOnEveryDesktop_data()
{
    QTest::addColumn<QPalette>("palette");
    QTest::newRow("light") << QApplication::palette();
    QTest::newRow("dark") << QPalette(QColor(60, 60, 60), QColor(40, 40, 40));
}

// Catches results and findings in a colour that is too near to the background, and in that of
// another result.
void TestTokensPage::resultsCanBeReadOnEveryDesktop()
{
    QFETCH(const QPalette, palette);
    const QPalette before = QApplication::palette();
    const auto restore = qScopeGuard([&] { QApplication::setPalette(before); });
    QApplication::setPalette(palette);
    makeTokens();
    check(m_folder->path());
    const auto colour = [this](int row, int column) {
        return table()->model()->index(row, column).data(Qt::ForegroundRole);
    };
    for (const int row : {1, 2}) {
        const auto result = colour(row, 0).value<QColor>();
        QVERIFY2(contrast(result, palette.color(QPalette::Base)) >= 4.5, qPrintable(result.name()));
        QCOMPARE(colour(row, 10), colour(row, 0));
        QVERIFY(!colour(row, 2).isValid());
    }
    QVERIFY(colour(1, 0) != colour(2, 0));
    QVERIFY(!colour(0, 0).isValid());
}

// Catches numbers that are sorted as texts, by which 1333 comes before 250.
void TestTokensPage::numbersAreSortedAsNumbers()
{
    makeTokens();
    check(m_folder->path());
    QHeaderView *const header = table()->horizontalHeader();
    const auto clickHeader = [&](int section) {
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(section) + 10, 5));
    };
    clickHeader(7);
    QCOMPARE(column(7), QStringList({"", "41.667", "250.000", "1333.333"}));
    clickHeader(0);
    QCOMPARE(column(0), QStringList({"Not played", "Doubtful", "Good", "Good"}));
    clickHeader(2);
    QCOMPARE(column(2), QStringList({"a001.wav", "b001.wav", "C002.wav", "d002.wav"}));
    // Two findings come after one, whatever their texts.
    clickHeader(10);
    QCOMPARE(column(10).last().section(' ', 0, 2), "The file has");
}

// Catches the text or the picture of another token, also in a sorted table, and a sound where a
// session would play another one.
void TestTokensPage::theChosenTokenIsDescribedAndDrawn()
{
    makeTokens();
    check(m_folder->path());
    const auto text = [this] { return child<QTextBrowser>("textToken")->toPlainText(); };
    QTRY_COMPARE(drawnPoints(), 12000);
    QVERIFY(text().startsWith("a001.wav"));
    QVERIFY(text().contains("Nothing was found."));
    QVERIFY(child<QPushButton>("pushButtonPlay")->isEnabled());

    QTest::keyClick(table(), Qt::Key_Down);
    QVERIFY2(text().startsWith("b001.wav") && text().contains("the token before it"),
             qPrintable(text()));
    QTRY_COMPARE(drawnPoints(), 0);
    QVERIFY(!child<QPushButton>("pushButtonPlay")->isEnabled());
    QVERIFY2(message().startsWith("Findings: "), qPrintable(message()));

    table()->sortByColumn(1, Qt::DescendingOrder);
    QTest::keyClick(table(), Qt::Key_Up);
    QVERIFY2(text().startsWith("C002.wav") && text().contains("the left one alone") &&
                 text().contains("A click would be heard"),
             qPrintable(text()));
    QTRY_COMPARE(drawnPoints(), 2000);
}

// Catches a crash, or a drawing of another token, when a file has gone since the check.
void TestTokensPage::aTokenThatIsGoneIsNamed()
{
    makeTokens();
    check(m_folder->path());
    QTRY_COMPARE(drawnPoints(), 12000);
    QVERIFY(QFile::remove(path("C002.wav")));
    QTest::keyClick(table(), Qt::Key_Down);
    QTest::keyClick(table(), Qt::Key_Down);
    QTRY_COMPARE(message(), "C002.wav cannot be read any more.");
    QCOMPARE(drawnPoints(), 0);
}

// Catches an export of something else than the table, or in another order than the session's.
void TestTokensPage::theTableIsExported()
{
    makeTokens();
    check(m_folder->path());
    table()->sortByColumn(1, Qt::DescendingOrder);
    ModalAnswer answers;
    answers.choose(path("table.txt"));
    click("pushButtonExport");
    QCOMPARE(answers.problem(), "");
    const QList<QByteArray> lines = contents(path("table.txt")).split('\n');
    QCOMPARE(lines.size(), 6);
    QVERIFY(lines.at(0).startsWith("Number\tName\tCategory\t"));
    QCOMPARE(lines.at(1), "1\ta001.wav\tmother\t48000\t16\t1\t250.000\t-12.2\t-16.5\t");
    QCOMPARE(lines.at(3), "3\tC002.wav\tstranger\t48000\t16\t2\t41.667\t-18.3\t-18.3\t"
                          "The file has two channels. A session would play the left one alone. "
                          "Save the wanted channel, or a mix of both, as one channel. "
                          "The sound breaks off at 12.2 % of full scale. A click would be heard. "
                          "Fade its last milliseconds out.");
    QCOMPARE(message(), "The table has been written to " + path("table.txt") + ".");
}

// Catches a failure that is told as a success.
void TestTokensPage::aTableThatCannotBeWrittenIsNamed()
{
    makeTokens();
    check(m_folder->path());
    QVERIFY(QDir().mkpath(path("folder")));
    ModalAnswer answers;
    answers.choose(path("gone/table.txt"));
    QVERIFY(QDir().mkpath(path("gone")));
    answers.when([this] { return QDir(path("gone")).removeRecursively(); });
    click("pushButtonExport");
    QVERIFY2(message().startsWith(path("gone/table.txt") + " cannot be written: "),
             qPrintable(message()));
    QCOMPARE(table()->model()->rowCount(), 4);
}

// Catches a window that freezes during a check, a check that goes on, and a result that is lost.
void TestTokensPage::aCheckCanBeStopped()
{
    makeTokens();
    check(m_folder->path());
    QVERIFY(QDir().mkpath(path("many")));
    QVERIFY(writeFile(path("many/0.wav"), WavBytes{.data = tone(60000)}.bytes()));
    for (int i = 1; i <= 20000; ++i)
        std::filesystem::create_hard_link(path("many/0.wav").toStdString(),
                                          path(QString("many/%1.wav").arg(i)).toStdString());
    child<QLineEdit>("lineEditFolder")->setText(path("many"));
    click("pushButtonCheck");
    QVERIFY(isChecking());
    QVERIFY(!child<QPushButton>("pushButtonCheck")->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(child<QProgressBar>("progressBar")->value() > 0, checkTimeout);
    QVERIFY(isChecking());
    click("pushButtonStop");
    QTRY_VERIFY_WITH_TIMEOUT(!isChecking(), 3000);
    QCOMPARE(message(), "The check has been stopped.");
    QCOMPARE(table()->model()->rowCount(), 4);
    QVERIFY(child<QPushButton>("pushButtonCheck")->isEnabled());
    QVERIFY(child<QPushButton>("pushButtonExport")->isEnabled());
}

// Catches a thread that outlives what it writes to.
void TestTokensPage::thePageCanBeClosedDuringACheck()
{
    for (int i = 0; i < 500; ++i)
        QVERIFY(writeFile(path(QString("%1.wav").arg(i)), WavBytes{.data = tone(1000)}.bytes()));
    child<QLineEdit>("lineEditFolder")->setText(m_folder->path());
    click("pushButtonCheck");
    m_page.reset();
    QCoreApplication::processEvents();
}

// Catches a control without a name for a screen reader, and one that the tab key does not reach.
void TestTokensPage::everyControlHasANameAndIsReachedByTheKeyboard()
{
    makeTokens();
    check(m_folder->path());
    QTRY_COMPARE(drawnPoints(), 12000);
    QSet<QWidget *> reached;
    for (int i = 0; i < 40; ++i) {
        QTest::keyClick(m_page->focusWidget(), Qt::Key_Tab);
        reached.insert(m_page->focusWidget());
    }
    for (const char *name : {"lineEditFolder", "pushButtonChoose", "lineEditSubCode",
                             "spinBoxNTimes", "pushButtonCheck", "pushButtonExport",
                             "pushButtonPlay", "tableView", "textFolder", "textToken"})
        QVERIFY2(reached.contains(child<QWidget>(name)), name);
    for (const char *name :
         {"lineEditFolder", "pushButtonChoose", "lineEditSubCode", "spinBoxNTimes",
          "pushButtonCheck", "pushButtonExport", "pushButtonPlay", "tableView", "textFolder",
          "textToken", "progressBar", "pushButtonStop", "waveform", "spectrum"}) {
        QAccessibleInterface *const accessible =
            QAccessible::queryAccessibleInterface(child<QWidget>(name));
        QVERIFY2(accessible != nullptr && accessible->text(QAccessible::Name).size() > 4, name);
    }
}

// Catches a button that plays another token, or nothing, and one that cannot be used again.
void TestTokensPage::theChosenTokenIsHeard()
{
    const QList<double> token = noise(24000, 5);
    QVERIFY(writeFile(path("a001.wav"), wavBytes(noise(24000, 4))));
    QVERIFY(writeFile(path("b002.wav"), wavBytes(token)));
    const Recording recording;
    QVERIFY2(recording.isRunning(), "run this by scripts/private-session.sh --audio");
    check(m_folder->path());
    QTest::keyClick(table(), Qt::Key_Down);
    auto *const play = child<QPushButton>("pushButtonPlay");
    constexpr int mostGaps = 3; // of a machine that stops for a moment
    HeardToken heard;
    for (int i = 0; i <= mostGaps && !heard.whole; ++i) {
        QCOMPARE(play->text(), "&Play");
        click("pushButtonPlay");
        QCOMPARE(play->text(), "Sto&p playing");
        QTRY_COMPARE_WITH_TIMEOUT(play->text(), "&Play", checkTimeout);
        heard = findToken(recording.samples(), token);
        QVERIFY2(heard.whole || heard.hasGap(), qPrintable(heard.text()));
    }
    QVERIFY2(heard.whole, qPrintable(heard.text()));
    click("pushButtonPlay");
    QCOMPARE(play->text(), "Sto&p playing");
    click("pushButtonPlay");
    QCOMPARE(play->text(), "&Play");
}

GUI_TEST_MAIN(TestTokensPage)
#include "tst_tokenspage.moc"
