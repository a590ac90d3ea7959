// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/DynArray.h"
#include "plots/FFTReal.h"

#include <QProcess>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <limits>

namespace {

constexpr std::int64_t length = 16384;

/// The transform with its passes in sight, and with arrays to run them on.
class OpenTransform : public FFTReal<double>
{
public:
    OpenTransform()
        : FFTReal(length)
        , input(length)
        , output(length)
        , x(&input[0])
        , f(&output[0])
    {
        std::fill_n(x, length, 1.0);
    }
    using FFTReal::cos_of_pass;
    using FFTReal::oscillator_of_pass;
    using FFTReal::use_buffer;

    // Not inlined: a compiler that sees through a violation warns of what would follow.
    [[gnu::noinline]] void first_passes(double df[], const double sf[]) const
    {
        column_passes<8>(df, sf, 6);
    }
    [[gnu::noinline]] void later_passes(double df[], const double sf[], int pass) const
    {
        pass_pair(df, sf, pass);
    }

    DynArray<double> input;
    DynArray<double> output;
    double *const x;
    double *const f;
};

void construct(std::int64_t size)
{
    const FFTReal<double> transform(size);
}

void access(std::int64_t size, std::int64_t pos)
{
    const DynArray<double> array(size);
    std::fprintf(stderr, "%g", array[pos]);
}

/// Something a caller must not do, and the assertion that stops it.
struct Violation
{
    const char *name;
    void (*commit)();
    const char *text;
    const char *function;
    const char *file;
};

const Violation violations[] = {
    {"length -1", [] { construct(-1); }, "size >= 0", "check_size", "DynArray.h"},
    {"lowest length", [] { construct(std::numeric_limits<std::int64_t>::min()); }, "size >= 0",
     "check_size", "DynArray.h"},
    {"length 0", [] { construct(0); }, "x > 0", "FFTReal_is_pow2", "FFTReal.h"},
    {"length 3", [] { construct(3); }, "FFTReal_is_pow2 (length)", "FFTReal", "FFTReal.h"},
    {"length 16383", [] { construct(16383); }, "FFTReal_is_pow2 (length)", "FFTReal", "FFTReal.h"},
    {"length 2^40 + 2", [] { construct((std::int64_t(1) << 40) + 2); }, "FFTReal_is_pow2 (length)",
     "FFTReal", "FFTReal.h"},
    {"highest length", [] { construct(std::numeric_limits<std::int64_t>::max()); },
     "FFTReal_is_pow2 (length)", "FFTReal", "FFTReal.h"},
    {"length 2^31", [] { construct(std::int64_t(1) << 31); }, "_nbr_bits <= MAX_BIT_DEPTH",
     "FFTReal", "FFTReal.h"},
    {"length 2^40", [] { construct(std::int64_t(1) << 40); }, "_nbr_bits <= MAX_BIT_DEPTH",
     "FFTReal", "FFTReal.h"},
    {"length 2^62", [] { construct(std::int64_t(1) << 62); }, "_nbr_bits <= MAX_BIT_DEPTH",
     "FFTReal", "FFTReal.h"},

    {"array of size -1", [] { const DynArray<double> array(-1); }, "size >= 0", "check_size",
     "DynArray.h"},
    {"resizing to -1", [] { DynArray<double>(4).resize(-1); }, "size >= 0", "check_size",
     "DynArray.h"},
    {"element -1", [] { access(4, -1); }, "pos >= 0", "check_position", "DynArray.h"},
    {"element 4 of 4", [] { access(4, 4); }, "pos < _len", "check_position", "DynArray.h"},
    {"element 0 of none", [] { access(0, 0); }, "pos < _len", "check_position", "DynArray.h"},
    {"writing to element 4 of 4", [] { DynArray<double>(4)[4] = 1.0; }, "pos < _len",
     "check_position", "DynArray.h"},

    {"no output",
     [] {
         const OpenTransform t;
         t.do_fft(nullptr, t.x);
     },
     "f != 0", "do_fft", "FFTReal.h"},
    {"scratch space as output",
     [] {
         const OpenTransform t;
         t.do_fft(t.use_buffer(), t.x);
     },
     "f != use_buffer ()", "do_fft", "FFTReal.h"},
    {"no input",
     [] {
         const OpenTransform t;
         t.do_fft(t.f, nullptr);
     },
     "x != 0", "do_fft", "FFTReal.h"},
    {"scratch space as input",
     [] {
         const OpenTransform t;
         t.do_fft(t.f, t.use_buffer());
     },
     "x != use_buffer ()", "do_fft", "FFTReal.h"},
    {"input as output",
     [] {
         const OpenTransform t;
         t.do_fft(t.x, t.x);
     },
     "x != f", "do_fft", "FFTReal.h"},

    {"first passes without destination",
     [] {
         const OpenTransform t;
         t.first_passes(nullptr, t.x);
     },
     "df != 0", "column_passes", "FFTReal.h"},
    {"first passes without source",
     [] {
         const OpenTransform t;
         t.first_passes(t.f, nullptr);
     },
     "x != 0", "column_passes", "FFTReal.h"},
    {"first passes in place",
     [] {
         const OpenTransform t;
         t.first_passes(t.f, t.f);
     },
     "df != x", "column_passes", "FFTReal.h"},
    {"later passes without destination",
     [] {
         const OpenTransform t;
         t.later_passes(nullptr, t.x, 6);
     },
     "df != 0", "pass_pair", "FFTReal.h"},
    {"later passes without source",
     [] {
         const OpenTransform t;
         t.later_passes(t.f, nullptr, 6);
     },
     "sf != 0", "pass_pair", "FFTReal.h"},
    {"later passes in place",
     [] {
         const OpenTransform t;
         t.later_passes(t.f, t.f, 6);
     },
     "df != sf", "pass_pair", "FFTReal.h"},
    {"pass 2 among the later ones",
     [] {
         const OpenTransform t;
         t.later_passes(t.f, t.x, 2);
     },
     "pass >= 3", "cos_of_pass", "FFTReal.h"},
    {"a pass behind the last one",
     [] {
         const OpenTransform t;
         t.later_passes(t.f, t.x, 13);
     },
     "pass < _nbr_bits", "oscillator_of_pass", "FFTReal.h"},
    {"cosines of a pass behind the last one", [] { OpenTransform().cos_of_pass(14); },
     "pass < _nbr_bits", "cos_of_pass", "FFTReal.h"},
    {"oscillator of pass 12", [] { OpenTransform().oscillator_of_pass(12); },
     "pass > TRIGO_BD_LIMIT", "oscillator_of_pass", "FFTReal.h"},
};

/// Carries out the violation of this name; without one, all that is allowed.
int commitViolation(const char *name)
{
    for (const Violation &violation : violations) {
        if (qstrcmp(violation.name, name) == 0) {
            violation.commit();
            return 0;
        }
    }
    const OpenTransform transform;
    transform.do_fft(transform.f, transform.x);
    return transform.f[0] == static_cast<double>(length) ? 0 : 1;
}

} // namespace

class TestFFTAssertions : public QObject
{
    Q_OBJECT

private slots:
    void aPermittedTransformFailsNoAssertion();
    void eachViolationFailsItsOwnAssertion_data();
    void eachViolationFailsItsOwnAssertion();

private:
    /// Runs this program once more to commit the violation of this name, and waits for its end.
    static bool run(QProcess &process, const QString &name);
};

bool TestFFTAssertions::run(QProcess &process, const QString &name)
{
    process.start(QCoreApplication::applicationFilePath(), {"--violate", name});
    return process.waitForFinished();
}

// Catches an assertion that fails without a reason, and a way of testing that fails always.
void TestFFTAssertions::aPermittedTransformFailsNoAssertion()
{
    QProcess process;
    QVERIFY(run(process, "nothing"));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void TestFFTAssertions::eachViolationFailsItsOwnAssertion_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("file");
    for (const Violation &violation : violations) {
        QTest::newRow(violation.name)
            << QByteArray(violation.text) << QByteArray(violation.function)
            << QByteArray(violation.file);
    }
}

// Catches an assertion left out or compiled away, one that lets the process go on or fails for
// another reason, a changed text, and memory taken for a length that is refused.
void TestFFTAssertions::eachViolationFailsItsOwnAssertion()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, function);
    QFETCH(const QByteArray, file);
    QProcess process;
    QVERIFY(run(process, QTest::currentDataTag()));
    const QByteArray errors = process.readAllStandardError();
    // A compiler may append the arguments of a template to the function's name.
    QVERIFY2(errors.startsWith("Assertion failed: " + text + ", function " + function), errors);
    QVERIFY2(errors.endsWith("/" + file + "\n"), errors);
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(process.exitCode(), SIGABRT);
}

int main(int argc, char *argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--violate") == 0)
        return commitViolation(argv[2]);
    QCoreApplication application(argc, argv);
    TestFFTAssertions test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_fftassertions.moc"
