// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/FittingText.h"

#include <QTest>

class TestFittingText : public QObject
{
    Q_OBJECT

private slots:
    void theTextFillsTheButtonButItsMargin_data();
    void theTextFillsTheButtonButItsMargin();
};

void TestFittingText::theTextFillsTheButtonButItsMargin_data()
{
    QTest::addColumn<QSizeF>("button");
    QTest::addColumn<QSizeF>("text");
    QTest::addColumn<int>("usual");
    QTest::addColumn<int>("fitting");

    QTest::newRow("as wide as fits") << QSizeF(200, 1000) << QSizeF(60, 15) << 12 << 36;
    QTest::newRow("as high as fits") << QSizeF(1000, 100) << QSizeF(60, 15) << 12 << 48;
    QTest::newRow("larger button") << QSizeF(400, 1000) << QSizeF(60, 15) << 12 << 72;
    QTest::newRow("longer text") << QSizeF(200, 1000) << QSizeF(90, 15) << 12 << 24;
    QTest::newRow("larger usual font") << QSizeF(200, 1000) << QSizeF(120, 30) << 24 << 36;
    QTest::newRow("rounded down") << QSizeF(209, 1000) << QSizeF(60, 15) << 12 << 37;
    QTest::newRow("no room, by width") << QSizeF(30, 1000) << QSizeF(60, 15) << 12 << 12;
    QTest::newRow("no room, by height") << QSizeF(1000, 15) << QSizeF(60, 15) << 12 << 12;
    QTest::newRow("no button") << QSizeF(0, 0) << QSizeF(60, 15) << 12 << 12;
    QTest::newRow("negative size") << QSizeF(-1, -1) << QSizeF(60, 15) << 12 << 12;
    QTest::newRow("no text") << QSizeF(200, 1000) << QSizeF(0, 15) << 12 << 12;
}

// Catches a text that does not grow with its button, runs into its margin or gets smaller than
// usual, and a division by the size of an empty text.
void TestFittingText::theTextFillsTheButtonButItsMargin()
{
    QFETCH(const QSizeF, button);
    QFETCH(const QSizeF, text);
    QFETCH(const int, usual);
    QTEST(fittingPixelSize(button, text, usual), "fitting");
}

QTEST_APPLESS_MAIN(TestFittingText)
#include "tst_fittingtext.moc"
