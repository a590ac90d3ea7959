// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QAudioDevice>
#include <QCheckBox>
#include <QDir>
#include <QMap>
#include <QMediaDevices>
#include <QPushButton>
#include <QScopeGuard>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int nSamples = 960; // 20 ms

/// A token of which all samples have the value @p level / 32768.
QByteArray constantToken(int level, WavBytes header = {})
{
    header.data = WavBytes::little(static_cast<std::uint32_t>(level), 2).repeated(nSamples);
    return header.bytes();
}

/// What the log tells of the tokens that could not be presented.
QStringList refusals;
QtMessageHandler nextHandler = nullptr;

void keepRefusals(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtWarningMsg && text.startsWith("Cannot present"))
        refusals.append(text);
    else
        nextHandler(type, context, text);
}

} // namespace

/// A session over a folder of everything that a folder can hold, and that changes meanwhile.
class TestOddFolder : public SessionTest
{
    Q_OBJECT

private slots:
    void soundIsThere();
    void sessionOverAnOddFolder();

private:
    QString token(const QString &name) const { return path("tokens/" + name); }
    std::string raw(const QString &name) const { return token(name).toStdString(); }
    /// A path that is not UTF-8.
    std::string undecodableName() const { return raw("") + "bad\xFF.wav"; }
    void makeTokens();
    void makeWhatIsNoToken() const;
    void changeTokens() const;

    QMap<QString, int> m_levels; ///< of the tokens that are to be heard as themselves
    QStringList m_unheard;       ///< the others
    const QString m_first = "#first.wav";
};

// Catches a run without the sound server that the session needs.
void TestOddFolder::soundIsThere()
{
    QVERIFY2(!QMediaDevices::defaultAudioOutput().isNull(),
             "run this by scripts/private-session.sh --audio");
}

void TestOddFolder::makeTokens()
{
    const QString longest = QString(255 - 4, 'x') + ".wav";
    const QStringList good = {
        m_first,        "tab\there.wav",   "line\nbreak.wav",
        longest,        "capital.WAV",     QString::fromUtf8("Gr\u00fc\u00dfe.wav"),
        "%1 %s %n.wav", "quote\"'.wav",    " blank .wav",
        "-rf.wav",      "back\\slash.wav", "bell\a.wav",
        "two.tar.wav",  "$(exit).wav"};
    const QStringList changing = {
        "deleted.wav",    "emptied.wav", "truncated.wav",      "toFifo.wav",     "toFolder.wav",
        "toDangling.wav", "toLoop.wav",  "toDevice.wav",       "toFifoLink.wav", "toText.wav",
        "toHuge.wav",     "toSlow.wav",  "toThreeChannels.wav"};
    const QStringList swapped = {"swapped1.wav", "swapped2.wav"};
    int level = 1000;
    for (const QString &name : good + changing + swapped) {
        QVERIFY(writeFile(token(name), constantToken(level)));
        m_levels.insert(name, level);
        level += 500;
    }
    std::swap(m_levels["swapped1.wav"], m_levels["swapped2.wav"]);
    for (const QString &name : changing)
        m_levels.remove(name);

    QVERIFY(writeFile(path("elsewhere.wav"), constantToken(level)));
    std::filesystem::create_symlink("../elsewhere.wav", raw("link.wav"));
    std::filesystem::create_symlink("link.wav", raw("linkToLink.wav"));
    std::filesystem::create_hard_link(path("elsewhere.wav").toStdString(), raw("hardLink.wav"));
    for (const char *name : {"link.wav", "linkToLink.wav", "hardLink.wav"})
        m_levels.insert(name, level);

    m_unheard = changing;
    const auto bad = [this](const QString &name, const QByteArray &bytes) {
        m_unheard.append(name);
        return writeFile(token(name), bytes);
    };
    QVERIFY(bad("empty.wav", QByteArray()));
    QVERIFY(bad("text.wav", "no sound at all"));
    QVERIFY(bad("header.wav", constantToken(1).first(44)));
    QVERIFY(bad("slow.wav", constantToken(1, {.sampleRate = 1})
                                .append(7200, '\1')
                                .replace(40, 4, WavBytes::little(nSamples * 2 + 7200, 4))));
}

/// What has a token's name but is none, so that it is not listed.
void TestOddFolder::makeWhatIsNoToken() const
{
    QCOMPARE(mkfifo(raw("fifo.wav").c_str(), 0600), 0);
    QVERIFY(QDir().mkpath(token("folder.wav")));
    QVERIFY(writeFile(token(".hidden.wav"), constantToken(1)));
    const auto link = [this](const std::string &target, const QString &name) {
        std::filesystem::create_symlink(target, raw(name));
    };
    link("nothing.wav", "dangling.wav");
    link("loop2.wav", "loop1.wav");
    link("loop1.wav", "loop2.wav");
    link("self.wav", "self.wav");
    link("fifo.wav", "linkToFifo.wav");
    link("folder.wav", "linkToFolder.wav");
    link("/dev/zero", "linkToDevice.wav");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = raw("socket.wav");
    QVERIFY(name.size() < sizeof(address.sun_path));
    std::memcpy(address.sun_path, name.c_str(), name.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QCOMPARE(bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
    close(socket);
    // Qt lists no name that is not UTF-8. One that did would find no file by the name it has read.
    QVERIFY(writeFile(path("elsewhere2.wav"), constantToken(1)));
    std::filesystem::rename(path("elsewhere2.wav").toStdString(), undecodableName());
}

/// What happens to the folder between the choice of it and the tokens' trials.
void TestOddFolder::changeTokens() const
{
    QVERIFY(QFile::remove(token("deleted.wav")));
    QVERIFY(writeFile(token("emptied.wav"), QByteArray()));
    QVERIFY(QFile::resize(token("truncated.wav"), 44 + nSamples));
    for (const char *name : {"toFifo.wav", "toFolder.wav", "toDangling.wav", "toLoop.wav",
                             "toDevice.wav", "toFifoLink.wav"})
        QVERIFY(QFile::remove(token(name)));
    QCOMPARE(mkfifo(raw("toFifo.wav").c_str(), 0600), 0);
    QVERIFY(QDir().mkpath(token("toFolder.wav")));
    std::filesystem::create_symlink("nothing.wav", raw("toDangling.wav"));
    std::filesystem::create_symlink("toLoop.wav", raw("toLoop.wav"));
    std::filesystem::create_symlink("/dev/zero", raw("toDevice.wav"));
    std::filesystem::create_symlink("fifo.wav", raw("toFifoLink.wav"));
    QVERIFY(writeFile(token("toText.wav"), "no sound at all"));
    // Half an hour, for which no machine has the memory.
    const WavBytes huge = {.sampleRate = 550000, .declaredSize = 2'000'000'000};
    QVERIFY(writeFile(token("toHuge.wav"), huge.bytes()));
    QVERIFY(QFile::resize(token("toHuge.wav"), 44 + 2'000'000'000));
    QVERIFY(writeFile(token("toSlow.wav"),
                      WavBytes{.sampleRate = 1, .data = QByteArray(2 * 3601, '\1')}.bytes()));
    QVERIFY(writeFile(token("toThreeChannels.wav"), constantToken(1, {.numChannels = 3})));
    QVERIFY(QFile::rename(token("swapped1.wav"), token("swapped.wav")));
    QVERIFY(QFile::rename(token("swapped2.wav"), token("swapped1.wav")));
    QVERIFY(QFile::rename(token("swapped.wav"), token("swapped2.wav")));
}

// Catches a file that ends the session, freezes it, or is listed though it is no token; a token
// that is heard as another without a word in the log, and one that the log names though it was
// heard; and results that are not written.
void TestOddFolder::sessionOverAnOddFolder()
{
    makeTokens();
    if (QTest::currentTestFailed())
        return;
    // Qt, which removes the folder, cannot remove a file that it does not list.
    const auto removeUndecodable =
        qScopeGuard([this] { std::filesystem::remove(undecodableName()); });
    makeWhatIsNoToken();
    if (QTest::currentTestFailed())
        return;
    QVERIFY(QDir().mkpath(path("results")));
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));

    QStringList names;
    for (const Record &record : m_window->data.records) {
        if (record.filename.contains(QChar::ReplacementCharacter))
            m_unheard.append(record.filename);
        names.append(record.filename);
    }
    QStringList expected = m_levels.keys() + m_unheard;
    expected.sort();
    QStringList listed = names;
    listed.sort();
    QCOMPARE(listed, expected);

    // A token that is heard comes first, so that there is a previous sound.
    QList<int> order = m_window->randomSequence;
    order.swapItemsAt(0, order.indexOf(names.indexOf(m_first)));
    m_window->randomSequence = order;
    m_window->genWav();
    changeTokens();
    if (QTest::currentTestFailed())
        return;

    refusals.clear();
    nextHandler = qInstallMessageHandler(keepRefusals);
    const auto uninstall = qScopeGuard([] { qInstallMessageHandler(nextHandler); });
    ModalAnswer answers;
    answers.choose(path("results/odd.txt"));
    click(m_window->pushButtonGo);
    click(subject("pushButtonIAmReady"));
    QStringList expectedRefusals;
    int heard = 0;
    for (const int index : order) {
        const QString name = names.at(index);
        QVERIFY2(awaitAnswering(), qPrintable(name));
        if (m_unheard.contains(name)) {
            QString text;
            QDebug(&text) << "Cannot present" << token(name)
                          << "- the previous sound is played instead.";
            expectedRefusals.append(text.trimmed());
        } else {
            heard = m_levels.value(name);
        }
        QVERIFY2(!m_window->soundWave.isEmpty(), qPrintable(name));
        QCOMPARE(m_window->soundWave.first(), heard / 32768.0);
        click(subject("pushButtonChoice2"));
    }
    QCOMPARE(refusals, expectedRefusals);
    QCOMPARE(answers.problem(), "");
    QVERIFY(subject("pushButtonDone")->isVisible());
    for (const char *name : {"odd.txt", "odd_entries.txt", "odd_parameters.txt"})
        QVERIFY2(QFileInfo(path(QString("results/") + name)).size() > 0, name);
    const QByteArray entries = contents(path("results/odd_entries.txt"));
    const QByteArray records = contents(path("results/odd.txt"));
    for (const QString &name : names) {
        QCOMPARE(entries.count('\n' + name.toUtf8() + '\t'), 1);
        QCOMPARE(records.count('\n' + name.toUtf8() + "\t1\t0\t"), 1);
    }
}

GUI_TEST_MAIN(TestOddFolder)
#include "tst_oddfolder.moc"
