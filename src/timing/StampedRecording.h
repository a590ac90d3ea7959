// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

/// The sampling rate of recordings and of what is played.
inline constexpr int recordingRate = 48000;

/// The time of the monotonic clock in milliseconds, which is the same in all programs.
double monotonicMs();

/// Some samples and when they arrived, by monotonicMs().
struct Fragment
{
    double arrival;
    std::array<float, 64> samples;
};

/// A recording of sound that tells when each sample was heard. All times are in ms.
class StampedRecording
{
public:
    void append(std::span<const Fragment> fragments);

    /// Forgets what arrived before @p time. Positions then count from there.
    void discardUntil(double time);

    std::span<const float> samples() const { return m_samples; }

    /// The position of the first sample that arrived after @p time.
    size_t positionAt(double time) const;

    /// When the sample before @p position was over. The samples of one period of the server arrive
    /// at once: not before the period is over, but later if the recording process is held up. Of
    /// what arrived around the position, the earliest gives the time of all, by the sampling rate.
    double timeOf(double position) const;

    /// Whether the server's periods arrived as regularly from @p from to @p to as they are played.
    /// If not, the machine was held up, and neither the sound nor its times can be relied on.
    bool isRegular(double from, double to) const;

private:
    std::vector<double> m_arrivals; ///< of each fragment
    std::vector<float> m_samples;
};
