// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/CWav.h"
#include "support/Captured.h"
#include "support/WavFile.h"
#include "tools/TokenCheck.h"

#include <QDir>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <numbers>
#include <sys/stat.h>
#include <vector>

namespace {

bool goOn(qsizetype, qsizetype)
{
    return true;
}

/// Samples of a tone, which begins and ends at 0, as codes of 16 bits.
std::vector<int> tone(int n = 9600, double amplitude = 8000)
{
    std::vector<int> codes(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        codes[static_cast<std::size_t>(i)] = static_cast<int>(
            std::lround(amplitude * std::sin(2 * std::numbers::pi * 10 * i / (n - 1))));
    return codes;
}

/// The same with the codes from @p place on replaced by @p replacement.
std::vector<int> replaced(std::vector<int> codes, qsizetype place,
                          const std::vector<int> &replacement)
{
    std::copy(replacement.begin(), replacement.end(), codes.begin() + place);
    return codes;
}

std::vector<int> shifted(std::vector<int> codes, int offset)
{
    for (int &code : codes)
        code += offset;
    codes.front() = 0;
    codes.back() = 0;
    return codes;
}

/// Samples that are soft, but no silence, up to their ends.
std::vector<int> soft(int n)
{
    std::vector<int> codes(static_cast<std::size_t>(n), 300);
    for (std::size_t i = 0; i < codes.size(); i += 2)
        codes[i] = -300;
    return codes;
}

/// The tone between @p before and @p behind zeros, without its own ends, which are 0 too.
std::vector<int> between(int before, int behind)
{
    std::vector<int> codes(static_cast<std::size_t>(before), 0);
    const std::vector<int> inner = tone();
    codes.insert(codes.end(), inner.begin() + 1, inner.end() - 1);
    codes.resize(codes.size() + static_cast<std::size_t>(behind), 0);
    return codes;
}

QByteArray pcm(const std::vector<int> &codes, int bytesPerSample = 2)
{
    QByteArray bytes;
    for (const int code : codes)
        bytes += WavBytes::little(static_cast<std::uint32_t>(code), bytesPerSample);
    return bytes;
}

QByteArray wav(const std::vector<int> &codes)
{
    return WavBytes{.data = pcm(codes)}.bytes();
}

QStringList words(const QList<Finding> &findings)
{
    QStringList result;
    for (const Finding &finding : findings)
        result.append(findingWord(finding.kind));
    return result;
}

} // namespace

/// What the check finds in real files.
class TestTokenCheck : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void whatIsWrongWithATokenIsFound_data();
    void whatIsWrongWithATokenIsFound();
    void everyFindingSaysWhatItDoesAndItsCure();
    void aFindingNamesWhatItIsAbout_data();
    void aFindingNamesWhatItIsAbout();
    void aRefusalSaysWhatTheReaderPrints_data();
    void aRefusalSaysWhatTheReaderPrints();
    void aTokenThatIsNotPresentedHasNoMeasures_data();
    void aTokenThatIsNotPresentedHasNoMeasures();
    void aTokenTooLargeForTheMemoryIsNotRead();
    void namesThatBreakTablesAreFound_data();
    void namesThatBreakTablesAreFound();
    void sameContentIsFoundAndAlikeContentIsNot();
    void levelsApartAreFound_data();
    void levelsApartAreFound();
    void levelsCountOnlyWhatIsHeard();
    void theFoldersCategoriesAreCounted_data();
    void theFoldersCategoriesAreCounted();
    void theNumberOfPresentationsIsChecked_data();
    void theNumberOfPresentationsIsChecked();
    void theLengthOfASessionIsThatOfItsDelaysAndSounds();
    void whatIsLeftOutIsNamedWithItsReason();
    void eachTokenHasTheMeasuresOfItsOwnFile();
    void largeFilesAreMeasuredLikeOthers();
    void aStoppedCheckIsNotComplete();
    void aFolderThatCannotBeReadIsNamed();

    void measuresAreThoseOfEachSample_data();
    void measuresAreThoseOfEachSample();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    FolderCheck check(const QString &subCode = "X001", int nTimes = 1) const
    {
        return checkFolder(m_folder->path(), subCode, nTimes, goOn);
    }
    /// The findings of the only token, whose file is @p bytes.
    QList<Finding> findingsOf(const QByteArray &bytes) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestTokenCheck::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

QList<Finding> TestTokenCheck::findingsOf(const QByteArray &bytes) const
{
    if (!writeFile(path("001.wav"), bytes))
        return {};
    const FolderCheck folder = check();
    return folder.tokens.size() == 1 ? folder.tokens.first().findings : QList<Finding>();
}

void TestTokenCheck::whatIsWrongWithATokenIsFound_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &file, const QStringList &expected) {
        QTest::newRow(name) << file << expected;
    };
    const QByteArray good = pcm(tone());
    row("nothing", wav(tone()), {});

    row("not WAVE", WavBytes{.wave = "WAVX", .data = good}.bytes(), {"refused"});
    row("not PCM", WavBytes{.audioFormat = 3, .data = good}.bytes(), {"refused"});
    row("32 bits", WavBytes{.bitsPerSample = 32, .data = good}.bytes(), {"refused"});
    row("empty", {}, {"refused"});
    row("one byte", "R", {"incompleteHeader"});
    row("a byte less than a header", WavBytes().bytes().chopped(1), {"incompleteHeader"});
    row("a header alone", WavBytes().bytes(), {"noSamples"});
    row("half a frame", WavBytes{.numChannels = 2, .data = good.left(2)}.bytes(),
        {"noSamples", "stereo"});
    row("no channel", WavBytes{.numChannels = 0, .data = good}.bytes(), {"impossibleHeader"});
    row("no rate", WavBytes{.sampleRate = 0, .data = good}.bytes(), {"impossibleHeader"});
    const auto size = static_cast<std::uint32_t>(good.size());
    row("a byte missing", WavBytes{.data = good, .declaredSize = size + 1}.bytes(), {"truncated"});
    row("bytes behind", WavBytes{.data = good}.bytes() + "LIST", {});
    row("two channels", WavBytes{.numChannels = 2, .data = good}.bytes(), {"stereo"});
    row("three channels", WavBytes{.numChannels = 3, .data = good}.bytes(), {"tooManyChannels"});
    row("an hour", WavBytes{.sampleRate = 1, .data = pcm(soft(3600))}.bytes(), {"otherRate"});
    row("a second more", WavBytes{.sampleRate = 1, .data = pcm(soft(3601))}.bytes(),
        {"tooLong", "otherRate"});

    row("another chunk", WavBytes{.dataTag = "LIST", .data = good}.bytes(), {"dataNotAtByte44"});
    row("a rate below", WavBytes{.sampleRate = 47999, .data = good}.bytes(), {"otherRate"});
    row("a rate above", WavBytes{.sampleRate = 48001, .data = good}.bytes(), {"otherRate"});

    row("two samples at the top", wav(replaced(tone(), 500, {32767, 32767})), {});
    row("three samples at the top", wav(replaced(tone(), 500, {32767, 32767, 32767})),
        {"clipping"});
    row("three samples below the top", wav(replaced(tone(), 500, {32766, 32766, 32766})), {});
    row("two samples at the bottom", wav(replaced(tone(), 500, {-32768, -32768})), {});
    row("three samples at the bottom", wav(replaced(tone(), 500, {-32768, -32768, -32768})),
        {"clipping"});
    row("clipped at the very end", wav(replaced(tone(), 9597, {32767, 32767, 32767})),
        {"clipping", "clickAtEnd"});
    row("two pairs at the top", wav(replaced(tone(), 500, {32767, 32767, 0, 32767, 32767})), {});
    std::vector<int> codes24 = tone(9600, 2000000);
    row("24 bits", WavBytes{.bitsPerSample = 24, .data = pcm(codes24, 3)}.bytes(), {});
    codes24 = replaced(codes24, 500, {-8388608, -8388608, -8388608});
    row("24 bits at the bottom", WavBytes{.bitsPerSample = 24, .data = pcm(codes24, 3)}.bytes(),
        {"clipping"});
    codes24 = replaced(codes24, 500, {8388606, 8388606, 8388606});
    row("24 bits below the top", WavBytes{.bitsPerSample = 24, .data = pcm(codes24, 3)}.bytes(),
        {});
    std::vector<int> codes8 = tone(9600, 60);
    for (int &code : codes8)
        code += 128;
    row("8 bits", WavBytes{.bitsPerSample = 8, .data = pcm(codes8, 1)}.bytes(), {});
    codes8 = replaced(codes8, 500, {255, 255, 255});
    row("8 bits at the top", WavBytes{.bitsPerSample = 8, .data = pcm(codes8, 1)}.bytes(),
        {"clipping"});
    codes8 = replaced(codes8, 500, {254, 254, 254});
    row("8 bits below the top", WavBytes{.bitsPerSample = 8, .data = pcm(codes8, 1)}.bytes(), {});

    // 1 % of full scale is 327.68.
    row("a small offset", wav(shifted(tone(), 327)), {});
    row("an offset", wav(shifted(tone(), 329)), {"offset"});
    row("an offset below", wav(shifted(tone(), -329)), {"offset"});
    row("a small last sample", wav(replaced(tone(), 9599, {327})), {});
    row("a last sample that clicks", wav(replaced(tone(), 9599, {328})), {"clickAtEnd"});
    row("the same below", wav(replaced(tone(), 9599, {-328})), {"clickAtEnd"});

    // -60 dBFS is 32.77.
    row("a very soft token", wav(tone(9601, 33)), {});
    row("a silent token", wav(tone(9601, 32)), {"silent"});
    row("a short silent token", wav({0}), {"silent"});

    row("100 ms before", wav(between(4800, 0)), {});
    row("more than 100 ms before", wav(between(4801, 0)), {"silenceAtStart"});
    row("100 ms behind", wav(between(0, 4800)), {});
    row("more than 100 ms behind", wav(between(0, 4801)), {"silenceAtEnd"});
    row("100 ms of 24 kHz", WavBytes{.sampleRate = 24000, .data = pcm(between(2400, 2400))}.bytes(),
        {"otherRate"});
    row("more than 100 ms of 24 kHz",
        WavBytes{.sampleRate = 24000, .data = pcm(between(2401, 2401))}.bytes(),
        {"otherRate", "silenceAtStart", "silenceAtEnd"});

    // Left channel alone: the right one is clipped, and off zero at its end.
    std::vector<int> frames;
    for (const int code : tone())
        frames.insert(frames.end(), {code, 32767});
    row("a right channel that nobody hears",
        WavBytes{.numChannels = 2, .data = pcm(frames)}.bytes(), {"stereo"});
}

// Catches a rule that is missing or has another limit, and a finding in a good token.
void TestTokenCheck::whatIsWrongWithATokenIsFound()
{
    QFETCH(const QByteArray, file);
    QVERIFY(writeFile(path("001.wav"), file));
    const FolderCheck folder = check();
    QCOMPARE(folder.tokens.size(), 1);
    QTEST(words(folder.tokens.first().findings), "expected");
}

// Catches a finding that leaves the user alone with it, or states another speed or amount.
void TestTokenCheck::everyFindingSaysWhatItDoesAndItsCure()
{
    const QByteArray good = pcm(tone());
    const auto texts = [&](const QByteArray &file) {
        QString all;
        for (const Finding &finding : findingsOf(file)) {
            for (const QString &sentence : {finding.fact, finding.effect, finding.cure}) {
                if (!sentence.endsWith('.') || !sentence.front().isUpper())
                    return "no sentence: " + sentence;
            }
            all += finding.text() + '\n';
        }
        return all;
    };
    const QString rate = texts(WavBytes{.sampleRate = 44100, .data = good}.bytes());
    QVERIFY2(rate.contains("is 44100 Hz, not 48000 Hz") && rate.contains("108.8 %") &&
                 rate.contains("Convert it to 48000 Hz."),
             qPrintable(rate));
    const QString slow = texts(WavBytes{.sampleRate = 96000, .data = good}.bytes());
    QVERIFY2(slow.contains("50.0 %"), qPrintable(slow));
    const QString truncated = texts(WavBytes{.data = good.left(10), .declaredSize = 12}.bytes());
    QVERIFY2(truncated.contains("12 bytes") && truncated.contains("only 10 follow") &&
                 truncated.contains("the token before"),
             qPrintable(truncated));
    const QString clipped = texts(wav(replaced(tone(), 500, {32767, 32767, 32767, 32767})));
    QVERIFY2(clipped.contains("4 samples"), qPrintable(clipped));
    const QString silence = texts(wav(between(4848, 9600)));
    QVERIFY2(silence.contains("101.0 ms") && silence.contains("200.0 ms"), qPrintable(silence));
    const QString click = texts(wav(replaced(tone(), 9599, {-16384})));
    QVERIFY2(click.contains("50.0 %"), qPrintable(click));
    const QString offset = texts(wav(shifted(tone(), -3278)));
    QVERIFY2(offset.contains("an offset of -10.0 % of full scale"), qPrintable(offset));
    const QString channels = texts(WavBytes{.numChannels = 5, .data = good}.bytes());
    QVERIFY2(channels.contains("5 channels"), qPrintable(channels));
    QCOMPARE(texts(wav(tone(9601, 20))).count("-60 dBFS"), 1);
}

void TestTokenCheck::aFindingNamesWhatItIsAbout_data()
{
    QTest::addColumn<Finding>("finding");
    QTest::addColumn<QString>("fact");
    const auto row = [](const char *word, const Finding &finding, const QString &fact) {
        QTest::newRow(word) << finding << fact;
    };
    row("refused", refusedByReader("No sound"), "The reader refuses the file: \"No sound\".");
    row("incompleteHeader", incompleteHeader(7),
        "The file has only 7 bytes, and the header alone has 44.");
    row("tooLarge", tooLarge(),
        "To read and draw this token takes more memory than this computer has left.");
    row("sameContent", sameContent("a.wav"), "The content is the same as of \"a.wav\".");
    row("levelApart", levelApart(-3.76, Category::Mother),
        "The level is 3.8 dB below the median of the tokens of this category (mother).");
    row("noTokens", noTokens(), "The folder contains no .wav files.");
    row("noTokensOfCategory", noTokensOfCategory(Category::Mother, "CHD1"),
        "No token is of the category \"mother\" for the subject code \"CHD1\".");
    row("noPresentations", noPresentations(), "Each token is to be presented less than once.");
    row("tooManyPresentations", tooManyPresentations(3, 400'000),
        "3 tokens, 400000 times each, are more than 1000000 presentations.");
    row("levelsApartInCategory", levelsApartInCategory(Category::Stranger, 4.26, "a.wav", "b.wav"),
        "In the category \"stranger\" the level of \"a.wav\" is 4.3 dB above that of \"b.wav\".");
    row("levelsApartBetweenCategories", levelsApartBetweenCategories(Category::Stranger, 3.5),
        "The median level of the category \"stranger\" is 3.5 dB above that of \"mother\".");
    row("undecodableName", undecodableName("a?.wav"), "The name of \"a?.wav\" is not UTF-8.");
    row("specialFile", specialFile("a.wav"),
        "\"a.wav\" is no file, but a pipe, a device, a link to nothing or the like.");
}

// Catches a finding that is told of another file, category or number, and one under the name of
// another, by which scripts know it.
void TestTokenCheck::aFindingNamesWhatItIsAbout()
{
    QFETCH(const Finding, finding);
    QTEST(finding.fact, "fact");
    QCOMPARE(findingWord(finding.kind), QTest::currentDataTag());
}

void TestTokenCheck::aRefusalSaysWhatTheReaderPrints_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not WAVE") << WavBytes{.wave = "wave"}.bytes();
    QTest::newRow("not PCM") << WavBytes{.audioFormat = 0xFFFE}.bytes();
    QTest::newRow("12 bits") << WavBytes{.bitsPerSample = 12}.bytes();
}

// Catches a message of its own in place of the reader's.
void TestTokenCheck::aRefusalSaysWhatTheReaderPrints()
{
    QFETCH(const QByteArray, file);
    const QList<Finding> findings = findingsOf(file);
    QCOMPARE(words(findings), QStringList("refused"));
    const QString fact = findings.first().fact;
    const QString quoted = fact.section('"', 1, 1);
    QVERIFY2(!quoted.isEmpty(), qPrintable(fact));

    const Captured errors(std::cerr);
    CWav reader;
    QVERIFY(!reader.LoadWav(path("001.wav").toStdString()));
    const QString printed = errors.text();
    QVERIFY2(printed.startsWith(quoted) && printed.endsWith(path("001.wav") + '\n') &&
                 printed.size() - path("001.wav").size() - 1 - quoted.size() == 2,
             qPrintable(printed));
}

void TestTokenCheck::aTokenThatIsNotPresentedHasNoMeasures_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("presented");
    const QByteArray good = pcm(tone());
    QTest::newRow("good") << WavBytes{.data = good}.bytes() << true;
    QTest::newRow("silent") << wav({0, 0}) << true;
    QTest::newRow("stereo") << WavBytes{.numChannels = 2, .data = good}.bytes() << true;
    QTest::newRow("refused") << WavBytes{.audioFormat = 3, .data = good}.bytes() << false;
    QTest::newRow("truncated") << WavBytes{.data = good, .declaredSize = 99999}.bytes() << false;
    QTest::newRow("three channels") << WavBytes{.numChannels = 3, .data = good}.bytes() << false;
}

// Catches the measures of the file before, and a finding that is wrongly held for an obstacle or
// not.
void TestTokenCheck::aTokenThatIsNotPresentedHasNoMeasures()
{
    QFETCH(const QByteArray, file);
    QFETCH(const bool, presented);
    QVERIFY(writeFile(path("001a.wav"), wav(tone())));
    QVERIFY(writeFile(path("001b.wav"), file));
    QVERIFY(writeFile(path("001c.wav"), file));
    const FolderCheck folder = check();
    QCOMPARE(folder.tokens.size(), 3);
    for (const CheckedToken &token : folder.tokens.mid(1)) {
        QCOMPARE(token.isPresented(), presented);
        QCOMPARE(token.duration > 0, presented);
        QCOMPARE(std::ranges::any_of(token.findings,
                                     [](const Finding &f) { return preventsPresentation(f.kind); }),
                 !presented);
    }
}

// Catches an attempt to read what the memory cannot hold.
void TestTokenCheck::aTokenTooLargeForTheMemoryIsNotRead()
{
    constexpr std::uint32_t size = 0xFFFFFFF0;
    QVERIFY(writeFile(path("001.wav"), WavBytes{.bitsPerSample = 8, .declaredSize = size}.bytes()));
    std::error_code error;
    std::filesystem::resize_file(path("001.wav").toStdString(), 44 + std::uintmax_t{size}, error);
    QVERIFY2(!error, error.message().c_str());
    const CheckedToken token = check().tokens.first();
    QCOMPARE(words(token.findings), QStringList("tooLarge"));
    QVERIFY(!token.isPresented() && preventsPresentation(token.findings.first().kind));
}

void TestTokenCheck::namesThatBreakTablesAreFound_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("tab") << "001\ta.wav" << true;
    QTest::newRow("line break") << "001\na.wav" << true;
    QTest::newRow("return") << "001\ra.wav" << true;
    QTest::newRow("blank") << "001 a.wav" << false;
    QTest::newRow("letter outside ASCII") << QString::fromUtf8("001\u00e4.wav") << false;
}

// Catches a name that would break a row of the results, and a good one.
void TestTokenCheck::namesThatBreakTablesAreFound()
{
    QFETCH(const QString, name);
    QVERIFY(writeFile(path(name), wav(tone())));
    QTEST(words(check().tokens.first().findings).contains("controlCharacter"), "found");
}

// Catches a copy that is not seen, files that are only alike, and a first file that is accused.
void TestTokenCheck::sameContentIsFoundAndAlikeContentIsNot()
{
    std::vector<int> mirrored = tone();
    std::swap(mirrored[1000], mirrored[1001]);
    const QByteArray refused = WavBytes{.audioFormat = 3, .data = pcm(tone())}.bytes();
    QByteArray otherRefused = refused;
    otherRefused[100] = static_cast<char>(otherRefused[100] + 1);
    const QByteArray stereo = WavBytes{.numChannels = 2, .data = pcm({1000, 1, 0, 2})}.bytes();
    const QByteArray otherRight = WavBytes{.numChannels = 2, .data = pcm({1000, 3, 0, 4})}.bytes();
    const QList<std::pair<QString, QByteArray>> files = {{"001a.wav", wav(tone())},
                                                         {"001b.wav", wav(mirrored)},
                                                         {"001c.wav", wav(tone())},
                                                         {"001d.wav", refused},
                                                         {"001e.wav", otherRefused},
                                                         {"001f.wav", refused},
                                                         {"001g.wav", wav(tone())},
                                                         {"001h.wav", stereo},
                                                         {"001i.wav", otherRight},
                                                         {"001j.wav", {}},
                                                         {"001k.wav", {}}};
    for (const auto &[name, bytes] : files)
        QVERIFY(writeFile(path(name), bytes));
    QStringList found;
    for (const CheckedToken &token : check().tokens) {
        for (const Finding &finding : token.findings) {
            if (finding.kind == FindingKind::SameContent)
                found.append(token.name + ": " + finding.fact);
        }
    }
    QCOMPARE(found, QStringList({"001c.wav: The content is the same as of \"001a.wav\".",
                                 "001f.wav: The content is the same as of \"001d.wav\".",
                                 "001g.wav: The content is the same as of \"001a.wav\"."}));
}

namespace {

/// Tokens of these levels in dBFS, named by their places.
QList<CheckedToken> tokensOf(Category category, const QList<double> &levels)
{
    QList<CheckedToken> tokens;
    for (const double level : levels) {
        CheckedToken token;
        token.name = QString("%1%2").arg(categoryWord(category).front()).arg(tokens.size());
        token.category = category;
        token.measures = {.nSamples = 10, .rms = std::pow(10, level / 20)};
        tokens.append(token);
    }
    return tokens;
}

} // namespace

void TestTokenCheck::levelsApartAreFound_data()
{
    QTest::addColumn<QList<double>>("mother");
    QTest::addColumn<QList<double>>("stranger");
    QTest::addColumn<QStringList>("ofTokens");
    QTest::addColumn<QStringList>("ofFolder");
    const QString within = "levelsApartInCategory";
    const QString between = "levelsApartBetweenCategories";
    QTest::newRow("one token") << QList<double>{-20} << QList<double>{} << QStringList()
                               << QStringList();
    QTest::newRow("just alike") << QList<double>{-20, -22.99} << QList<double>{-20} << QStringList()
                                << QStringList();
    QTest::newRow("apart in a category")
        << QList<double>{-20, -23.01} << QList<double>{-20} << QStringList() << QStringList(within);
    QTest::newRow("one too soft") << QList<double>{-20} << QList<double>{-20, -20, -23.01}
                                  << QStringList("s2") << QStringList(within);
    QTest::newRow("one nearly too soft")
        << QList<double>{-20} << QList<double>{-20, -20, -22.99} << QStringList() << QStringList();
    QTest::newRow("one too loud") << QList<double>{-20, -20, -16.9, -20} << QList<double>{-20}
                                  << QStringList("m2") << QStringList(within);
    QTest::newRow("softer strangers") << QList<double>{-20, -20} << QList<double>{-23.01, -23.01}
                                      << QStringList() << QStringList(between);
    QTest::newRow("louder strangers")
        << QList<double>{-23.01} << QList<double>{-20} << QStringList() << QStringList(between);
    QTest::newRow("categories just alike")
        << QList<double>{-20} << QList<double>{-22.99} << QStringList() << QStringList();
    QTest::newRow("median of an even number")
        << QList<double>{-20, -20, -22, -22} << QList<double>{-18.02} << QStringList()
        << QStringList();
}

// Catches another limit or middle, tokens of the other category in it, and the wrong token named.
void TestTokenCheck::levelsApartAreFound()
{
    QFETCH(const QList<double>, mother);
    QFETCH(const QList<double>, stranger);
    QList<CheckedToken> tokens =
        tokensOf(Category::Mother, mother) + tokensOf(Category::Stranger, stranger);
    const QList<Finding> ofFolder = checkLevels(tokens);
    QTEST(words(ofFolder), "ofFolder");
    for (const Finding &finding : ofFolder) {
        if (finding.kind == FindingKind::LevelsApartBetweenCategories)
            QCOMPARE(finding.fact.section('"', 1, 1),
                     categoryWord(mother.first() > stranger.first() ? Category::Mother
                                                                    : Category::Stranger));
    }
    QStringList found;
    for (const CheckedToken &token : std::as_const(tokens)) {
        if (words(token.findings) == QStringList("levelApart"))
            found.append(token.name);
    }
    QTEST(found, "ofTokens");
}

// Catches a level of minus infinity that makes all others too loud, and wrong names and numbers.
void TestTokenCheck::levelsCountOnlyWhatIsHeard()
{
    QList<CheckedToken> tokens = tokensOf(Category::Mother, {-20, -25, -21, -21.2, -21.4});
    CheckedToken silent = tokens.first();
    silent.measures = {.nSamples = 10, .silentAtStart = 10, .silentAtEnd = 10};
    CheckedToken refused = tokens.first();
    refused.measures = {};
    tokens += {silent, refused};
    const QList<Finding> findings = checkLevels(tokens);
    QCOMPARE(words(findings), QStringList("levelsApartInCategory"));
    QCOMPARE(findings.first().fact,
             "In the category \"mother\" the level of \"m0\" is 5.0 dB above that of \"m1\".");
    QCOMPARE(tokens.at(1).findings.size(), 1);
    QVERIFY(tokens.at(1).findings.first().fact.contains("3.8 dB below"));
    QVERIFY(silent.findings.isEmpty() && refused.findings.isEmpty());
}

void TestTokenCheck::theFoldersCategoriesAreCounted_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("subCode");
    QTest::addColumn<int>("nMother");
    QTest::addColumn<QStringList>("expected");
    const QStringList both = {"a001.wav", "b001.wav", "c002.wav"};
    QTest::newRow("both") << both << "CHD001" << 2 << QStringList();
    QTest::newRow("the other mother") << both << "CHD002" << 1 << QStringList();
    QTest::newRow("no mother") << both << "CHD003" << 0 << QStringList("noTokensOfCategory");
    QTest::newRow("no stranger") << both << "" << 3 << QStringList("noTokensOfCategory");
    QTest::newRow("nobody") << QStringList() << "CHD001" << 0 << QStringList("noTokens");
}

// Catches another rule of the category than the session's, and a folder of one voice.
void TestTokenCheck::theFoldersCategoriesAreCounted()
{
    QFETCH(const QStringList, names);
    QFETCH(const QString, subCode);
    for (qsizetype i = 0; i < names.size(); ++i)
        QVERIFY(writeFile(path(names.at(i)), wav(tone(9600 + static_cast<int>(i)))));
    const FolderCheck folder = check(subCode);
    QTEST(folder.nMother, "nMother");
    QCOMPARE(folder.nMother + folder.nStranger, names.size());
    QTEST(words(folder.findings), "expected");
    QCOMPARE(folder.hasFindings(), !folder.findings.isEmpty());
    for (qsizetype i = 0; i < names.size(); ++i) {
        QCOMPARE(folder.tokens.at(i).number, i + 1);
        QCOMPARE(folder.tokens.at(i).name, names.at(i));
        QCOMPARE(folder.tokens.at(i).category, tokenCategory(names.at(i), subCode));
    }
}

void TestTokenCheck::theNumberOfPresentationsIsChecked_data()
{
    QTest::addColumn<int>("nTimes");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("negative") << -1 << QStringList("noPresentations");
    QTest::newRow("none") << 0 << QStringList("noPresentations");
    QTest::newRow("one") << 1 << QStringList();
    QTest::newRow("as many as a session can have") << 500'000 << QStringList();
    QTest::newRow("more") << 500'001 << QStringList("tooManyPresentations");
}

// Catches a number of presentations that a session refuses, or that it does not.
void TestTokenCheck::theNumberOfPresentationsIsChecked()
{
    QFETCH(const int, nTimes);
    QVERIFY(writeFile(path("001.wav"), wav(tone())));
    QVERIFY(writeFile(path("002.wav"), wav(tone(9700))));
    const FolderCheck folder = check("001", nTimes);
    QTEST(words(folder.findings), "expected");
    QCOMPARE(folder.nPresentations.has_value(), nTimes <= 500'000);
    QCOMPARE(folder.nPresentations.value_or(0), nTimes <= 500'000 ? 2 * std::max(nTimes, 0) : 0);
}

// Catches a session's length without the delays, and by the file's rate in place of the session's.
void TestTokenCheck::theLengthOfASessionIsThatOfItsDelaysAndSounds()
{
    QVERIFY(writeFile(path("001.wav"), wav(tone(12000))));
    QVERIFY(writeFile(path("002.wav"),
                      WavBytes{.sampleRate = 24000, .data = pcm(tone(12000))}.bytes()));
    QVERIFY(writeFile(path("003.wav"), {}));
    // 0.25 s of sound, and a second and 0.25 or 0.5 s of delay, three times.
    QCOMPARE(check("001", 3).sessionLength, 3 * (1.25 + 0.25 + 1.5 + 0.25));
    QCOMPARE(check("001", 0).sessionLength, 0.0);
}

// Catches something left out that nobody hears of, a wrong reason, another order than that of the
// names whatever their case, and a folder's link that waits for a writer.
void TestTokenCheck::whatIsLeftOutIsNamedWithItsReason()
{
    for (const QString name : {"001.wav", "002.WAV", ".hidden.wav", "Notes.txt", "002.wave"})
        QVERIFY(writeFile(path(name), wav(tone())));
    QVERIFY(QDir().mkpath(path("folder.wav")));
    QCOMPARE(mkfifo(path("pipe.wav").toStdString().c_str(), 0600), 0);
    std::filesystem::create_symlink("nothing.wav", path("dangling.wav").toStdString());
    std::filesystem::create_symlink("001.wav", path("003.wav").toStdString());
    const std::string undecodable = path("0").toStdString() + "\xFF.wav";
    std::ofstream(undecodable) << "anything";
    // The folder is removed by Qt, which cannot remove a file that it does not list.
    const auto remove = qScopeGuard([&] { std::filesystem::remove(undecodable); });
    const FolderCheck folder = check("001");
    QStringList tokens;
    for (const CheckedToken &token : folder.tokens)
        tokens.append(token.name);
    QCOMPARE(tokens, QStringList({"001.wav", "002.WAV", "003.wav"}));
    QStringList leftOut;
    for (const LeftOut &entry : folder.leftOut)
        leftOut.append(entry.name + ' ' + QString::number(entry.reason));
    const QString shown = QString("0") + QChar(QChar::ReplacementCharacter) + ".wav";
    QCOMPARE(leftOut, QStringList({".hidden.wav 2", "002.wave 1", shown + " 3", "dangling.wav 4",
                                   "folder.wav 0", "Notes.txt 1", "pipe.wav 4"}));
    QStringList special;
    for (const Finding &finding : folder.findings)
        special.append(finding.fact.section('"', 1, 1));
    QCOMPARE(special, QStringList({shown, "dangling.wav", "pipe.wav"}));
}

// Catches results in another order, mixed up by the two threads, or left out.
void TestTokenCheck::eachTokenHasTheMeasuresOfItsOwnFile()
{
    constexpr int n = 300;
    for (int i = 0; i < n; ++i)
        QVERIFY(writeFile(path(QString("t%1.wav").arg(i, 4, 10, QChar('0'))),
                          wav(tone(500 + i, 5000 + 10 * i))));
    const FolderCheck folder = check();
    QCOMPARE(folder.tokens.size(), n);
    for (int i = 0; i < n; ++i) {
        const CheckedToken &token = folder.tokens.at(i);
        QCOMPARE(token.number, i + 1);
        QCOMPARE(token.measures.nSamples, 500 + i);
        QVERIFY(std::abs(token.measures.peak - (5000 + 10 * i) / 32768.0) < 0.001);
        QCOMPARE(token.duration, (500 + i) / 48000.0);
        QCOMPARE(token.rate, 48000U);
        QCOMPARE(token.bits, 16);
        QCOMPARE(token.channels, 1);
    }
}

// Catches large files that get no reader, or that of another thread.
void TestTokenCheck::largeFilesAreMeasuredLikeOthers()
{
    constexpr int large = 8'500'000;
    const QByteArray samples = pcm(soft(1000)).repeated(large / 1000);
    for (const auto &[name, file] :
         {std::pair("001.wav", samples), std::pair("002.wav", pcm(tone(1000))),
          std::pair("003.wav", samples + pcm(soft(2))), std::pair("004.wav", samples)})
        QVERIFY(writeFile(path(name), WavBytes{.data = file}.bytes()));
    const FolderCheck folder = check("001");
    QCOMPARE(folder.tokens.at(0).measures.nSamples, large);
    QCOMPARE(folder.tokens.at(1).measures.nSamples, 1000);
    QCOMPARE(folder.tokens.at(2).measures.nSamples, large + 2);
    QCOMPARE(words(folder.tokens.at(0).findings), QStringList());
    QCOMPARE(words(folder.tokens.at(3).findings), QStringList("sameContent"));
}

// Catches a check that cannot be stopped, tells another progress, or gives half a result as whole.
void TestTokenCheck::aStoppedCheckIsNotComplete()
{
    for (int i = 0; i < 50; ++i)
        QVERIFY(writeFile(path(QString("t%1.wav").arg(i)), wav(tone(9600 + i))));
    QList<qsizetype> told;
    const FolderCheck whole =
        checkFolder(m_folder->path(), "001", 1, [&](qsizetype done, qsizetype all) {
            told.append(done);
            return all == 50;
        });
    QVERIFY(whole.isComplete);
    QVERIFY(std::is_sorted(told.begin(), told.end()));
    QCOMPARE(told.first(), 0);
    QCOMPARE(told.last(), 50);

    for (const qsizetype last : {0, 50}) {
        int callsAfter = 0;
        const FolderCheck stopped =
            checkFolder(m_folder->path(), "001", 1, [&](qsizetype done, qsizetype) {
                callsAfter += done >= last ? 1 : 0;
                return done < last;
            });
        QVERIFY(!stopped.isComplete);
        QVERIFY(stopped.tokens.isEmpty());
        QCOMPARE(callsAfter, 1);
    }
}

// Catches a folder that is not there being taken for an empty one.
void TestTokenCheck::aFolderThatCannotBeReadIsNamed()
{
    QVERIFY(writeFile(path("file"), {}));
    QCOMPARE(folderProblem(m_folder->path()), "");
    QCOMPARE(folderProblem(path("none")), "The folder " + path("none") + " does not exist.");
    QCOMPARE(folderProblem(path("file")), path("file") + " is not a folder.");
}

void TestTokenCheck::measuresAreThoseOfEachSample_data()
{
    QTest::addColumn<int>("n");
    QTest::addColumn<int>("stride");
    for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 1000, 1001, 1002, 1003}) {
        for (const int stride : {1, 2})
            QTest::addRow("%d samples, every %d", n, stride) << n << stride;
    }
}

// Catches a sample that is left out or counted twice where the samples are no multiple of a vector,
// and one of the other channel.
void TestTokenCheck::measuresAreThoseOfEachSample()
{
    QFETCH(const int, n);
    QFETCH(const int, stride);
    for (const int extreme : {0, n - 1, n / 2}) {
        std::vector<double> samples(static_cast<std::size_t>(n * stride), 99.0);
        std::vector<double> own;
        for (int i = 0; i < n; ++i) {
            own.push_back(i == extreme ? (n % 2 == 0 ? 0.75 : -0.75) : (i % 7 - 2) / 16.0);
            samples[static_cast<std::size_t>(i * stride)] = own.back();
        }
        double sum = 0;
        double squares = 0;
        for (const double value : own) {
            sum += value;
            squares += value * value;
        }
        const SoundMeasures measures = measureSound(samples, stride, 0.99);
        QCOMPARE(measures.nSamples, n);
        QCOMPARE(measures.peak, 0.75);
        QVERIFY(std::abs(measures.mean - sum / n) < 1e-12);
        QVERIFY(std::abs(measures.rms - std::sqrt(squares / n)) < 1e-12);
        QCOMPARE(measures.last, own.back());
        QCOMPARE(measures.clipped, 0);
    }
}

QTEST_GUILESS_MAIN(TestTokenCheck)
#include "tst_tokencheck.moc"
