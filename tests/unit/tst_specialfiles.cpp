// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"
#include "support/Captured.h"
#include "support/WavFile.h"

#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

class TestSpecialFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void onlyRegularFilesAreOpened_data();
    void onlyRegularFilesAreOpened();
    void linksToRegularFilesAreRead_data();
    void linksToRegularFilesAreRead();
    void readerGoesOnAfterASpecialFile();

private:
    std::string path(const std::string &name) const
    {
        return m_folder->path().toStdString() + '/' + name;
    }
    bool load(const std::string &name);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CWav> m_wav;
    QByteArray m_errors; ///< what the last load printed
};

/// A folder of files of every kind, the token "token.wav" among them.
void TestSpecialFiles::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_wav = std::make_unique<CWav>();
    QVERIFY(writeFile(m_folder->filePath("token.wav"),
                      WavBytes{.data = WavBytes::samples16({8192, -8192})}.bytes()));
    QCOMPARE(mkfifo(path("fifo.wav").c_str(), 0600), 0);
    std::filesystem::create_directory(path("folder.wav"));
    const auto link = [this](const std::string &target, const std::string &name) {
        std::filesystem::create_symlink(target, path(name));
    };
    link("token.wav", "link.wav");
    link("link.wav", "linkToLink.wav");
    link("fifo.wav", "linkToFifo.wav");
    link("folder.wav", "linkToFolder.wav");
    link("/dev/zero", "linkToDevice.wav");
    link("nothing.wav", "dangling.wav");
    link("loop2.wav", "loop1.wav");
    link("loop1.wav", "loop2.wav");
    std::filesystem::create_hard_link(path("token.wav"), path("hardLink.wav"));
}

/// Loads the file @p name, a path from the root included. A reader that waits for somebody to write
/// to a FIFO is set free after a while, by an end that comes at once.
bool TestSpecialFiles::load(const std::string &name)
{
    const Captured errors(std::cerr);
    const std::string file = name.front() == '/' ? name : path(name);
    auto result = std::async(std::launch::async, [&] { return m_wav->LoadWav(file); });
    while (result.wait_for(2s) == std::future_status::timeout)
        close(open(file.c_str(), O_RDWR | O_NONBLOCK));
    const bool loaded = result.get();
    m_errors = errors.text();
    return loaded;
}

void TestSpecialFiles::onlyRegularFilesAreOpened_data()
{
    QTest::addColumn<std::string>("name");
    for (const char *name : {"fifo.wav", "linkToFifo.wav", "folder.wav", "linkToFolder.wav",
                             "linkToDevice.wav", "/dev/zero", "/dev/null", "dangling.wav",
                             "loop1.wav", "nothing.wav", "token.wav/token.wav"})
        QTest::newRow(name) << std::string(name);
    QTest::newRow("name outside UTF-8") << std::string("no\xFFname.wav");
}

// Catches a reader that waits for ever for a FIFO, and a device or a folder taken for a file.
void TestSpecialFiles::onlyRegularFilesAreOpened()
{
    QFETCH(const std::string, name);
    QVERIFY(!load(name));
    const std::string file = name.front() == '/' ? name : path(name);
    QCOMPARE(m_errors, "Unable to open WAV file: " + QByteArray::fromStdString(file) + '\n');
}

void TestSpecialFiles::linksToRegularFilesAreRead_data()
{
    QTest::addColumn<std::string>("name");
    for (const char *name : {"token.wav", "link.wav", "linkToLink.wav", "hardLink.wav"})
        QTest::newRow(name) << std::string(name);
}

// Catches a link that is refused as such.
void TestSpecialFiles::linksToRegularFilesAreRead()
{
    QFETCH(const std::string, name);
    QVERIFY(load(name));
    QCOMPARE(m_errors, "");
    QCOMPARE(m_wav->sampleVector, std::vector<double>({0.25, -0.25}));
}

// Catches a reader that a special file leaves without its samples, or that reads nothing any more.
void TestSpecialFiles::readerGoesOnAfterASpecialFile()
{
    QVERIFY(load("token.wav"));
    QVERIFY(!load("fifo.wav"));
    QCOMPARE(m_wav->sampleVector.size(), 2U);
    QVERIFY(load("link.wav"));
    QCOMPARE(m_wav->sampleVector, std::vector<double>({0.25, -0.25}));
}

QTEST_APPLESS_MAIN(TestSpecialFiles)
#include "tst_specialfiles.moc"
