// SPDX-License-Identifier: GPL-3.0-or-later
// Compares the transform of each kind of number with its definition. This program needs nothing but
// the standard library, so that any compiler can build it for any processor; it prints how close
// the results are and ends with 1 when they are wrong.

#include "plots/FFTReal.h"
#include "support/ExactTransform.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

constexpr int highestBits = 16;       ///< of the lengths, all of which are checked from 2^0 on
constexpr int highestBitsOfAll = 10;  ///< up to here noise is compared in every bin
constexpr std::int64_t someBins = 17; ///< further on in so many

/// The transform with its version for any processor in sight.
template<class T>
class OpenTransform : public FFTReal<T>
{
public:
    using FFTReal<T>::FFTReal;
    using FFTReal<T>::transform_baseline;
};

/// An input and what comes of it. The numbers are of the shortest kind, so that all kinds share it.
struct Case
{
    const char *name;
    int bits;
    std::vector<float> input;
    std::vector<std::int64_t> bins;
    std::vector<ExactBin> exact;
};

/// Noise from -1 to 1; the generator's own numbers are the same everywhere.
Case noise(const ExactTurn &turn, int bits)
{
    std::mt19937 generator(static_cast<unsigned>(bits));
    Case noise{"noise", bits, {}, {}, {}};
    for (std::int64_t n = 0; n < turn.length(); ++n) {
        const auto draw = static_cast<std::int32_t>(generator() >> 8);
        noise.input.push_back(static_cast<float>(draw - (1 << 23)) / (1 << 23));
    }
    // Spread over all bins with both ends; the odd step takes in bins of every kind.
    const std::int64_t half = turn.length() / 2;
    const std::int64_t step = bits <= highestBitsOfAll ? 1 : half / (someBins - 1) + 1;
    for (std::int64_t k = 0; k < half; k += step)
        noise.bins.push_back(k);
    noise.bins.push_back(half);
    for (const std::int64_t k : noise.bins)
        noise.exact.push_back(exactBin(turn, noise.input.data(), k));
    return noise;
}

/// A one among zeros, which turns the phase from bin to bin, so that each one is known.
Case impulse(const ExactTurn &turn, int bits)
{
    const std::int64_t place = turn.length() * 5 / 8 + (bits > 3 ? 1 : 0);
    Case impulse{"impulse", bits, {}, {}, {}};
    for (std::int64_t n = 0; n < turn.length(); ++n)
        impulse.input.push_back(n == place ? 1.0F : 0.0F);
    for (std::int64_t k = 0; k <= turn.length() / 2; ++k) {
        impulse.bins.push_back(k);
        impulse.exact.push_back({turn.cos(k * place), turn.sin(k * place)});
    }
    return impulse;
}

/// Whether the transform of numbers of kind T is right in @p cases, in the version for this
/// processor and in that for all.
template<class T>
bool right(const char *kind, const std::vector<Case> &cases)
{
    bool allRight = true;
    double largestPart = 0;
    const auto compare = [&](const Case &c, const char *version, const std::vector<T> &output) {
        const auto length = static_cast<std::int64_t>(output.size());
        const double error = relativeError(output.data(), length, c.bins, c.exact);
        const double allowed = tolerance<T>(c.bits);
        if (!(error <= allowed)) { // NaN is wrong too
            std::printf("%s, %s of %lld values, %s: relative error %.2g, allowed is %.2g\n", kind,
                        c.name, static_cast<long long>(length), version, error, allowed);
            allRight = false;
        }
        largestPart = std::max(largestPart, error / allowed);
    };
    for (const Case &c : cases) {
        const std::vector<T> input(c.input.begin(), c.input.end());
        const std::vector<T> unwritten(input.size(), std::numeric_limits<T>::quiet_NaN());
        const OpenTransform<T> transform(static_cast<std::int64_t>(input.size()));

        std::vector<T> output = unwritten;
        transform.do_fft(output.data(), input.data());
        compare(c, "for this processor", output);
        if (c.bits >= 3) {
            output = unwritten;
            transform.transform_baseline(output.data(), input.data());
            compare(c, "for any processor", output);
        }
    }
    std::printf("%s: %s, the largest error is %.2g of what is allowed\n", kind,
                allRight ? "right" : "WRONG", largestPart);
    return allRight;
}

} // namespace

int main()
{
    std::vector<Case> cases;
    for (int bits = 0; bits <= highestBits; ++bits) {
        const ExactTurn turn(std::int64_t(1) << bits);
        cases.push_back(noise(turn, bits));
        cases.push_back(impulse(turn, bits));
    }
    const bool allRight[] = {right<float>("float", cases), right<double>("double", cases),
                             right<long double>("long double", cases)};
    return std::all_of(std::begin(allRight), std::end(allRight), [](bool r) { return r; }) ? 0 : 1;
}
