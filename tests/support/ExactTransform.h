// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

// The transform by its definition, to compare FFTReal with, and how close the two must be. Only the
// standard library is needed, as for FFTReal.

using Exact = long double;

/// A sum that keeps what its additions round away: long double is checked too, and no longer kind
/// of number exists to check it with.
class ExactSum
{
public:
    void add(Exact summand)
    {
        const Exact sum = m_sum + summand;
        m_lost +=
            std::abs(m_sum) < std::abs(summand) ? summand - sum + m_sum : m_sum - sum + summand;
        m_sum = sum;
    }
    Exact value() const { return m_sum + m_lost; }

private:
    Exact m_sum = 0;
    Exact m_lost = 0;
};

/// A bin as FFTReal gives it.
struct ExactBin
{
    Exact re = 0;
    Exact minusIm = 0;
};

/// Cosine and sine of the angles n 2 pi / N, N being a power of two.
class ExactTurn
{
public:
    explicit ExactTurn(std::int64_t length)
        : m_length(length)
    {
        for (std::int64_t n = 0; n < length; ++n) {
            const Exact angle =
                2 * std::numbers::pi_v<Exact> * static_cast<Exact>(n) / static_cast<Exact>(length);
            m_cos.push_back(std::cos(angle));
            m_sin.push_back(std::sin(angle));
        }
    }

    std::int64_t length() const { return m_length; }
    Exact cos(std::int64_t n) const { return m_cos[index(n)]; }
    Exact sin(std::int64_t n) const { return m_sin[index(n)]; }

private:
    std::size_t index(std::int64_t n) const { return static_cast<std::size_t>(n & (m_length - 1)); }

    std::int64_t m_length;
    std::vector<Exact> m_cos;
    std::vector<Exact> m_sin;
};

/// Bin @p k of the transform of the turn.length() values at @p x.
template<class T>
ExactBin exactBin(const ExactTurn &turn, const T x[], std::int64_t k)
{
    ExactSum re;
    ExactSum minusIm;
    for (std::int64_t n = 0; n < turn.length(); ++n) {
        re.add(x[n] * turn.cos(n * k));
        minusIm.add(x[n] * turn.sin(n * k));
    }
    return {re.value(), minusIm.value()};
}

/// How far the transform of @p length values at @p f is from @p exact in the bins @p bins: the root
/// of the sum of the squared differences, divided by that of the squared exact values.
template<class T>
double relativeError(const T f[], std::int64_t length, const std::vector<std::int64_t> &bins,
                     const std::vector<ExactBin> &exact)
{
    Exact difference = 0;
    Exact magnitude = 0;
    const auto add = [&](T value, Exact expected) {
        difference += (value - expected) * (value - expected);
        magnitude += expected * expected;
    };
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const std::int64_t k = bins[i];
        add(f[k], exact[i].re);
        if (k > 0 && k < length / 2)
            add(f[length / 2 + k], exact[i].minusIm);
    }
    return static_cast<double>(std::sqrt(difference / magnitude));
}

/// The largest relative error a transform of 2^@p bits numbers of kind T may have. An oscillator's
/// error grows with its steps, of which the last pass makes 2^(bits - 2).
template<class T>
double tolerance(int bits)
{
    const bool fromTables = bits <= 13; // TRIGO_BD_LIMIT + 1
    return static_cast<double>(std::numeric_limits<T>::epsilon()) *
           (fromTables ? 0.5 * (bits + 1) : std::ldexp(1.0, bits - 5));
}
