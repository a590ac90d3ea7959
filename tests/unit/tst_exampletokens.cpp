// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"
#include "audio/TokenSound.h"
#include "data/Data.h"
#include "data/TokenCategory.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <cmath>

class TestExampleTokens : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void thereAreFourExampleTokensOfEachVoice();
    void eachExampleTokenIsPlainMonoWithoutClicks_data();
    void eachExampleTokenIsPlainMonoWithoutClicks();

private:
    QDir m_folder;
};

void TestExampleTokens::initTestCase()
{
    const QString readme = QFINDTESTDATA("../../examples/README.md");
    QVERIFY(!readme.isEmpty());
    m_folder = QDir(QFileInfo(readme).dir().filePath("tokens"));
}

// Catches a name that the default subject code scores wrong.
void TestExampleTokens::thereAreFourExampleTokensOfEachVoice()
{
    const QStringList names = m_folder.entryList({"*.wav"}, QDir::Files);
    const auto mothers = std::count_if(names.begin(), names.end(), [](const QString &name) {
        return tokenCategory(name, Data().subCode) == Category::Mother;
    });
    QCOMPARE(names.size(), 8);
    QCOMPARE(mothers, 4);
}

void TestExampleTokens::eachExampleTokenIsPlainMonoWithoutClicks_data()
{
    QTest::addColumn<QString>("path");
    const QFileInfoList files = m_folder.entryInfoList({"*.wav"}, QDir::Files);
    for (const QFileInfo &file : files)
        QTest::addRow("%s", qPrintable(file.fileName())) << file.filePath();
}

// Catches a file with further chunks, of another format, too loud, silent, or one that clicks.
void TestExampleTokens::eachExampleTokenIsPlainMonoWithoutClicks()
{
    QFETCH(const QString, path);
    CWav wav;
    QVERIFY(wav.LoadWav(path.toStdString()));
    QCOMPARE(wav.numChannels, 1U);
    QCOMPARE(wav.sampleRate, 48000U);
    QCOMPARE(wav.bitsPerSample, 16U);
    QCOMPARE(QByteArray(&wav.dataHeader[0], 4), "data");
    QCOMPARE(QFileInfo(path).size(), 44 + qint64(wav.dataSize));

    const std::optional<TokenSize> size = tokenSize(wav);
    QVERIFY(size.has_value());
    QVERIFY(size->duration >= 0.4 && size->duration <= 0.9);

    const auto louder = [](double a, double b) { return std::abs(a) < std::abs(b); };
    const auto peak = std::max_element(wav.sampleVector.begin(), wav.sampleVector.end(), louder);
    QVERIFY(std::abs(*peak) > 0.5 && std::abs(*peak) < 0.9);
    QVERIFY(std::abs(wav.sampleVector.front()) < 0.001);
    QVERIFY(std::abs(wav.sampleVector.back()) < 0.001);
}

QTEST_APPLESS_MAIN(TestExampleTokens)
#include "tst_exampletokens.moc"
