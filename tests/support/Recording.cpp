// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Recording.h"

#include "timing/OtherPrograms.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <cstring>

Recording::Recording(const QString &sink)
{
    m_process.setStandardOutputFile(path());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setProcessEnvironment(environmentOfOthers());
    m_process.start("parec", {"-d", sink + ".monitor", "--format=float32le", "--rate=48000",
                              "--channels=1", "--latency-msec=20"});
}

Recording::~Recording()
{
    m_process.terminate();
    m_process.waitForFinished();
}

bool Recording::isRunning() const
{
    return QTest::qWaitFor([this] { return QFileInfo(path()).size() > 0; }, 10000);
}

std::vector<float> Recording::samples(int settle) const
{
    QTest::qWait(settle);
    QFile file(path());
    const QByteArray written = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    std::vector<float> all(static_cast<size_t>(written.size()) / sizeof(float));
    std::memcpy(all.data(), written.constData(), all.size() * sizeof(float));
    return all;
}
