// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/SoundRecorder.h"

#include "timing/OtherPrograms.h"

#include <QCoreApplication>

#include <pulse/simple.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <tuple>

#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto recordOption = "--record-stamped"_L1;

/// Whether the program that has started this one still holds the other end of the standard input.
bool isWanted()
{
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) == 0;
}

int record(const char *source)
{
    std::signal(SIGINT, SIG_IGN); // Ctrl-C is for the program that has started this one
    pa_simple *const stream =
        openRecording("Ostrine recorder", source, std::tuple_size_v<decltype(Fragment::samples)>);
    Fragment fragment;
    while (stream != nullptr && isWanted() &&
           pa_simple_read(stream, fragment.samples.data(), sizeof(fragment.samples), nullptr) ==
               0) {
        fragment.arrival = monotonicMs();
        if (std::fwrite(&fragment, sizeof(fragment), 1, stdout) != 1 || std::fflush(stdout) != 0)
            break;
    }
    return EXIT_FAILURE;
}

} // namespace

pa_simple *openRecording(const char *program, const char *source, size_t fragmentSize)
{
    const pa_sample_spec format = {PA_SAMPLE_FLOAT32LE, recordingRate, 1};
    constexpr auto unset = std::numeric_limits<std::uint32_t>::max();
    const pa_buffer_attr buffer = {unset, unset, unset, unset,
                                   static_cast<std::uint32_t>(fragmentSize * sizeof(float))};
    return pa_simple_new(nullptr, program, PA_STREAM_RECORD, source, "recording", &format, nullptr,
                         &buffer, nullptr);
}

SoundRecorder::SoundRecorder(const QString &source)
    : m_file(m_folder.filePath(u"recording"_s))
{
    m_process.setStandardOutputFile(m_file.fileName());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setProcessEnvironment(environmentOfOthers());
    m_process.start(QCoreApplication::applicationFilePath(), {recordOption, source});
    // Once both programs have opened the file, it needs no name: so it is gone with them, whatever
    // ends them. It may be the recording of a microphone.
    if (!m_process.waitForStarted() || !m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        m_process.kill();
    m_folder.remove();
}

SoundRecorder::~SoundRecorder()
{
    m_process.kill();
    m_process.waitForFinished();
}

std::vector<Fragment> SoundRecorder::newFragments()
{
    if (!m_file.isOpen())
        return {};
    constexpr auto size = static_cast<qint64>(sizeof(Fragment));
    const qint64 complete = (m_file.size() - m_file.pos()) / size;
    std::vector<Fragment> fragments(static_cast<size_t>(complete));
    const qint64 nRead = m_file.read(reinterpret_cast<char *>(fragments.data()), complete * size);
    fragments.resize(static_cast<size_t>(nRead / size));
    return fragments;
}

std::optional<int> recorderMain(int argc, char *argv[])
{
    if (argc != 3 || argv[1] != recordOption)
        return std::nullopt;
    return record(argv[2]);
}
