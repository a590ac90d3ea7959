// SPDX-License-Identifier: GPL-3.0-or-later
// Tokens that are too large for the memory, in a process that may not take much. A limit of the
// address space stands for a machine that has no more.

#include "audio/TokenMemory.h"
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/Noise.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"

#include <QChartView>
#include <QCheckBox>
#include <QLineEdit>
#include <QLineSeries>
#include <QPushButton>

#include <memory>
#include <sys/resource.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

/// Lets this process take only some more address space, as long as it lives.
class AddressSpaceLimit
{
public:
    /// For @p bytes more than are in use.
    explicit AddressSpaceLimit(qint64 bytes)
    {
#ifdef __GLIBC__
        malloc_trim(0); // what is given back later would be more than is meant
#endif
        QFile file("/proc/self/statm");
        if (!file.open(QIODevice::ReadOnly) || getrlimit(RLIMIT_AS, &m_before) != 0)
            return;
        const qint64 used = file.readAll().split(' ').first().toLongLong() * sysconf(_SC_PAGESIZE);
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(used + bytes);
        m_holds = setrlimit(RLIMIT_AS, &limit) == 0;
    }
    ~AddressSpaceLimit()
    {
        if (m_holds)
            setrlimit(RLIMIT_AS, &m_before);
    }
    AddressSpaceLimit(const AddressSpaceLimit &) = delete;
    AddressSpaceLimit &operator=(const AddressSpaceLimit &) = delete;

    bool holds() const
    {
        return m_holds;
    }

private:
    rlimit m_before{};
    bool m_holds = false;
};

const QList<double> ordinarySound = {0.25, -0.25, 0.125};

} // namespace

class TestHugeToken : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void hugeTokenIsRefusedInThePreparation_data();
    void hugeTokenIsRefusedInThePreparation();
    void hugeTokenIsRefusedInTheSession_data();
    void hugeTokenIsRefusedInTheSession();
    void whatIsNotRefusedIsPresented();
    void memoryOfThePreviousTokenCounts();

private:
    bool writeSparse(const QString &name, WavBytes header, qint64 present) const;
    bool prepare(int first) const;
    void expectRefusal(const QString &name) const;
    bool presentNext() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OperatorWindow> m_window;
};

void TestHugeToken::initTestCase()
{
#ifdef __GLIBC__
    // The limit also counts what the allocator sets aside for each new thread, 64 MB or more.
    QCOMPARE(mallopt(M_ARENA_MAX, 1), 1);
#endif
}

void TestHugeToken::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(writeFile(m_folder->filePath("a.wav"),
                      WavBytes{.data = WavBytes::samples16({8192, -8192, 4096})}.bytes()));
    m_window = std::make_unique<OperatorWindow>();
    m_window->resize(1152, 810);
    m_window->show();
    m_window->lineEditSi->setText("60000.000"); // nothing is heard here
    m_window->checkBoxSaveData->setChecked(false);
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestHugeToken::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

/// Writes a token of which @p present bytes of sound are there, without taking room on the disk.
bool TestHugeToken::writeSparse(const QString &name, WavBytes header, qint64 present) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(header.bytes()) == 44 &&
           file.resize(44 + present);
}

/// Prepares a session of two tokens or more that begins with token @p first and goes on in order.
bool TestHugeToken::prepare(int first) const
{
    ModalAnswer answers;
    answers.choose(m_folder->path());
    m_window->pushButtonPractice->click();
    m_window->randomSequence.clear();
    for (int token = first; token < m_window->nTokens; ++token)
        m_window->randomSequence.append(token);
    m_window->genWav();
    return answers.problem().isEmpty() && m_window->pushButtonGo->isEnabled();
}

void TestHugeToken::expectRefusal(const QString &name) const
{
    QString text;
    QDebug(&text) << "Cannot present" << m_folder->filePath(name)
                  << "- the previous sound is played instead.";
    QTest::ignoreMessage(QtWarningMsg, text.trimmed().toUtf8().constData());
}

/// Takes an answer, which prepares the next token, and lets the charts be painted.
bool TestHugeToken::presentNext() const
{
    m_window->updateMainwindow(m_window->trialIndex == 0 ? ReadyResponse : MotherResponse);
    m_window->presentationTimer.stop();
    QCoreApplication::processEvents();
    return !m_window->waveformChart.view->grab().isNull() &&
           !m_window->spectrumChart.view->grab().isNull();
}

void TestHugeToken::hugeTokenIsRefusedInThePreparation_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<quint32>("declared");
    QTest::addColumn<qint64>("present");

    // None lasts longer than an hour; each runs short of memory at another place.
    QTest::newRow("the bytes") << 1 << 16 << 2'000'000'000U << qint64{2'000'000'000};
    QTest::newRow("the bytes of a truncated token")
        << 1 << 16 << 4'000'000'000U << qint64{2'000'000'000};
    QTest::newRow("the samples") << 1 << 16 << 200'000'000U << qint64{200'000'000};
    QTest::newRow("the samples of all channels")
        << 500 << 16 << 200'000'000U << qint64{200'000'000};
    QTest::newRow("one channel of the sound") << 2 << 16 << 100'000'000U << qint64{100'000'000};
    QTest::newRow("the transform") << 1 << 16 << 30'000'000U << qint64{30'000'000};
    QTest::newRow("the charts") << 1 << 24 << 8'000'000U << qint64{8'000'000};
}

// Catches a program that ends for want of memory while it prepares a session.
void TestHugeToken::hugeTokenIsRefusedInThePreparation()
{
    QFETCH(const int, channels);
    QFETCH(const int, bits);
    QFETCH(const quint32, declared);
    QFETCH(const qint64, present);
    QVERIFY(writeSparse("b.wav",
                        {.numChannels = static_cast<std::uint16_t>(channels),
                         .sampleRate = 400000,
                         .bitsPerSample = static_cast<std::uint16_t>(bits),
                         .declaredSize = declared},
                        present));
    QVERIFY(QFile::remove(m_folder->filePath("a.wav")));
    const AddressSpaceLimit limit(512'000'000);
    QVERIFY(limit.holds());
    expectRefusal("b.wav");
    ModalAnswer answers;
    answers.choose(m_folder->path());
    m_window->pushButtonPractice->click();
    QCOMPARE(answers.problem(), "");
    QVERIFY(m_window->pushButtonGo->isEnabled());
    QVERIFY(m_window->soundWave.isEmpty());
    QVERIFY(presentNext());
}

void TestHugeToken::hugeTokenIsRefusedInTheSession_data()
{
    hugeTokenIsRefusedInThePreparation_data();
}

// Catches a program that ends for want of memory, and takes the answers of the session with it.
void TestHugeToken::hugeTokenIsRefusedInTheSession()
{
    QFETCH(const int, channels);
    QFETCH(const int, bits);
    QFETCH(const quint32, declared);
    QFETCH(const qint64, present);
    QVERIFY(writeSparse("b.wav",
                        {.numChannels = static_cast<std::uint16_t>(channels),
                         .sampleRate = 400000,
                         .bitsPerSample = static_cast<std::uint16_t>(bits),
                         .declaredSize = declared},
                        present));
    QVERIFY(writeFile(m_folder->filePath("c.wav"),
                      WavBytes{.data = WavBytes::samples16({16384})}.bytes()));
    const AddressSpaceLimit limit(512'000'000);
    QVERIFY(limit.holds());
    QTest::ignoreMessage(QtDebugMsg, "Test just started");
    QVERIFY(prepare(0));
    m_window->reactionTimer->start();
    QVERIFY(presentNext());
    QCOMPARE(m_window->soundWave, ordinarySound);
    expectRefusal("b.wav");
    QVERIFY(presentNext());
    QCOMPARE(m_window->soundWave, ordinarySound);
    QCOMPARE(m_window->data.entries.at(1).filename, "b.wav");
    QVERIFY(presentNext());
    QCOMPARE(m_window->soundWave, QList<double>{0.5});
    QCOMPARE(m_window->data.records.at(1).nMother, 1);
}

// Catches an estimate that lets a token through for which there is not enough memory: each either
// is presented, with its charts painted and its sound started, or was refused.
void TestHugeToken::whatIsNotRefusedIsPresented()
{
    const QList<int> sizes = {310'000, 100, 131'073, 262'145, 500'000, 100'000, 300'000};
    for (qsizetype i = 0; i < sizes.size(); ++i) {
        QVERIFY(writeFile(m_folder->filePath(QString("b%1.wav").arg(i)),
                          wavBytes(noise(sizes.at(i), static_cast<quint32>(i)))));
    }
    QVERIFY(prepare(0));
    m_window->reactionTimer->start();
    QVERIFY(presentNext());
    int nPresented = 0;
    int nRefused = 0;
    for (const int size : sizes) {
        const AddressSpaceLimit limit(200'000'000);
        QVERIFY(limit.holds());
        QVERIFY(presentNext());
        if (m_window->soundWave.size() == size) {
            ++nPresented;
            QCOMPARE(m_window->waveformChart.series->count(), size);
            m_window->playCount = 0;
            m_window->playOneSound();
        } else {
            ++nRefused;
        }
    }
    QVERIFY2(nPresented >= 3, qPrintable(QString::number(nPresented)));
    QVERIFY2(nRefused >= 1, qPrintable(QString::number(nRefused)));
}

// Catches a token that is refused because the one before it still holds the memory which it gives
// up: of equal tokens every second one would be.
void TestHugeToken::memoryOfThePreviousTokenCounts()
{
    constexpr int size = 500'000;
    const QString b = m_folder->filePath("b.wav");
    const QString c = m_folder->filePath("c.wav");
    QVERIFY(writeFile(b, wavBytes(noise(size, 1))));
    QVERIFY(writeFile(c, wavBytes(noise(size, 2))));
    QVERIFY(prepare(0));
    QCOMPARE(m_window->currentTokenMemory, tokenMemory(m_folder->filePath("a.wav").toStdString()));
    m_window->reactionTimer->start();
    QVERIFY(presentNext());
    const qint64 memory = tokenMemory(b.toStdString());
    const AddressSpaceLimit limit(memory - memory / 8);
    QVERIFY(limit.holds());
    expectRefusal("b.wav");
    QVERIFY(presentNext());
    m_window->currentTokenMemory = memory;
    QVERIFY(presentNext());
    QCOMPARE(m_window->soundWave.size(), size);
    QCOMPARE(m_window->currentTokenMemory, memory);
}

GUI_TEST_MAIN(TestHugeToken)
#include "tst_hugetoken.moc"
