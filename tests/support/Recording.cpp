// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Recording.h"

#include "support/OtherPrograms.h"

#include <QTest>

#include <cstring>

Recording::Recording(const QString &sink)
{
    parec.setStandardErrorFile(QProcess::nullDevice());
    parec.setProcessEnvironment(environmentOfOthers());
    parec.start("parec", {"-d", sink + ".monitor", "--format=float32le", "--rate=48000",
                          "--channels=1", "--latency-msec=20"});
}

Recording::~Recording()
{
    parec.terminate();
    parec.waitForFinished();
}

bool Recording::isRunning()
{
    return parec.waitForReadyRead(10000);
}

std::vector<float> Recording::samples(int settle)
{
    QTest::qWait(settle);
    recorded += parec.readAllStandardOutput();
    std::vector<float> all(static_cast<size_t>(recorded.size()) / sizeof(float));
    std::memcpy(all.data(), recorded.constData(), all.size() * sizeof(float));
    return all;
}
