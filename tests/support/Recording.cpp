#include "support/Recording.h"

#include "audio/TokenSound.h"
#include "support/OtherPrograms.h"
#include "support/WavFile.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

QList<double> noise(int nSamples, quint32 seed)
{
    QRandomGenerator random(seed);
    QList<double> samples(nSamples);
    for (double &sample : samples)
        sample = (random.bounded(1, 16384) - 8192.5) / 16384;
    return samples;
}

QByteArray wavBytes(const QList<double> &samples)
{
    QByteArray data;
    for (const double sample : samples)
        data += WavBytes::little(static_cast<std::uint32_t>(qRound(sample * 32768)), 2);
    return WavBytes{.data = data}.bytes();
}

QByteArray floatBytes(const QList<double> &samples)
{
    return playbackBytes(0, samples, 0);
}

bool hasGap(const QByteArray &heard, const QByteArray &token)
{
    const qsizetype start = heard.indexOf(token.first(64));
    return start >= 0 && heard.indexOf(token.last(64), start) >= 0 && !heard.contains(token);
}

QString describeLoss(const QByteArray &heard, const QByteArray &token)
{
    const qsizetype start = heard.indexOf(token.first(64));
    if (start < 0)
        return "its beginning was not heard";
    const auto [end, rest] =
        std::mismatch(token.cbegin(), token.cend(), heard.cbegin() + start, heard.cend());
    const qsizetype nHeard = (end - token.cbegin()) / qsizetype{sizeof(float)};
    return QString("%1 of %2 samples heard, then %3")
        .arg(nHeard)
        .arg(token.size() / qsizetype{sizeof(float)})
        .arg(hasGap(heard, token) ? "a gap" : "nothing more");
}

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

QByteArray Recording::bytes(int settle)
{
    QTest::qWait(settle);
    recorded += parec.readAllStandardOutput();
    return recorded;
}
