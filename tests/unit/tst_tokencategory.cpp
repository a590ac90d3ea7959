// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/TokenCategory.h"

#include <QTest>

class TestTokenCategory : public QObject
{
    Q_OBJECT

private slots:
    void theCategoriesAreCalledMotherAndStranger();
    void aNameThatHoldsTheCodesEndIsTheMothers_data();
    void aNameThatHoldsTheCodesEndIsTheMothers();
};

// Catches words that differ from those of the result files.
void TestTokenCategory::theCategoriesAreCalledMotherAndStranger()
{
    QCOMPARE(categoryWord(Category::Mother), "mother");
    QCOMPARE(categoryWord(Category::Stranger), "stranger");
}

void TestTokenCategory::aNameThatHoldsTheCodesEndIsTheMothers_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("subCode");
    QTest::addColumn<QString>("expected");

    QTest::newRow("default code, mother") << "MOV001_01.wav"
                                          << "CHD001"
                                          << "mother";
    QTest::newRow("default code, stranger") << "MOV002_01.wav"
                                            << "CHD001"
                                            << "stranger";
    QTest::newRow("key at the start") << "001.wav"
                                      << "CHD001"
                                      << "mother";
    QTest::newRow("key in the suffix") << "take.wav"
                                       << "CHDwav"
                                       << "mother";
    QTest::newRow("key not in one piece") << "M0V0_1.wav"
                                          << "CHD001"
                                          << "stranger";
    QTest::newRow("case differs") << "MOV00A.wav"
                                  << "chd00a"
                                  << "stranger";
    QTest::newRow("case agrees") << "MOV00a.wav"
                                 << "chd00a"
                                 << "mother";
    QTest::newRow("four characters, tail found") << "xBCDx.wav"
                                                 << "ABCD"
                                                 << "mother";
    QTest::newRow("four characters, tail cut") << "ABC.wav"
                                               << "ABCD"
                                               << "stranger";
    QTest::newRow("three characters, whole") << "ABC.wav"
                                             << "ABC"
                                             << "mother";
    QTest::newRow("three characters, tail only") << "xBC.wav"
                                                 << "ABC"
                                                 << "stranger";
    QTest::newRow("two characters, whole") << "xAB.wav"
                                           << "AB"
                                           << "mother";
    QTest::newRow("two characters, not found") << "xA.wav"
                                               << "AB"
                                               << "stranger";
    QTest::newRow("one character") << "S.wav"
                                   << "S"
                                   << "mother";
    QTest::newRow("empty code") << "MOV002_01.wav"
                                << ""
                                << "mother";
    QTest::newRow("empty code and name") << ""
                                         << ""
                                         << "mother";
    QTest::newRow("empty name") << ""
                                << "CHD001"
                                << "stranger";
    QTest::newRow("blank is a character") << "MOV001.wav"
                                          << "CHD001 "
                                          << "stranger";
    QTest::newRow("pattern characters are literal") << "MOVabc.wav"
                                                    << "CHD..."
                                                    << "stranger";
    QTest::newRow("letters outside ASCII")
        << QString::fromUtf8("Mütter.wav") << QString::fromUtf8("Kütt") << "mother";
}

// Catches a key of another length, a comparison without case, and a match at one place only.
void TestTokenCategory::aNameThatHoldsTheCodesEndIsTheMothers()
{
    QFETCH(const QString, fileName);
    QFETCH(const QString, subCode);
    QTEST(categoryWord(tokenCategory(fileName, subCode)), "expected");
}

QTEST_APPLESS_MAIN(TestTokenCategory)
#include "tst_tokencategory.moc"
