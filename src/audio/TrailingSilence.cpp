#include "audio/TrailingSilence.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row
{
    QVersionNumber since;
    double seconds;
};

} // namespace

double trailingSilence(const QVersionNumber &qt)
{
    // Measured with tokens of 250 ms against the recorded monitor of a virtual sink:
    // - Up to 6.6 the sink is idle when its source is exhausted, with most of its buffer of about
    //   145 ms unplayed, and stop() discards that: 56 to 64 % of a token are heard. With 110 ms
    //   behind it the token is whole and idle comes 5 to 10 ms after its end.
    // - 6.7 and 6.8 are idle about 10 ms early and stop() drains the rest, so that it returns about
    //   6 ms after the end; every 12 ms of silence would move the end of the play by 20 ms.
    // - Later ones are idle about 10 ms early and lose the last partial quantum; with 12 ms behind
    //   it the token is whole and the play ends 1 to 2 ms after it.
    static const Row rows[] = {
        {QVersionNumber(6, 0), 0.110},
        {QVersionNumber(6, 7), 0.0},
        {QVersionNumber(6, 9), 0.012},
    };
    const auto next = std::upper_bound(
        std::begin(rows) + 1, std::end(rows), qt,
        [](const QVersionNumber &version, const Row &row) { return version < row.since; });
    return std::prev(next)->seconds;
}
