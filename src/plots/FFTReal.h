#pragma once

#include "plots/Assertion.h"
#include "plots/DynArray.h"
#include "plots/Oscillator.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

/// Whether @p x is a power of two. Asserts that it is positive.
inline bool FFTReal_is_pow2(std::int64_t x)
{
    assertThat(x > 0, "x > 0");
    return (x & (x - 1)) == 0;
}

/// The forward discrete Fourier transform of real numbers whose count N is a power of two up to
/// 2^30: X[k] = sum over n of x[n] exp(-2 pi i k n / N), without any scaling.
///
/// It is a radix-2 transform decimated in time. The transform of N values follows from those of the
/// values with even and with odd index, E and O: X[k] = E[k] + exp(-2 pi i k / N) O[k]. Since the
/// input is real, X[N - k] is the conjugate of X[k], so that N numbers hold a transform:
///
///     at 0             the real part of bin 0 (the sum of the input)
///     at k             the real part of bin k, 1 <= k < N/2
///     at N/2           the real part of bin N/2
///     at N/2 + k       minus the imaginary part of bin k, 1 <= k < N/2
///
/// The tables are built by the constructor; do_fft allocates nothing. An object holds the scratch
/// space of its transform and therefore serves one thread at a time.
template<class T>
class FFTReal
{
public:
    static constexpr int MAX_BIT_DEPTH = 30;  ///< the largest log2 of a length
    static constexpr int TRIGO_BD_LIMIT = 12; ///< the last pass that reads its factors from a table

    /// A transform of @p length values. Asserts that @p length is a power of two from 1 to
    /// 2^MAX_BIT_DEPTH before any memory is taken.
    explicit FFTReal(std::int64_t length);
    virtual ~FFTReal() = default;

    /// Transforms the N values at @p x into the N values at @p f, laid out as described above, and
    /// leaves x as it is. Asserts that neither is null or the object's own scratch space and that
    /// they differ.
    void do_fft(T f[], const T x[]) const;

protected:
    /// The scratch space: N values.
    T *use_buffer() const { return &_scratch[0]; }

    /// Passes 1 and 2: from x in bit-reversed order to transforms of 4 values in df.
    void first_two_passes(T df[], const T x[]) const;

    /// Pass 3: from transforms of 4 values in sf to transforms of 8 in df.
    void third_pass(T df[], const T sf[]) const;

    /// Pass number @p pass, counted from 0: from transforms of 2^pass values in sf to transforms of
    /// twice as many in df.
    void later_pass(T df[], const T sf[], int pass) const;

    /// The two forms of the above, by the origin of the twiddle factors.
    void table_pass(T df[], const T sf[], int pass) const;
    void oscillator_pass(T df[], const T sf[], int pass) const;

    std::int64_t _length;
    std::int32_t _nbr_bits; ///< log2 of the length

    /// Entry i is 4 i with its _nbr_bits bits in reverse order, i < N/4. Empty below N = 4.
    DynArray<std::int64_t> _bit_rev_table;

    /// For each pass p from 3 on a block of cos(i pi / 2^p), i < 2^(p - 1), one after the other, so
    /// that the block of pass p starts at 2^(p - 1) - 4. Empty below N = 16.
    DynArray<T> _cos_table;

    mutable DynArray<T> _scratch;

    /// Number j has the step of pass TRIGO_BD_LIMIT + 1 + j, (pi / 2) / 2^(TRIGO_BD_LIMIT + j).
    DynArray<Oscillator<T>> _oscillators;

private:
    void init_bit_rev_table();
    void init_cos_table();
    void init_oscillators();

    /// The block of a pass in _cos_table.
    const T *cos_of_pass(int pass) const
    {
        return &_cos_table[(std::int64_t(1) << (pass - 1)) - 4];
    }
};

template<class T>
FFTReal<T>::FFTReal(std::int64_t length)
    : _length(length)
    , _nbr_bits(length > 0 ? 64 - std::countl_zero(static_cast<std::uint64_t>(length - 1)) : 0)
{
    DynArray<T>::check_size(length);
    assertThat(FFTReal_is_pow2(length), "FFTReal_is_pow2 (length)");
    assertThat(_nbr_bits <= MAX_BIT_DEPTH, "_nbr_bits <= MAX_BIT_DEPTH");
    _scratch.resize(length);
    init_bit_rev_table();
    init_cos_table();
    init_oscillators();
}

template<class T>
void FFTReal<T>::init_bit_rev_table()
{
    if (_nbr_bits < 2)
        return;
    _bit_rev_table.resize(_length / 4);
    // The reverse of 2 i is half that of i; the lowest bit of i becomes the highest of the entry,
    // which as the reverse of a multiple of four is below N/4.
    _bit_rev_table[0] = 0;
    for (std::int64_t i = 1; i < _bit_rev_table.size(); ++i)
        _bit_rev_table[i] = _bit_rev_table[i / 2] / 2 + i % 2 * (_length / 8);
}

template<class T>
void FFTReal<T>::init_cos_table()
{
    if (_nbr_bits <= 3)
        return;
    _cos_table.resize(_length / 2 - 4);
    std::int64_t pos = 0;
    for (int pass = 3; pass < _nbr_bits; ++pass) {
        const std::int64_t count = std::int64_t(1) << (pass - 1);
        const T step = std::numbers::pi_v<T> / static_cast<T>(2 * count);
        for (std::int64_t i = 0; i < count; ++i)
            _cos_table[pos++] = std::cos(static_cast<T>(i) * step);
    }
}

template<class T>
void FFTReal<T>::init_oscillators()
{
    if (_nbr_bits <= TRIGO_BD_LIMIT)
        return;
    _oscillators.resize(_nbr_bits - TRIGO_BD_LIMIT);
    for (std::int64_t j = 0; j < _oscillators.size(); ++j) {
        const std::int64_t steps = std::int64_t(1) << (TRIGO_BD_LIMIT + j);
        _oscillators[j].set_step(std::numbers::pi_v<T> / 2 / static_cast<T>(steps));
    }
}

template<class T>
void FFTReal<T>::do_fft(T f[], const T x[]) const
{
    assertThat(f != nullptr, "f != 0");
    assertThat(f != use_buffer(), "f != use_buffer ()");
    assertThat(x != nullptr, "x != 0");
    assertThat(x != use_buffer(), "x != use_buffer ()");
    assertThat(x != f, "x != f");

    switch (_nbr_bits) {
    case 0:
        f[0] = x[0];
        return;
    case 1:
        f[0] = x[0] + x[1];
        f[1] = x[0] - x[1];
        return;
    case 2: {
        f[1] = x[0] - x[2];
        f[3] = x[1] - x[3];
        const T b0 = x[0] + x[2];
        const T b2 = x[1] + x[3];
        f[0] = b0 + b2;
        f[2] = b0 - b2;
        return;
    }
    default:
        break;
    }

    // The last pass has to write to f.
    T *df = _nbr_bits % 2 != 0 ? use_buffer() : f;
    T *sf = _nbr_bits % 2 != 0 ? f : use_buffer();
    first_two_passes(df, x);
    std::swap(df, sf);
    third_pass(df, sf);
    for (int pass = 3; pass < _nbr_bits; ++pass) {
        std::swap(df, sf);
        later_pass(df, sf, pass);
    }
}

template<class T>
void FFTReal<T>::first_two_passes(T df[], const T x[]) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(x != nullptr, "x != 0");
    assertThat(df != x, "df != x");

    const std::int64_t *const rev = &_bit_rev_table[0];
    const std::int64_t quarter = _length / 4;
    for (std::int64_t i = 0; i < quarter; ++i) {
        const T *const source = x + rev[i];
        const T x0 = source[0];
        const T x1 = source[quarter];
        const T x2 = source[2 * quarter];
        const T x3 = source[3 * quarter];
        T *const d = df + 4 * i;
        d[0] = (x0 + x2) + (x1 + x3);
        d[1] = x0 - x2;
        d[2] = (x0 + x2) - (x1 + x3);
        d[3] = x1 - x3;
    }
}

template<class T>
void FFTReal<T>::third_pass(T df[], const T sf[]) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(sf != nullptr, "sf != 0");
    assertThat(df != sf, "df != sf");

    constexpr T sqrt2_2 = std::numbers::sqrt2_v<T> / 2;
    for (std::int64_t group = 0; group < _length; group += 8) {
        const T *const s = sf + group;
        T *const d = df + group;
        d[0] = s[0] + s[4];
        d[4] = s[0] - s[4];
        d[2] = s[2];
        d[6] = s[6];
        const T re = (s[5] - s[7]) * sqrt2_2;
        const T im = (s[5] + s[7]) * sqrt2_2;
        d[1] = s[1] + re;
        d[3] = s[1] - re;
        d[5] = im + s[3];
        d[7] = im - s[3];
    }
}

template<class T>
void FFTReal<T>::later_pass(T df[], const T sf[], int pass) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(sf != nullptr, "sf != 0");
    assertThat(df != sf, "df != sf");
    assertThat(pass >= 3, "pass >= 3");
    assertThat(pass < _nbr_bits, "pass < _nbr_bits");

    if (pass <= TRIGO_BD_LIMIT)
        table_pass(df, sf, pass);
    else
        oscillator_pass(df, sf, pass);
}

template<class T>
void FFTReal<T>::table_pass(T df[], const T sf[], int pass) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(sf != nullptr, "sf != 0");
    assertThat(df != sf, "df != sf");
    assertThat(pass >= 3, "pass >= 3");
    assertThat(pass < _nbr_bits, "pass < _nbr_bits");

    const std::int64_t half = std::int64_t(1) << pass;
    const std::int64_t quarter = half / 2;
    const T *const cosine = cos_of_pass(pass);
    for (std::int64_t group = 0; group < _length; group += 2 * half) {
        const T *const s = sf + group;
        T *const d = df + group;
        d[0] = s[0] + s[half];
        d[half] = s[0] - s[half];
        d[quarter] = s[quarter];
        d[half + quarter] = s[half + quarter];
        for (std::int64_t i = 1; i < quarter; ++i) {
            const T c = cosine[i];
            const T sn = cosine[quarter - i];
            const T re = s[half + i] * c - s[half + quarter + i] * sn;
            const T im = s[half + i] * sn + s[half + quarter + i] * c;
            d[i] = s[i] + re;
            d[half - i] = s[i] - re;
            d[half + i] = im + s[quarter + i];
            d[2 * half - i] = im - s[quarter + i];
        }
    }
}

template<class T>
void FFTReal<T>::oscillator_pass(T df[], const T sf[], int pass) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(sf != nullptr, "sf != 0");
    assertThat(df != sf, "df != sf");
    assertThat(pass > TRIGO_BD_LIMIT, "pass > TRIGO_BD_LIMIT");
    assertThat(pass < _nbr_bits, "pass < _nbr_bits");

    const std::int64_t half = std::int64_t(1) << pass;
    const std::int64_t quarter = half / 2;
    Oscillator<T> oscillator = _oscillators[pass - TRIGO_BD_LIMIT - 1];
    for (std::int64_t group = 0; group < _length; group += 2 * half) {
        const T *const s = sf + group;
        T *const d = df + group;
        d[0] = s[0] + s[half];
        d[half] = s[0] - s[half];
        d[quarter] = s[quarter];
        d[half + quarter] = s[half + quarter];
        oscillator.reset();
        for (std::int64_t i = 1; i < quarter; ++i) {
            oscillator.step();
            const T c = oscillator.cos();
            const T sn = oscillator.sin();
            const T re = s[half + i] * c - s[half + quarter + i] * sn;
            const T im = s[half + i] * sn + s[half + quarter + i] * c;
            d[i] = s[i] + re;
            d[half - i] = s[i] - re;
            d[half + i] = im + s[quarter + i];
            d[2 * half - i] = im - s[quarter + i];
        }
    }
}
