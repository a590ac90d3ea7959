// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/TokenMemory.h"
#include "support/WavFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr qint64 headerSize = 44;

/// What is needed per point at least: what was measured with the program's charts.
constexpr qint64 measuredPerPoint = 460;

QByteArray header(int channels, int bits, quint32 dataSize)
{
    return WavBytes{.numChannels = static_cast<std::uint16_t>(channels),
                    .bitsPerSample = static_cast<std::uint16_t>(bits),
                    .declaredSize = dataSize}
        .bytes();
}

/// A file of @p size bytes that begins with @p header and takes no room on the disk.
bool writeSparse(const QString &path, const QByteArray &header, qint64 size)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(header) == header.size() &&
           file.resize(size);
}

} // namespace

class TestTokenMemory : public QObject
{
    Q_OBJECT

private slots:
    void wholeTokensTakeAtLeastWhatWasMeasured_data();
    void wholeTokensTakeAtLeastWhatWasMeasured();
    void tokensThatAreNotConvertedTakeTheirBytes_data();
    void tokensThatAreNotConvertedTakeTheirBytes();
    void memoryOfAFileIsThatOfItsHeader();
    void filesThatCannotBeReadTakeNothing();
    void onlyAPartIsReused();
    void availableMemoryIsRead_data();
    void availableMemoryIsRead();
    void memoryThatIsThereCanBeTaken();
    void memoryThatIsNotThereCannotBeTaken();
};

void TestTokenMemory::wholeTokensTakeAtLeastWhatWasMeasured_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<quint32>("dataSize");
    QTest::addColumn<qint64>("nSamples");
    QTest::addColumn<qint64>("nPoints");

    QTest::newRow("quarter of a second") << 1 << 16 << 24000U << qint64{12000} << qint64{12000};
    QTest::newRow("8 bits") << 1 << 8 << 1048577U << qint64{1048577} << qint64{1048577};
    QTest::newRow("24 bits") << 1 << 24 << 3000000U << qint64{1000000} << qint64{1000000};
    QTest::newRow("24 bits, fragment") << 1 << 24 << 3000002U << qint64{1000000} << qint64{1000000};
    QTest::newRow("stereo") << 2 << 16 << 4000000U << qint64{2000000} << qint64{1000000};
    QTest::newRow("a hundred channels")
        << 100 << 16 << 2000000U << qint64{1000000} << qint64{10000};
    QTest::newRow("no channel") << 0 << 16 << 2000000U << qint64{1000000} << qint64{0};
    QTest::newRow("one sample") << 1 << 16 << 2U << qint64{1} << qint64{1};
    QTest::newRow("4 GiB") << 1 << 8 << 0xFFFFFFFFU << qint64{0xFFFFFFFF} << qint64{0xFFFFFFFF};
}

// Catches an estimate below what has been measured, one that overflows or that counts the samples
// of one channel alone, and one so far above it that tokens would be refused without need; also a
// bound that a token exceeds.
void TestTokenMemory::wholeTokensTakeAtLeastWhatWasMeasured()
{
    QFETCH(const int, channels);
    QFETCH(const int, bits);
    QFETCH(const quint32, dataSize);
    QFETCH(const qint64, nSamples);
    QFETCH(const qint64, nPoints);
    const qint64 least = dataSize + nSamples * qint64{sizeof(double)};
    const qint64 memory = tokenMemory(header(channels, bits, dataSize), headerSize + dataSize);
    QVERIFY2(memory >= least + nPoints * measuredPerPoint, qPrintable(QString::number(memory)));
    QVERIFY2(memory <= least + nPoints * measuredPerPoint * 3 / 2,
             qPrintable(QString::number(memory)));
    const qint64 withRest =
        tokenMemory(header(channels, bits, dataSize) + "LIST", headerSize + dataSize + 5000);
    QCOMPARE(withRest, memory);
    QVERIFY(mostTokenMemory(headerSize + dataSize) >= memory);
}

void TestTokenMemory::tokensThatAreNotConvertedTakeTheirBytes_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<qint64>("fileSize");
    QTest::addColumn<qint64>("expected");

    const QByteArray whole = header(1, 16, 2000);
    QTest::newRow("one byte missing") << whole << headerSize + 1999 << qint64{1999};
    QTest::newRow("header alone") << whole << headerSize << qint64{0};
    QTest::newRow("header cut while it was read") << whole << headerSize - 1 << qint64{0};
    QTest::newRow("4 GiB declared, 3 there")
        << header(2, 24, 0xFFFFFFFF) << headerSize + 3'000'000'000 << qint64{3'000'000'000};
    QTest::newRow("declares nothing") << header(1, 16, 0) << headerSize + 5000 << qint64{0};
    QTest::newRow("43 bytes") << whole.first(43) << qint64{43} << qint64{0};
    QTest::newRow("43 bytes, and the file has grown")
        << whole.first(43) << headerSize + 2000 << qint64{0};
    QTest::newRow("empty") << QByteArray() << qint64{0} << qint64{0};
    for (const int bits : {0, 1, 12, 20, 32, 64, 0x1010}) {
        QTest::addRow("%d bits", bits) << header(1, bits, 2000) << headerSize + 2000 << qint64{0};
    }
}

// Catches a short or odd header that is looked at beyond its end or divides by zero, and an
// estimate by what a header declares of a file that does not have it.
void TestTokenMemory::tokensThatAreNotConvertedTakeTheirBytes()
{
    QFETCH(const QByteArray, header);
    QFETCH(const qint64, fileSize);
    QTEST(tokenMemory(header, fileSize), "expected");
}

// Catches a size or a header that is not the file's own.
void TestTokenMemory::memoryOfAFileIsThatOfItsHeader()
{
    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QString path = folder.filePath(QString::fromUtf8("Gr\u00f6\u00dfe.wav"));
    const QByteArray huge = header(1, 16, 2'000'000'000);
    QVERIFY(writeSparse(path, huge, headerSize + 2'000'000'000));
    QCOMPARE(tokenMemory(path.toStdString()), tokenMemory(huge, headerSize + 2'000'000'000));
    QVERIFY(writeSparse(path, huge, 1000));
    QCOMPARE(tokenMemory(path.toStdString()), 1000 - headerSize);
    QVERIFY(writeSparse(path, huge.first(20), 20));
    QCOMPARE(tokenMemory(path.toStdString()), 0);
}

// Catches a file that is not there, or a folder, taken for a large one, and one that is waited for.
void TestTokenMemory::filesThatCannotBeReadTakeNothing()
{
    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QCOMPARE(tokenMemory(folder.filePath("none.wav").toStdString()), 0);
    QCOMPARE(tokenMemory(folder.path().toStdString()), 0);
    QCOMPARE(tokenMemory(std::string("/dev/zero")), 0);

    const std::string fifo = folder.filePath("fifo.wav").toStdString();
    QCOMPARE(mkfifo(fifo.c_str(), 0600), 0);
    auto memory = std::async(std::launch::async, [&] { return tokenMemory(fifo); });
    bool waited = false;
    while (memory.wait_for(2s) == std::future_status::timeout) {
        waited = true;
        close(open(fifo.c_str(), O_RDWR | O_NONBLOCK));
    }
    QCOMPARE(memory.get(), 0);
    QVERIFY(!waited);
}

// Catches a second token of the same size that is always let through, or never.
void TestTokenMemory::onlyAPartIsReused()
{
    const qint64 memory = tokenMemory(header(1, 16, 2'000'000), headerSize + 2'000'000);
    QVERIFY(reusableMemory(memory) >= memory / 4);
    QVERIFY(reusableMemory(memory) <= memory / 2);
    QCOMPARE(reusableMemory(0), 0);
}

void TestTokenMemory::availableMemoryIsRead_data()
{
    QTest::addColumn<QByteArray>("meminfo");
    QTest::addColumn<qint64>("expected"); // -1: not told

    const QByteArray before = "MemTotal:       24683644 kB\nMemFree:        19004840 kB\n";
    QTest::newRow("as the system tells it")
        << before + "MemAvailable:   23476000 kB\nBuffers:          100 kB\n"
        << qint64{23476000} * 1024;
    QTest::newRow("nothing") << QByteArray() << qint64{-1};
    QTest::newRow("an old system's") << before << qint64{-1};
    QTest::newRow("no number") << QByteArray("MemAvailable: plenty kB\n") << qint64{-1};
    QTest::newRow("nothing behind the name") << QByteArray("MemAvailable:") << qint64{-1};
    QTest::newRow("none left") << QByteArray("MemAvailable: 0 kB\n") << qint64{0};
}

// Catches another line's value, kilobytes taken for bytes, and nothing known taken for nothing
// left.
void TestTokenMemory::availableMemoryIsRead()
{
    QFETCH(const QByteArray, meminfo);
    QTEST(availableMemory(meminfo).value_or(-1), "expected");
}

// Catches a limit that refuses what there is.
void TestTokenMemory::memoryThatIsThereCanBeTaken()
{
    for (const qint64 bytes : {qint64{-1}, qint64{0}, qint64{1}, qint64{50'000'000}})
        QVERIFY(canTakeMemory(bytes));
}

// Catches what the machine cannot give: more than is free though it has so much altogether, which
// the system would promise, and more than it has.
void TestTokenMemory::memoryThatIsNotThereCannotBeTaken()
{
    QFile meminfo("/proc/meminfo");
    QVERIFY(meminfo.open(QIODevice::ReadOnly));
    const QByteArray total = meminfo.readLine().simplified().split(' ').value(1);
    QVERIFY(total.toLongLong() > 0);
    QVERIFY(!canTakeMemory(total.toLongLong() * 1024 - 65536));
    QVERIFY(!canTakeMemory(std::numeric_limits<qint64>::max()));
}

QTEST_APPLESS_MAIN(TestTokenMemory)
#include "tst_tokenmemory.moc"
