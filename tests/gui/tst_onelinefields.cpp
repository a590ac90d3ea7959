// SPDX-License-Identifier: GPL-3.0-or-later
// What gets into the fields that the operator may edit.
#include "support/GuiTestMain.h"
#include "support/OperatorWindow.h"

#include <QClipboard>
#include <QLineEdit>

#include <memory>

namespace {

QString desktop()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}

} // namespace

class TestOneLineFields : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void noControlCharacterGetsIn_data();
    void noControlCharacterGetsIn();
    void theCursorStaysBehindWhatWasPasted();
    void aPastedSubjectCodeNamesTheFiles();
    void whatIsNoNumberStays();

private:
    QLineEdit *field(const QString &name) const { return m_window->findChild<QLineEdit *>(name); }
    static void paste(QLineEdit *field, const QString &text);

    std::unique_ptr<OperatorWindow> m_window;
};

void TestOneLineFields::init()
{
    m_window = std::make_unique<OperatorWindow>();
    m_window->show();
}

void TestOneLineFields::paste(QLineEdit *field, const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
    QTest::keySequence(field, QKeySequence::Paste);
}

void TestOneLineFields::noControlCharacterGetsIn_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("way");
    for (const char *name : {"lineEditSubCode", "lineEditSesNum", "lineEditNTimes"}) {
        for (const char *way : {"pasted", "typed", "set"})
            QTest::addRow("%s, %s", name, way) << name << way;
    }
}

// Catches a line break, tab or other control character in a field that the operator may edit,
// whatever the way it took, a change of the field that is reported while it is still in there, and
// any other character that is lost with it.
void TestOneLineFields::noControlCharacterGetsIn()
{
    QFETCH(const QString, name);
    QFETCH(const QString, way);
    const QString text =
        QString::fromUtf8("\n1\t2\r\n3\x1b\x7f\u0085\u20284\u2029x\u00eb 5\n") + QChar(u'\0');
    const QString expected = QString::fromUtf8("1234x\u00eb 5");
    QStringList reported;
    connect(field(name), &QLineEdit::textChanged, this,
            [&](const QString &changed) { reported.append(changed); });
    if (way == "set") {
        field(name)->setText(text);
    } else {
        field(name)->clear();
        if (way == "pasted")
            paste(field(name), text);
        else
            field(name)->insert(text); // as an input method does
    }
    QCOMPARE(field(name)->text(), expected);
    QCOMPARE(reported.last(), expected);
    for (const QString &changed : reported)
        QVERIFY(changed.isEmpty() || changed == expected);
}

// Catches a cursor that runs ahead by the characters dropped: what is typed next would stand in
// another place.
void TestOneLineFields::theCursorStaysBehindWhatWasPasted()
{
    QLineEdit *subCode = field("lineEditSubCode");
    subCode->setText("CHD001");
    subCode->setCursorPosition(3);
    paste(subCode, "\n\nx\t");
    QCOMPARE(subCode->cursorPosition(), 4);
    QTest::keyClicks(subCode, "y");
    QCOMPARE(subCode->text(), "CHDxy001");
}

// Catches a code whose line break makes every token a stranger's and spoils folder and file names.
void TestOneLineFields::aPastedSubjectCodeNamesTheFiles()
{
    QLineEdit *subCode = field("lineEditSubCode");
    subCode->selectAll();
    paste(subCode, "S\t07\n");
    QCOMPARE(m_window->data.subCode, "S07");
    QCOMPARE(m_window->data.outputFilePath, desktop() + "/S07");
    QCOMPARE(m_window->lineEditOutputFileName->text(), "S07_practice001.txt");
    m_window->getParameters();
    QCOMPARE(m_window->data.subCode, "S07");
}

// Catches a field that refuses or mends what is no number.
void TestOneLineFields::whatIsNoNumberStays()
{
    for (const char *name : {"lineEditSesNum", "lineEditNTimes"}) {
        field(name)->selectAll();
        QTest::keyClicks(field(name), " x-1.5 ");
        QCOMPARE(field(name)->text(), " x-1.5 ");
        QVERIFY(field(name)->hasAcceptableInput());
    }
    m_window->getParameters();
    QCOMPARE(m_window->data.sesNum, 0);
    QCOMPARE(m_window->data.nTimes, 0);
}

GUI_TEST_MAIN(TestOneLineFields)
#include "tst_onelinefields.moc"
