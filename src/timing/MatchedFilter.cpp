// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/MatchedFilter.h"

#include "plots/FFTReal.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

namespace {

/// The end of a token by which it is found, 250 ms: what lies before may have drifted away from it
/// by the difference of two sampling rates.
constexpr size_t patternLength = 12000;

/// The correlation with noise that has nothing to do with the token varies by 1 / sqrt(n), whatever
/// its spectrum. Among the 10^5 places in a recording 4.5 times as much occurs by chance.
constexpr double chance = 6;

/// The strength of the direct sound, relative to an echo, from which on it is found.
constexpr double directSound = 0.7;

constexpr size_t shortestBlock = 480; ///< 10 ms
constexpr std::ptrdiff_t drift = 48;  ///< how far a block may lie from its place, 1 ms

std::vector<double> transform(const FFTReal<double> &fft, const std::vector<double> &values)
{
    std::vector<double> result(values.size());
    fft.do_fft(result.data(), values.data());
    return result;
}

/// The inverse of a transform, in the layout of FFTReal. The sum of the real and the imaginary part
/// of each bin is a transform that is, but for a factor, its own inverse.
std::vector<double> inverse(const FFTReal<double> &fft, const std::vector<double> &bins)
{
    const size_t n = bins.size();
    const auto sums = [n](const std::vector<double> &from) {
        std::vector<double> to(n);
        to[0] = from[0];
        to[n / 2] = from[n / 2];
        for (size_t k = 1; k < n / 2; ++k) {
            to[k] = from[k] + from[n / 2 + k];
            to[n - k] = from[k] - from[n / 2 + k];
        }
        return to;
    };
    std::vector<double> values = sums(transform(fft, sums(bins)));
    for (double &value : values)
        value /= static_cast<double>(n);
    return values;
}

/// The sums of the products of @p pattern with @p sound, for each place of its first sample.
std::vector<double> products(const std::vector<double> &sound, const std::vector<double> &pattern)
{
    const size_t n = std::bit_ceil(std::max<size_t>(sound.size() + pattern.size(), 4));
    const FFTReal<double> fft(static_cast<std::int64_t>(n));
    const auto padded = [&](std::vector<double> values) {
        values.resize(n);
        return transform(fft, values);
    };
    const std::vector<double> a = padded(sound);
    const std::vector<double> b = padded(pattern);
    std::vector<double> bins(n); // those of the sound by the conjugates of those of the pattern
    bins[0] = a[0] * b[0];
    bins[n / 2] = a[n / 2] * b[n / 2];
    for (size_t k = 1; k < n / 2; ++k) {
        const size_t i = n / 2 + k;
        bins[k] = a[k] * b[k] + a[i] * b[i];
        bins[i] = a[i] * b[k] - a[k] * b[i];
    }
    std::vector<double> result = inverse(fft, bins);
    result.resize(sound.size() - pattern.size() + 1);
    return result;
}

/// A recording, without its mean, whose parts are compared with parts of a token.
class Sound
{
public:
    explicit Sound(std::span<const float> recording)
        : m_samples(recording.begin(), recording.end())
        , m_energies(recording.size() + 1)
    {
        const double mean = std::reduce(m_samples.begin(), m_samples.end()) /
                            static_cast<double>(std::max<size_t>(m_samples.size(), 1));
        for (size_t i = 0; i < m_samples.size(); ++i) {
            m_samples[i] -= mean;
            m_energies[i + 1] = m_energies[i] + m_samples[i] * m_samples[i];
        }
    }

    size_t size() const { return m_samples.size(); }

    /// The amounts of the correlation coefficients with @p pattern, for each place of its
    /// beginning.
    std::vector<double> correlations(const std::vector<double> &pattern) const
    {
        std::vector<double> result = products(m_samples, pattern);
        const double energy = energyOf(pattern);
        for (size_t i = 0; i < result.size(); ++i)
            result[i] = coefficient(result[i], i, pattern.size(), energy);
        return result;
    }

    /// The largest of them around @p place. Only places at which all of the pattern lies in the
    /// recording are considered.
    double correlationAround(std::ptrdiff_t place, const std::vector<double> &pattern) const
    {
        const double energy = energyOf(pattern);
        const auto last = std::ssize(m_samples) - std::ssize(pattern);
        double best = 0;
        for (std::ptrdiff_t i = std::max<std::ptrdiff_t>(place - drift, 0);
             i <= std::min(place + drift, last); ++i) {
            const double product =
                std::inner_product(pattern.begin(), pattern.end(), m_samples.begin() + i, 0.0);
            best = std::max(best,
                            coefficient(product, static_cast<size_t>(i), pattern.size(), energy));
        }
        return best;
    }

private:
    static double energyOf(const std::vector<double> &pattern)
    {
        return std::inner_product(pattern.begin(), pattern.end(), pattern.begin(), 0.0);
    }

    double coefficient(double product, size_t place, size_t length, double energy) const
    {
        // What is left of the sum where there is silence is an error of rounding.
        const double here = m_energies[place + length] - m_energies[place];
        const bool isSilent = here <= 1e-12 * m_energies.back();
        return isSilent ? 0 : std::abs(product) / std::sqrt(here * energy);
    }

    std::vector<double> m_samples;
    std::vector<double> m_energies; ///< of the samples before each
};

/// The first peak that is nearly as high as the highest.
size_t firstPeak(const std::vector<double> &heights)
{
    const double enough = directSound * *std::max_element(heights.begin(), heights.end());
    auto peak = std::find_if(heights.begin(), heights.end(),
                             [enough](double height) { return height >= enough; });
    while (peak + 1 != heights.end() && *(peak + 1) > *peak)
        ++peak;
    return static_cast<size_t>(peak - heights.begin());
}

/// How far the top of the parabola through the peak and its neighbours is from the peak.
double parabolaTop(const std::vector<double> &heights, size_t peak)
{
    if (peak == 0 || peak + 1 == heights.size())
        return 0;
    const double before = heights[peak - 1];
    const double behind = heights[peak + 1];
    const double curvature = before + behind - 2 * heights[peak];
    return curvature < 0 ? (before - behind) / (2 * curvature) : 0;
}

/// What of @p token was heard in @p sound, where it ends at @p end and correlates by
/// @p correlation. A block must be so long that chance stays below half of that.
HeardToken heardBlocks(const Sound &sound, const std::vector<double> &token, double end,
                       double correlation)
{
    constexpr double clearly = 8 * 8; // chance is 1 / sqrt(n), and up to four times that
    const auto needed = static_cast<size_t>(clearly / (correlation * correlation));
    const size_t nBlocks = std::max<size_t>(token.size() / std::max(needed, shortestBlock), 1);
    const std::ptrdiff_t begin = std::lround(end) - std::ssize(token);

    HeardToken heard{.length = std::ssize(token)};
    for (size_t i = 0; i < nBlocks; ++i) {
        const size_t from = token.size() * i / nBlocks;
        const size_t to = token.size() * (i + 1) / nBlocks;
        const std::vector<double> block(token.begin() + static_cast<std::ptrdiff_t>(from),
                                        token.begin() + static_cast<std::ptrdiff_t>(to));
        const std::ptrdiff_t place = begin + static_cast<std::ptrdiff_t>(from);
        const bool isHeard = sound.correlationAround(place, block) >= correlation / 2;
        if (!isHeard)
            continue;
        if (heard.nSamples == 0)
            heard.first = static_cast<size_t>(std::max<std::ptrdiff_t>(place, 0));
        heard.nSamples += std::ssize(block);
        heard.last = static_cast<size_t>(begin + static_cast<std::ptrdiff_t>(to) - 1);
        heard.fromItsBeginning = heard.fromItsBeginning || i == 0;
        heard.toItsEnd = i + 1 == nBlocks;
    }
    heard.whole = heard.nSamples == heard.length;
    return heard;
}

} // namespace

std::optional<MatchedToken> matchToken(std::span<const float> recording, const QList<double> &token)
{
    const std::vector<double> played(token.begin(), token.end());
    const size_t length = std::min(played.size(), patternLength);
    if (length == 0 || recording.size() < length)
        return std::nullopt;
    const std::vector<double> pattern(played.end() - static_cast<std::ptrdiff_t>(length),
                                      played.end());
    const Sound sound(recording);
    const std::vector<double> correlations = sound.correlations(pattern);
    const size_t peak = firstPeak(correlations);
    const double correlation = correlations[peak];
    if (correlation < chance / std::sqrt(static_cast<double>(length)))
        return std::nullopt;
    MatchedToken found;
    found.correlation = correlation;
    found.end = static_cast<double>(peak + length) + parabolaTop(correlations, peak);
    found.token = heardBlocks(sound, played, found.end, correlation);
    return found;
}
