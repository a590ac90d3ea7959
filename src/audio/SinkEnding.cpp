#include "audio/SinkEnding.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row
{
    QVersionNumber since;
    SinkEnding ending;
};

} // namespace

SinkEnding sinkEnding(const QVersionNumber &qt)
{
    // Measured against the recorded monitor of a virtual sink:
    // - Up to 6.6 the sink is idle when its source is exhausted: at a tick of its 20 ms timer, with
    //   up to its buffer of 145 ms unplayed, which stop() discards (56 to 64 % of a token of 250 ms
    //   were heard). No silence cures that for every token length, because the tick that brings
    //   idle moves against the token's end: the stream is followed instead. The silence keeps it
    //   from running dry, even when the program is held up for a moment at the token's end.
    // - 6.7 and 6.8 are idle about 10 ms before the end and stop() plays the rest: it returns about
    //   6 ms after the end. Every 12 ms of silence would move that by 20 ms.
    // - Later ones are idle about 10 ms before the end and lose the last partial quantum; with
    //   12 ms behind it the token is whole and stop() returns 1 to 2 ms after its end.
    static const Row rows[] = {
        {QVersionNumber(6, 0), {0.500, true}},
        {QVersionNumber(6, 7), {0.0, false}},
        {QVersionNumber(6, 9), {0.012, false}},
    };
    const auto next = std::upper_bound(
        std::begin(rows) + 1, std::end(rows), qt,
        [](const QVersionNumber &version, const Row &row) { return version < row.since; });
    return std::prev(next)->ending;
}
