// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PelkClasses.h"
#include "support/GuiTestMain.h"
#include "support/ToolkitTest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

const QString rampWarning = "Vector size must be at least twice of nPoints";

struct Ramp
{
    const char *name;
    QList<double> (*byValue)(QList<double>, int);
    void (*inPlace)(QList<double> *, int);
    double (*weight)(double i, double nPoints);
    int nTimes; ///< how often the weight is applied
    long double (*exactWeight)(long double x);

    /// @p sample, weighted as the one that lies @p i samples from an end.
    double weighted(double sample, int i, int nPoints) const
    {
        for (int time = 0; time < nTimes && i < nPoints; ++time)
            sample *= weight(i, nPoints);
        return sample;
    }
};

double cosWeight(double i, double nPoints)
{
    return (1.0 - std::cos(i / nPoints * 3.141592653589793)) * 0.5;
}

double linearWeight(double i, double nPoints)
{
    return i / nPoints;
}

/// The raised cosine by the half angle.
long double exactCosWeight(long double x)
{
    const long double root = std::sin(x * std::numbers::pi_v<long double> / 2);
    return root * root;
}

const std::array<Ramp, 3> ramps = {{
    {"cos", cosRamp, cosRamp, cosWeight, 1, exactCosWeight},
    {"cos2", cos2Ramp, cos2Ramp, cosWeight, 2,
     [](long double x) { return exactCosWeight(x) * exactCosWeight(x); }},
    {"linear", linearRamp, linearRamp, linearWeight, 1, [](long double x) { return x; }},
}};

enum Shape { Cos, Cos2, Linear };

/// Both forms of a ramp, which must agree; nothing when they do not.
QList<double> ramped(const Ramp &ramp, const QList<double> &samples, int nPoints)
{
    QList<double> changed = samples;
    ramp.inPlace(&changed, nPoints);
    const QList<double> returned = ramp.byValue(samples, nPoints);
    return changed == returned ? changed : QList<double>();
}

/// The @p n samples of a signal without symmetry or zeros.
QList<double> asymmetric(int n)
{
    QList<double> samples;
    for (int i = 0; i < n; ++i)
        samples.append(1.0 + i / 3.0);
    return samples;
}

/// Whether @p a and @p b are at most one unit in the last place apart.
bool withinOneUlp(double a, double b)
{
    return a == b || std::nextafter(a, b) == b;
}

} // namespace

class TestToolkitRamps : public ToolkitTest
{
    Q_OBJECT

private slots:
    void rampsHaveTheirKnownWeightsAtBothEnds_data();
    void rampsHaveTheirKnownWeightsAtBothEnds();
    void rampsFollowTheirFormulaAndLeaveTheMiddle_data();
    void rampsFollowTheirFormulaAndLeaveTheMiddle();
    void rampsMultiplyTheSamplesTheyFind_data();
    void rampsMultiplyTheSamplesTheyFind();
    void aRampOfNoPointsChangesNothing_data();
    void aRampOfNoPointsChangesNothing();
    void overlappingRampsWarnAndBothApply_data();
    void overlappingRampsWarnAndBothApply();
    void rampsChangeNoCopyAndMoveTheirArgument_data();
    void rampsChangeNoCopyAndMoveTheirArgument();
};

void TestToolkitRamps::rampsHaveTheirKnownWeightsAtBothEnds_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<QList<double>>("onset");
    QTest::newRow("cos") << int{Cos}
                         << QList<double>{0, 0.0954915, 0.3454915, 0.6545085, 0.9045085};
    QTest::newRow("cos2") << int{Cos2}
                          << QList<double>{0, 0.0091186, 0.1193644, 0.4283814, 0.8181356};
    QTest::newRow("linear") << int{Linear} << QList<double>{0, 0.2, 0.4, 0.6, 0.8};
}

// Catches another shape, a ramp that reaches 1, and an offset that does not mirror the onset. Ten
// samples are exactly twice the ramp, which is not warned of.
void TestToolkitRamps::rampsHaveTheirKnownWeightsAtBothEnds()
{
    QFETCH(const int, shape);
    QFETCH(const QList<double>, onset);
    const QList<double> weighted = ramped(ramps.at(shape), QList<double>(10, 1.0), 5);
    QCOMPARE(weighted.size(), 10);
    for (int i = 0; i < 5; ++i) {
        QVERIFY(std::abs(weighted.at(i) - onset.at(i)) <= 0.5e-7);
        QVERIFY(std::abs(weighted.at(9 - i) - onset.at(i)) <= 0.5e-7);
    }
}

void TestToolkitRamps::rampsFollowTheirFormulaAndLeaveTheMiddle_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s 1 of 2", name) << shape << 1 << 2;
        QTest::addRow("%s 1 of 3", name) << shape << 1 << 3;
        QTest::addRow("%s 7 of 100", name) << shape << 7 << 100;
        QTest::addRow("%s 441 of 883", name) << shape << 441 << 883;
        QTest::addRow("%s 50000 of 100000", name) << shape << 50000 << 100000;
    }
}

// Catches weights beside the formula, a difference between onset and offset, and a touched middle.
void TestToolkitRamps::rampsFollowTheirFormulaAndLeaveTheMiddle()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    const Ramp &ramp = ramps.at(shape);
    const QList<double> weights = ramped(ramp, QList<double>(nSamples, 1.0), nPoints);
    QCOMPARE(weights.size(), nSamples);
    for (int i = 0; i < nSamples; ++i)
        QVERIFY(weights.at(i) == weights.at(nSamples - 1 - i));
    for (int i = 0; i < nPoints; ++i) {
        const double weight = weights.at(i);
        QVERIFY2(withinOneUlp(weight, ramp.weighted(1.0, i, nPoints)),
                 qPrintable(QString::number(i)));
        const long double exact = ramp.exactWeight(static_cast<long double>(i) / nPoints);
        QVERIFY2(std::abs(weight - exact) < 1e-15L, qPrintable(QString::number(i)));
    }
    for (int i = nPoints; i < nSamples - nPoints; ++i)
        QVERIFY(weights.at(i) == 1.0);
}

void TestToolkitRamps::rampsMultiplyTheSamplesTheyFind_data()
{
    QTest::addColumn<int>("shape");
    for (int shape = Cos; shape <= Linear; ++shape)
        QTest::newRow(ramps.at(shape).name) << shape;
}

// Catches samples that are replaced by the weights or taken from the wrong end, and a weight that
// is squared where it should be applied twice, which would change the last bits of a token.
void TestToolkitRamps::rampsMultiplyTheSamplesTheyFind()
{
    QFETCH(const int, shape);
    const Ramp &ramp = ramps.at(shape);
    const QList<double> samples = asymmetric(50);
    const QList<double> weighted = ramped(ramp, samples, 20);
    QCOMPARE(weighted.size(), 50);
    for (int i = 0; i < 50; ++i) {
        const double expected = ramp.weighted(samples.at(i), std::min(i, 49 - i), 20);
        QVERIFY2(weighted.at(i) == expected, qPrintable(QString::number(i)));
    }
}

void TestToolkitRamps::aRampOfNoPointsChangesNothing_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s 0", name) << shape << 0 << 9;
        QTest::addRow("%s -1", name) << shape << -1 << 9;
        QTest::addRow("%s most negative", name) << shape << smallest << 9;
        QTest::addRow("%s 0 of none", name) << shape << 0 << 0;
        QTest::addRow("%s -1 of none", name) << shape << -1 << 0;
    }
}

// Catches a ramp length taken as unsigned, a needless warning and a division by zero.
void TestToolkitRamps::aRampOfNoPointsChangesNothing()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    QList<double> samples = asymmetric(nSamples);
    ramps.at(shape).inPlace(&samples, nPoints);
    QCOMPARE(samples, asymmetric(nSamples));
    QCOMPARE(ramps.at(shape).byValue(asymmetric(nSamples), nPoints), asymmetric(nSamples));
}

void TestToolkitRamps::overlappingRampsWarnAndBothApply_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s middle twice", name) << shape << 5 << 9;
        QTest::addRow("%s overlap of 2", name) << shape << 5 << 8;
        QTest::addRow("%s as long as the list", name) << shape << 8 << 8;
        QTest::addRow("%s one longer", name) << shape << 9 << 8;
        QTest::addRow("%s twice as long", name) << shape << 14 << 7;
        QTest::addRow("%s 2^30, whose double wraps", name) << shape << (1 << 30) << 8;
        QTest::addRow("%s longest", name) << shape << largest << 8;
        QTest::addRow("%s one sample", name) << shape << 1 << 1;
        QTest::addRow("%s no sample", name) << shape << 1 << 0;
    }
}

// Catches a missing warning, a sample in both ramps weighted once, and - under the address
// sanitizer or by a crash - an access outside the list.
void TestToolkitRamps::overlappingRampsWarnAndBothApply()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    const Ramp &ramp = ramps.at(shape);
    expectBoxes(2);
    QList<double> changed = asymmetric(nSamples);
    ramp.inPlace(&changed, nPoints);
    const QList<double> returned = ramp.byValue(asymmetric(nSamples), nPoints);
    QVERIFY(shown({rampWarning, rampWarning}));

    QCOMPARE(changed.size(), nSamples);
    QVERIFY(returned == changed);
    for (int i = 0; i < nSamples; ++i) {
        // The ramps go inwards together: the nearer end's comes first.
        const auto [nearer, farther] = std::minmax({i, nSamples - 1 - i});
        const double once = ramp.weighted(asymmetric(nSamples).at(i), nearer, nPoints);
        const double expected = ramp.weighted(once, farther, nPoints);
        QVERIFY2(changed.at(i) == expected, qPrintable(QString::number(i)));
    }
}

void TestToolkitRamps::rampsChangeNoCopyAndMoveTheirArgument_data()
{
    rampsMultiplyTheSamplesTheyFind_data();
}

// Catches a ramp in place that reaches into a copy, one by value that changes its argument, and a
// list that is copied where it could be moved through.
void TestToolkitRamps::rampsChangeNoCopyAndMoveTheirArgument()
{
    QFETCH(const int, shape);
    QList<double> samples(10, 1.0);
    const QList<double> copy = samples;
    QList<double> returned = ramps.at(shape).byValue(samples, 5);
    QCOMPARE(samples, copy);
    ramps.at(shape).inPlace(&samples, 5);
    QCOMPARE(samples, returned);
    QCOMPARE(copy, QList<double>(10, 1.0));

    const double *storage = returned.constData();
    const QList<double> moved = ramps.at(shape).byValue(std::move(returned), 2);
    QCOMPARE(moved.constData(), storage);
}

GUI_TEST_MAIN(TestToolkitRamps)
#include "tst_toolkitramps.moc"
