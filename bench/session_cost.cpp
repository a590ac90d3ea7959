// SPDX-License-Identifier: GPL-3.0-or-later
// What a trial costs over the course of a long session: the program's own work from the answer
// until the next token is scheduled, without sound and without painting.
//
//   session_cost [TOKENS [TIMES]]    a Markdown table; 5,000 tokens 20 times by itself

#include "support/ResidentMemory.h"
#include "support/SilentSession.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int nParts = 10;

/// The value below which @p share of @p sorted lies.
double quantile(const std::vector<double> &sorted, double share)
{
    return sorted.at(static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1)));
}

} // namespace

int main(int argc, char *argv[])
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    QLoggingCategory::setFilterRules("default.debug=false");
    const QStringList arguments = QCoreApplication::arguments();
    const SilentSession session(arguments.value(1, "5000").toInt(),
                                arguments.value(2, "20").toInt());
    const int nTrials = session.nTrials();
    if (nTrials < nParts)
        qFatal("too few trials");

    OperatorWindow window;
    window.resize(1152, 810);
    window.show();
    window.checkBoxSaveData->setChecked(false);
    const qint64 memoryBefore = residentMemory();
    QElapsedTimer clock;
    clock.start();
    if (!session.prepare(window))
        qFatal("the session could not be prepared");
    std::printf("Prepared in %.1f s with %lld KB.\n\n", static_cast<double>(clock.elapsed()) / 1e3,
                static_cast<long long>((residentMemory() - memoryBefore) / 1000));
    std::printf("| trials | median in us | 99 %% in us | largest in us | memory in KB |\n"
                "|---|---|---|---|---|\n");
    for (int part = 0; part < nParts; ++part) {
        const int first = static_cast<int>(qint64{nTrials} * part / nParts);
        const int end = static_cast<int>(qint64{nTrials} * (part + 1) / nParts);
        std::vector<double> times;
        for (int trial = first; trial < end; ++trial) {
            clock.start();
            SilentSession::answer(window, trial % 3 != 0);
            times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e3);
        }
        std::sort(times.begin(), times.end());
        std::printf("| %d to %d | %.0f | %.0f | %.0f | %lld |\n", first + 1, end,
                    quantile(times, 0.5), quantile(times, 0.99), times.back(),
                    static_cast<long long>(residentMemory() / 1000));
        std::fflush(stdout);
    }
    return EXIT_SUCCESS;
}
