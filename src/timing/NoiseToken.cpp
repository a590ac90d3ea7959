// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/NoiseToken.h"

#include <QRandomGenerator>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// The samples of a token, by which its parts are found.
class TokenParts
{
public:
    explicit TokenParts(const QList<double> &token)
        : m_samples(token.begin(), token.end())
    {
        for (size_t i = 0; i < m_samples.size(); ++i)
            m_places.emplace_back(m_samples[i], i);
        std::sort(m_places.begin(), m_places.end());
    }

    size_t size() const { return m_samples.size(); }

    /// How many of the token's samples from @p start on @p sound begins with.
    size_t run(std::span<const float> sound, size_t start) const
    {
        const auto from = m_samples.begin() + static_cast<std::ptrdiff_t>(start);
        return static_cast<size_t>(
            std::mismatch(from, m_samples.end(), sound.begin(), sound.end()).first - from);
    }

    /// Where the token continues, from @p next on, at the beginning of @p sound. A few samples in a
    /// row are enough to recognise it; at @p next there may be fewer left.
    std::optional<size_t> resumption(std::span<const float> sound, size_t next) const
    {
        constexpr size_t enough = 8;
        if (run(sound, next) >= std::min(enough, size() - next))
            return next;
        const float sample = sound.front();
        for (auto place = std::upper_bound(m_places.begin(), m_places.end(), Place(sample, next));
             place != m_places.end() && place->first == sample; ++place) {
            if (run(sound, place->second) >= enough)
                return place->second;
        }
        return std::nullopt;
    }

private:
    using Place = std::pair<float, size_t>; ///< a sample and its index

    std::vector<float> m_samples;
    std::vector<Place> m_places; ///< sorted
};

} // namespace

QList<double> noise(qsizetype nSamples, quint32 seed)
{
    QRandomGenerator random(seed);
    QList<double> samples(nSamples);
    for (double &sample : samples)
        sample = (random.bounded(1, 16384) - 8192.5) / 16384;
    return samples;
}

QString HeardToken::text() const
{
    if (nSamples == 0)
        return "nothing of the token was heard";
    const QString how = whole               ? "whole"
                        : hasGap()          ? "with a gap"
                        : !fromItsBeginning ? "without its beginning"
                                            : "without its end";
    return QString("%1 of %2 samples heard, %3").arg(nSamples).arg(length).arg(how);
}

HeardToken findToken(std::span<const float> recording, const QList<double> &token)
{
    const TokenParts parts(token);
    HeardToken heard{.length = token.size()};
    size_t next = 0; // in the token
    for (size_t position = 0; position < recording.size() && next < parts.size();) {
        const std::span<const float> rest = recording.subspan(position);
        const std::optional<size_t> start = parts.resumption(rest, next);
        if (!start) {
            ++position;
            continue;
        }
        const size_t nHeard = parts.run(rest, *start);
        if (heard.nSamples == 0) {
            heard.fromItsBeginning = *start == 0;
            heard.first = position;
        }
        heard.nSamples += static_cast<qsizetype>(nHeard);
        position += nHeard;
        next = *start + nHeard;
        heard.last = position - 1;
    }
    heard.toItsEnd = heard.nSamples > 0 && next == parts.size();
    heard.whole = heard.nSamples == heard.length &&
                  heard.last - heard.first + 1 == static_cast<size_t>(heard.length);
    return heard;
}
