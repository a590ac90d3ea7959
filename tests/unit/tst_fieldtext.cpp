// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldText.h"

#include <QLocale>
#include <QTest>

#include <limits>

class TestFieldText : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void controlCharactersAreDropped_data();
    void controlCharactersAreDropped();
    void aTextThatIsNoWholeNumberReadsAsZero_data();
    void aTextThatIsNoWholeNumberReadsAsZero();
    void aDurationIsShownInMillisecondsToThreeDecimals_data();
    void aDurationIsShownInMillisecondsToThreeDecimals();
    void aTextInMillisecondsIsReadAsSeconds_data();
    void aTextInMillisecondsIsReadAsSeconds();
    void aDurationComesBackAsTheFieldShowsIt();
};

// A locale with a decimal comma shows whether the texts depend on the user's language.
void TestFieldText::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

void TestFieldText::controlCharactersAreDropped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    const auto alone = [](const char *name, char16_t character) {
        QTest::newRow(name) << "CHD" + QString(QChar(character)) + "001"
                            << "CHD001";
    };
    alone("NUL", 0);
    alone("backspace", 8);
    alone("tab", '\t');
    alone("line feed", '\n');
    alone("vertical tab", 0x0b);
    alone("form feed", 0x0c);
    alone("carriage return", '\r');
    alone("escape", 0x1b);
    alone("last below the blank", 0x1f);
    alone("DEL", 0x7f);
    alone("first of the second set", 0x80);
    alone("next line", 0x85);
    alone("last of the second set", 0x9f);
    alone("line separator", 0x2028);
    alone("paragraph separator", 0x2029);
    QTest::newRow("first and last") << "\nCHD001\r\n"
                                    << "CHD001";
    QTest::newRow("nothing else") << "\t\n" << QString();
    QTest::newRow("empty") << QString() << QString();
    const auto kept = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(text);
    };
    kept("blanks", " CHD 001 ");
    kept("punctuation", "!~/\\%1");
    kept("letter outside ASCII", "Zo\u00eb");
    kept("other blanks", "\u00a0\u2003\u202f");
    kept("neighbour of the line separator", "\u2027");
    kept("outside the first plane", "\U0001F600");
}

// Catches a character that stays though nobody sees it in the field, and one that is lost though
// it can be seen or is a blank.
void TestFieldText::controlCharactersAreDropped()
{
    QFETCH(const QString, text);
    QTEST(withoutControlCharacters(text), "expected");
}

void TestFieldText::aTextThatIsNoWholeNumberReadsAsZero_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("expected");

    QTest::newRow("digits") << "12" << 12;
    QTest::newRow("zero") << "0" << 0;
    QTest::newRow("leading zeros are not octal") << "010" << 10;
    QTest::newRow("negative") << "-3" << -3;
    QTest::newRow("blanks around") << " 7 " << 7;
    QTest::newRow("largest") << "2147483647" << std::numeric_limits<int>::max();
    QTest::newRow("smallest") << "-2147483648" << std::numeric_limits<int>::min();
    QTest::newRow("one too large") << "2147483648" << 0;
    QTest::newRow("one too small") << "-2147483649" << 0;
    QTest::newRow("beyond 64 bits") << "99999999999999999999" << 0;
    QTest::newRow("letter") << "x" << 0;
    QTest::newRow("trailing letter") << "4x" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("fraction") << "1.5" << 0;
    QTest::newRow("exponent") << "1e2" << 0;
    QTest::newRow("hexadecimal") << "0x10" << 0;
}

// Catches a partial parse, a wrapped overflow and another base.
void TestFieldText::aTextThatIsNoWholeNumberReadsAsZero()
{
    QFETCH(const QString, text);
    QTEST(intOrZero(text), "expected");
}

void TestFieldText::aDurationIsShownInMillisecondsToThreeDecimals_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("expected");

    QTest::newRow("default duration") << 0.25 << "250.000";
    QTest::newRow("default interval") << 1.0 << "1000.000";
    QTest::newRow("none") << 0.0 << "0.000";
    QTest::newRow("12001 samples at 48 kHz") << 12001 / 48000.0 << "250.021";
    QTest::newRow("no exponent") << 12345.678 << "12345678.000";
    QTest::newRow("below a microsecond") << 1e-7 << "0.000";
}

// Catches seconds shown as they are, another precision, an exponent and a decimal comma.
void TestFieldText::aDurationIsShownInMillisecondsToThreeDecimals()
{
    QFETCH(const double, seconds);
    QTEST(millisecondsText(seconds), "expected");
}

void TestFieldText::aTextInMillisecondsIsReadAsSeconds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    QTest::newRow("default duration") << "250.000" << 0.25;
    QTest::newRow("without decimals") << "1000" << 1.0;
    QTest::newRow("exponent") << "1e3" << 1.0;
    QTest::newRow("negative") << "-250" << -0.25;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("letters") << "abc" << 0.0;
    QTest::newRow("trailing unit") << "250 ms" << 0.0;
    QTest::newRow("decimal comma") << "250,5" << 0.0;
}

// Catches a text taken as seconds, and a text that half parses.
void TestFieldText::aTextInMillisecondsIsReadAsSeconds()
{
    QFETCH(const QString, text);
    QTEST(secondsOfMillisecondsText(text), "expected");
}

// Catches a duration that keeps more digits than the field shows.
void TestFieldText::aDurationComesBackAsTheFieldShowsIt()
{
    QCOMPARE(secondsOfMillisecondsText(millisecondsText(12001 / 48000.0)), 0.250021);
}

QTEST_APPLESS_MAIN(TestFieldText)
#include "tst_fieldtext.moc"
