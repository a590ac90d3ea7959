// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Recording.h"

#include "support/OtherPrograms.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

Recording::Recording(const QString &sink)
    : Recording("parec", {"-d", sink + ".monitor", "--format=float32le", "--rate=48000",
                          "--channels=1", "--latency-msec=20"})
{
}

Recording::Recording(const QString &program, const QStringList &arguments)
{
    m_process.setStandardOutputFile(path());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setProcessEnvironment(environmentOfOthers());
    m_process.start(program, arguments);
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

QByteArray Recording::bytes(int settle) const
{
    QTest::qWait(settle);
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
