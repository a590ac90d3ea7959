// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "support/Controls.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/WavFile.h"
#include "tools/ToolsWindow.h"

#include <QChartView>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QLabel>
#include <QLineSeries>
#include <QPushButton>
#include <QSplitter>
#include <QTabWidget>
#include <QTableWidget>
#include <QValueAxis>

#include <memory>

/// The page of the companion that finds sessions again.
class TestSessionsPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void anEmptyFolderIsSaidAndOffersNothing();
    void eachSessionIsARowAndTheLatestIsShown();
    void choosingASessionShowsItsAnswers();
    void aRefreshKeepsEachRowTogether();
    void sessionsWhoseAnswersAreInNoFileAreMarked();
    void restoringWritesTheThreeFiles();
    void aRestoreThatFailsIsExplained();
    void deletingAsksFirst();
    void aJournalDeletedMeanwhileIsExplained();
    void everyControlHasANameAndIsReachedByTheTabKey();

private:
    template<typename Widget>
    Widget *named(const QString &name) const
    {
        return namedControl<Widget>(*m_window, name);
    }
    QPushButton *button(const QString &text) const { return shownButton(*m_window, text); }
    void click(const QString &text) const { QTest::mouseClick(button(text), Qt::LeftButton); }
    QTableWidget *sessions() const { return named<QTableWidget>("Sessions"); }
    QTableWidget *answers() const { return named<QTableWidget>("Answers of the chosen session"); }
    static QStringList row(const QTableWidget *table, int row);
    QString shownText() const;
    void choose(int row) const;

    /// A journal that was begun at @p hour o'clock, with two answers of three presentations.
    void writeJournal(const QString &name, int hour, const QByteArray &further = {}) const;
    bool open();

    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolsWindow> m_window;
};

void TestSessionsPage::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QDir(journalFolder()).removeRecursively();
}

void TestSessionsPage::cleanup()
{
    m_window.reset();
}

void TestSessionsPage::writeJournal(const QString &name, int hour, const QByteArray &further) const
{
    QVERIFY(QDir().mkpath(journalFolder()));
    const QByteArray start =
        QDateTime({2026, 11, 22}, {hour, 1}).toUTC().toString(Qt::ISODateWithMs).toUtf8();
    const QByteArray journal =
        R"({"type":"session","started":")" + start + R"(","parameters":{"subCode":"CHD00)" +
        QByteArray::number(hour) +
        R"(","sesTypeNames":["practice","experiment"],"sesTypeIndex":0,"sesNum":3,"saveData":true,)"
        R"("outputFileName":"CHD_practice003.txt"},"tokens":["a001.wav","b.wav"],"order":[1,0,1]})"
        "\n"
        R"({"type":"answer","trial":1,"token":1,"filename":"b.wav","stim":"stranger","resp":"mother","rt":500,)"
        R"("presentation":{"clockStart":12.5,"tokenEnd":11.25,"block":40}})"
        "\n"
        R"({"type":"answer","trial":2,"token":0,"filename":"a001.wav","stim":"mother","resp":"mother","rt":700,)"
        R"("presentation":{"clockStart":20.75,"tokenEnd":11.25,"block":40}})"
        "\n" +
        further;
    QVERIFY(writeFile(journalFolder() + '/' + name + ".jsonl", journal));
}

bool TestSessionsPage::open()
{
    m_window = std::make_unique<ToolsWindow>();
    m_window->show();
    auto *pages = m_window->findChild<QTabWidget *>();
    for (int page = 0; page < pages->count(); ++page) {
        if (pages->tabText(page) == "Sessions")
            pages->setCurrentIndex(page);
    }
    return QTest::qWaitFor([this] { return button("Refresh")->isEnabled(); });
}

QStringList TestSessionsPage::row(const QTableWidget *table, int row)
{
    QStringList texts;
    for (int column = 0; column < table->columnCount(); ++column) {
        const QTableWidgetItem *item = table->item(row, column);
        texts.append(item != nullptr ? item->text() : QString());
    }
    return texts;
}

/// The texts of all labels.
QString TestSessionsPage::shownText() const
{
    QStringList texts;
    const QList<QLabel *> labels = m_window->findChildren<QLabel *>();
    for (const QLabel *label : labels)
        texts.append(label->text());
    return texts.join('\n');
}

void TestSessionsPage::choose(int row) const
{
    QTableWidget *table = sessions();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                      table->visualItemRect(table->item(row, 1)).center());
}

// Catches a page that is silent, or offers to restore or delete nothing.
void TestSessionsPage::anEmptyFolderIsSaidAndOffersNothing()
{
    QVERIFY(open());
    QVERIFY(shownText().contains("There are no sessions in " + journalFolder() + '.'));
    QCOMPARE(sessions()->rowCount(), 0);
    QVERIFY(!button("Restore…")->isEnabled());
    QVERIFY(!button("Delete…")->isEnabled());
    QVERIFY(!button("Stop")->isVisible());
}

// Catches a column with another's text, and an old session shown first.
void TestSessionsPage::eachSessionIsARowAndTheLatestIsShown()
{
    writeJournal("1", 8);
    writeJournal("2", 9, R"({"type":"end","end":"broken off"})");
    QVERIFY(writeFile(journalFolder() + "/3.jsonl", "torn"));
    QVERIFY(open());
    QCOMPARE(sessions()->rowCount(), 2);
    QCOMPARE(row(sessions(), 0).mid(1),
             QStringList({"CHD009", "practice", "3", "2 of 3", "broken off", "not saved"}));
    QCOMPARE(row(sessions(), 1).mid(1),
             QStringList({"CHD008", "practice", "3", "2 of 3", "stopped", "not saved"}));
    QVERIFY(sessions()->item(0, 0)->isSelected());
    QVERIFY(shownText().contains("2 sessions have answers that are not, or no longer, in their "
                                 "files. " +
                                 journalFolder() + "/3.jsonl is not a journal"));
}

// Catches answers of another session, also when the list has been sorted.
void TestSessionsPage::choosingASessionShowsItsAnswers()
{
    writeJournal("1", 8);
    writeJournal("2", 9,
                 R"({"type":"answer","trial":3,"token":1,"filename":"b.wav","stim":"stranger",)"
                 R"("resp":"stranger","rt":1200})");
    QVERIFY(open());
    QCOMPARE(answers()->rowCount(), 3);
    sessions()->sortByColumn(0, Qt::AscendingOrder);
    choose(0);
    QCOMPARE(row(sessions(), 0).at(1), "CHD008");
    QCOMPARE(answers()->rowCount(), 2);
    QCOMPARE(row(answers(), 0),
             QStringList({"1", "b.wav", "stranger", "mother", "500", "as planned"}));
    QCOMPARE(row(answers(), 1),
             QStringList({"2", "a001.wav", "mother", "mother", "700",
                          "the reaction clock was started 9.5 ms after the end of the sound"}));
    QVERIFY(answers()->item(0, 5)->icon().isNull());
    QVERIFY(!answers()->item(1, 5)->icon().isNull());
    QVERIFY(shownText().contains(
        "2 of 3 answers, 50 % of them correct; median reaction time 600 ms. The reaction clock was "
        "started at most 9.5 ms after the end of the sound; presentations with a problem of "
        "timing: 1."));
    const auto *view = named<QChartView>("Reaction times by trial");
    QVERIFY(view != nullptr);
    const auto *line = qobject_cast<QLineSeries *>(view->chart()->series().constFirst());
    QCOMPARE(line->points(), QList<QPointF>({{1, 500}, {2, 700}}));
    const auto *trials =
        qobject_cast<QValueAxis *>(view->chart()->axes(Qt::Horizontal).constFirst());
    QCOMPARE(trials->max() / (trials->tickCount() - 1), 1.0);
    choose(1);
    QCOMPARE(line->points(), QList<QPointF>({{1, 500}, {2, 700}, {3, 1200}}));
}

// Catches a table that sorts itself while it is filled, so that a row gets texts of several
// sessions.
void TestSessionsPage::aRefreshKeepsEachRowTogether()
{
    writeJournal("1", 8);
    writeJournal("2", 7, R"({"type":"end","end":"broken off"})");
    writeJournal("3", 9);
    QVERIFY(open());
    QList<QStringList> rows;
    for (int i = 0; i < 3; ++i)
        rows.append(row(sessions(), i));
    for (int column = 0; column < sessions()->columnCount(); ++column) {
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            sessions()->sortByColumn(column, order);
            click("Refresh");
            QTRY_VERIFY(button("Refresh")->isEnabled());
            for (int i = 0; i < 3; ++i)
                QCOMPARE(row(sessions(), i), rows.at(i));
        }
    }
}

// Catches a mark by colour alone, at the wrong session, or none.
void TestSessionsPage::sessionsWhoseAnswersAreInNoFileAreMarked()
{
    QByteArrayList files;
    for (const char *name : {"r.txt", "r_entries.txt", "r_parameters.txt"}) {
        QVERIFY(writeFile(path(name), name));
        files.append(R"({"path":")" + path(name).toUtf8() + R"(","sha256":")" +
                     QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex() + R"("})");
    }
    const QByteArray saved = R"({"type":"save","files":[)" + files.join(',') + "]}\n";
    writeJournal("1", 8, saved);
    QVERIFY(open());
    QCOMPARE(row(sessions(), 0).last(), "unchanged");
    QVERIFY(sessions()->item(0, 6)->icon().isNull());
    QVERIFY(shownText().contains("All answers that were to be saved are in their files."));

    QVERIFY(QFile::remove(path("r_entries.txt")));
    click("Refresh");
    QTRY_VERIFY(button("Refresh")->isEnabled());
    QCOMPARE(row(sessions(), 0).last(), "r_entries.txt gone");
    QVERIFY(!sessions()->item(0, 6)->icon().isNull());
    QVERIFY(shownText().contains("1 session has answers that are not"));
}

// Catches another session restored than the chosen one, and success told without files.
void TestSessionsPage::restoringWritesTheThreeFiles()
{
    writeJournal("1", 8);
    writeJournal("2", 9, R"({"type":"end","end":"quit"})");
    QVERIFY(open());
    choose(1);
    ModalAnswer modals;
    modals.choose(path("again.txt")).press(QMessageBox::Ok);
    click("Restore…");
    QCOMPARE(modals.problem(), "");
    QCOMPARE(modals.dialogs().at(0).typed, "CHD_practice003.txt");
    QCOMPARE(modals.boxes().at(0).text,
             "The three result files are now in " + m_folder->path() + '.');
    QVERIFY(contents(path("again.txt")).contains("a001.wav\t1\t0\t700"));
    QVERIFY(contents(path("again_entries.txt")).contains("b.wav\tstranger\tmother\t0\t500"));
    QVERIFY(contents(path("again_parameters.txt")).contains("subCode: CHD008\n"));
}

// Catches a failure without a word.
void TestSessionsPage::aRestoreThatFailsIsExplained()
{
    writeJournal("1", 8);
    QVERIFY(open());
    QVERIFY(QDir().mkpath(path("again_entries.txt")));
    ModalAnswer modals;
    modals.choose(path("again.txt")).press(QMessageBox::Ok);
    click("Restore…");
    QCOMPARE(modals.problem(), "");
    QCOMPARE(modals.boxes().at(0).icon, QMessageBox::Warning);
    QVERIFY(modals.boxes().at(0).text.contains("again_entries.txt"));
}

// Catches answers deleted unasked, by the key Return alone, or those of another session.
void TestSessionsPage::deletingAsksFirst()
{
    writeJournal("1", 8);
    writeJournal("2", 9);
    QVERIFY(open());
    {
        ModalAnswer modals;
        modals.press(QMessageBox::No);
        click("Delete…");
        QCOMPARE(modals.problem(), "");
        QCOMPARE(modals.boxes().at(0).defaultButton, QMessageBox::No);
        QVERIFY(modals.boxes().at(0).text.contains("CHD009"));
        QVERIFY(modals.boxes().at(0).text.contains("not all in the result files"));
    }
    QVERIFY(QFile::exists(journalFolder() + "/2.jsonl"));
    ModalAnswer modals;
    modals.press(QMessageBox::Yes);
    click("Delete…");
    QCOMPARE(modals.problem(), "");
    QTRY_COMPARE(sessions()->rowCount(), 1);
    QVERIFY(!QFile::exists(journalFolder() + "/2.jsonl"));
    QVERIFY(QFile::exists(journalFolder() + "/1.jsonl"));
}

// Catches a box without a reason, and a row that stays.
void TestSessionsPage::aJournalDeletedMeanwhileIsExplained()
{
    writeJournal("1", 8);
    QVERIFY(open());
    QVERIFY(QFile::remove(journalFolder() + "/1.jsonl"));
    ModalAnswer modals;
    modals.press(QMessageBox::Yes).press(QMessageBox::Ok);
    click("Delete…");
    QCOMPARE(modals.problem(), "");
    QVERIFY(modals.boxes().at(1).text.contains("There is no journal named 1"));
    QTRY_COMPARE(sessions()->rowCount(), 0);
}

// Catches a control that a screen reader cannot name, or that only a mouse reaches.
void TestSessionsPage::everyControlHasANameAndIsReachedByTheTabKey()
{
    writeJournal("1", 8);
    QVERIFY(open());
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QList<QWidget *> expected = {button("Refresh"), button("Restore…"), button("Delete…"),
                                 sessions(), answers()};
    for (const char *text : {"Refresh", "Restore…", "Delete…"})
        QVERIFY2(!button(text)->shortcut().isEmpty(), text);
    QList<QWidget *> reached;
    for (int key = 0; key < 20; ++key) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : m_window.get(),
                        Qt::Key_Tab);
        QWidget *focused = QApplication::focusWidget();
        QVERIFY(focused != nullptr);
        const auto *button = qobject_cast<QAbstractButton *>(focused);
        QVERIFY2(button != nullptr || !focused->accessibleName().isEmpty(),
                 focused->metaObject()->className());
        reached.append(focused);
    }
    for (QWidget *widget : expected)
        QVERIFY2(reached.contains(widget), qPrintable(widget->accessibleName()));
}

GUI_TEST_MAIN(TestSessionsPage)
#include "tst_sessionspage.moc"
