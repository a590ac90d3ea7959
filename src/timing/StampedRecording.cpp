// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/StampedRecording.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

constexpr size_t fragmentSize = std::tuple_size_v<decltype(Fragment::samples)>;
constexpr double fragmentDuration = 1000.0 * fragmentSize / recordingRate;

} // namespace

double monotonicMs()
{
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void StampedRecording::append(std::span<const Fragment> fragments)
{
    for (const Fragment &fragment : fragments) {
        m_arrivals.push_back(fragment.arrival);
        m_samples.insert(m_samples.end(), fragment.samples.begin(), fragment.samples.end());
    }
}

void StampedRecording::discardUntil(double time)
{
    const auto position = static_cast<std::ptrdiff_t>(positionAt(time));
    m_samples.erase(m_samples.begin(), m_samples.begin() + position);
    m_arrivals.erase(m_arrivals.begin(),
                     m_arrivals.begin() + position / static_cast<std::ptrdiff_t>(fragmentSize));
}

size_t StampedRecording::positionAt(double time) const
{
    const auto arrival = std::lower_bound(m_arrivals.begin(), m_arrivals.end(), time);
    return static_cast<size_t>(arrival - m_arrivals.begin()) * fragmentSize;
}

double StampedRecording::timeOf(double position) const
{
    constexpr auto around = static_cast<size_t>(300 / fragmentDuration);
    const size_t fragment = static_cast<size_t>(position) / fragmentSize;
    const size_t last = std::min(fragment + around, m_arrivals.size());
    double time = std::numeric_limits<double>::infinity();
    for (size_t i = fragment - std::min(fragment, around); i < last; ++i) {
        const double distance = position - static_cast<double>((i + 1) * fragmentSize);
        time = std::min(time, m_arrivals[i] + distance * 1000 / recordingRate);
    }
    return time;
}

bool StampedRecording::isRegular(double from, double to) const
{
    constexpr double tolerance = 2; // ms
    size_t first = 0;               // of the period
    for (size_t i = 0; i + 1 < m_arrivals.size() && m_arrivals[i] < to; ++i) {
        if (m_arrivals[i + 1] - m_arrivals[i] < fragmentDuration / 2)
            continue;
        const double played = static_cast<double>(i + 1 - first) * fragmentDuration;
        if (first > 0 && m_arrivals[i] > from &&
            std::abs(m_arrivals[i] - m_arrivals[first - 1] - played) > tolerance)
            return false;
        first = i + 1;
    }
    return true;
}
