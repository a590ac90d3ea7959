// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plots/Assertion.h"
#include "plots/DynArray.h"
#include "plots/Oscillator.h"
#include "plots/Vectorization.h"

#include <algorithm>
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
///
/// Passes are numbered from 0; pass p makes transforms of 2^(p + 1) values. Most of the time goes
/// into moving values, so several passes share one sweep over the memory. From 512 values on, the
/// first 5 or 6 passes are done in a buffer, for a few transforms side by side, and the others in
/// pairs; with 8 to 256 values all passes are done in the buffer.
///
/// docs/transform.md explains the two parts that are hardest to follow, column_passes and combine,
/// with drawings and an example of 16 values.
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

    /// All passes on N >= 8 values, from x to f, for any processor of the architecture.
    void transform_baseline(T f[], const T x[]) const { transform(f, x); }
#ifdef OSTRINE_HAS_AVX2_TARGET
    /// The same for processors with AVX2 and FMA.
    OSTRINE_TARGET_AVX2 void transform_avx2(T f[], const T x[]) const
    {
        transform(f, x);
    }
#endif

    /// Passes 0 to @p passes - 1: from x to the transforms of 2^passes values in df. The values of
    /// one such transform are a column of x, seen as a matrix of 2^passes rows; W adjacent columns
    /// are transformed together. The number of columns must be a multiple of W, and W columns may
    /// have at most COLUMN_BUFFER values.
    template<int W>
    [[gnu::always_inline]] inline void column_passes(T df[], const T x[], int passes) const;

    /// Passes @p pass and pass + 1: from transforms of 2^pass values in sf to transforms of four
    /// times as many in df.
    [[gnu::always_inline]] inline void pass_pair(T df[], const T sf[], int pass) const;

    /// The block of a pass in _cos_table.
    const T *cos_of_pass(int pass) const;

    /// The oscillator of a pass, at angle 0.
    Oscillator<T> oscillator_of_pass(int pass) const;

    std::int64_t _length;
    std::int32_t _nbr_bits; ///< log2 of the length

    /// Entry i is 4 i with its _nbr_bits bits in reverse order, i < N/4. Empty below N = 4.
    DynArray<std::int64_t> _bit_rev_table;

    /// For each pass p from 3 on a block of cos(i pi / 2^p), i < 2^(p - 1), one after the other, so
    /// that the block of pass p starts at 2^(p - 1) - 4. Empty below N = 16.
    DynArray<T> _cos_table;

    /// N values between two sweeps over the memory.
    mutable DynArray<T> _scratch;

    /// Oscillator j has the step of pass TRIGO_BD_LIMIT + 1 + j, (pi / 2) / 2^(TRIGO_BD_LIMIT + j).
    DynArray<Oscillator<T>> _oscillators;

private:
    static constexpr int COLUMN_BUFFER = 512; ///< values that column_passes works on at a time
    static constexpr int CHUNK = 256;         ///< twiddle factors made at a time

    /// Room for the twiddle factors that an oscillator makes.
    struct OscillatorChunk
    {
        Oscillator<T> oscillator;
        T cosine[CHUNK];
        T sine[CHUNK];
    };

    /// Twiddle factors in sequence: cosine[j] and sine[-j], since the sine is read backwards from
    /// the table of cosines.
    struct Factors
    {
        const T *cosine;
        const T *sine;
    };

    void init_bit_rev_table();
    void init_cos_table();
    void init_oscillators();

    [[gnu::always_inline]] inline void transform(T f[], const T x[]) const;

    // The passes of column_passes, on rows of W values each.
    template<int W>
    [[gnu::always_inline]] inline void
    first_two_passes(T d[], const T x[], const std::int64_t rev[], std::int64_t rows) const;
    template<int W>
    [[gnu::always_inline]] static inline void third_pass(T d[], const T s[], std::int64_t rows);
    template<int W>
    [[gnu::always_inline]] inline void later_pass(T df[], const T sf[], std::int64_t rows,
                                                  int pass) const;

    // The parts of pass_pair.
    [[gnu::always_inline]] inline Factors factors(int pass, std::int64_t begin,
                                                  OscillatorChunk &chunk) const;
    [[gnu::always_inline]] static inline void combine_edges(T d[], const T s[], std::int64_t half);
    [[gnu::always_inline]] static inline void combine(T d[], const T s[], std::int64_t half,
                                                      std::int64_t begin, std::int64_t count,
                                                      Factors inner, Factors outer);
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

#ifdef OSTRINE_HAS_AVX2_TARGET
    if (runs_avx2()) {
        transform_avx2(f, x);
        return;
    }
#endif
    transform_baseline(f, x);
}

template<class T>
void FFTReal<T>::transform(T f[], const T x[]) const
{
    if (_nbr_bits < 9) {
        column_passes<1>(f, x, _nbr_bits);
        return;
    }
    // An even number of passes is left for the pairs, and the last pair has to write to f.
    const int column_bits = _nbr_bits % 2 == 0 ? 6 : 5;
    const bool odd_pairs = (_nbr_bits - column_bits) / 2 % 2 != 0;
    T *df = odd_pairs ? use_buffer() : f;
    T *sf = odd_pairs ? f : use_buffer();
    column_passes<8>(df, x, column_bits);
    for (int pass = column_bits; pass < _nbr_bits; pass += 2) {
        std::swap(df, sf);
        pass_pair(df, sf, pass);
    }
}

template<class T>
template<int W>
void FFTReal<T>::column_passes(T df[], const T x[], int passes) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(x != nullptr, "x != 0");
    assertThat(df != x, "df != x");

    alignas(64) T buffers[2][COLUMN_BUFFER];
    const std::int64_t rows = std::int64_t(1) << passes;
    const std::int64_t columns = _length / rows;
    const std::int64_t *const rev = &_bit_rev_table[0];
    for (std::int64_t column = 0; column < columns; column += W) {
        T *d = buffers[0];
        T *s = buffers[1];
        // Reversing bits twice changes nothing: what is read for the output at 4 rev[column] begins
        // in this column (drawn in docs/transform.md).
        first_two_passes<W>(d, x, rev + rev[column], rows);
        std::swap(d, s);
        third_pass<W>(d, s, rows);
        for (int pass = 3; pass < passes; ++pass) {
            std::swap(d, s);
            later_pass<W>(d, s, rows, pass);
        }
        for (int w = 0; w < W; ++w) {
            T *const target = df + 4 * rev[column + w];
            const T *const result = d + w;
            for (std::int64_t i = 0; i < rows; i += 4) {
                target[i] = result[i * W];
                target[i + 1] = result[(i + 1) * W];
                target[i + 2] = result[(i + 2) * W];
                target[i + 3] = result[(i + 3) * W];
            }
        }
    }
}

template<class T>
template<int W>
void FFTReal<T>::first_two_passes(T d[], const T x[], const std::int64_t rev[],
                                  std::int64_t rows) const
{
    const std::int64_t quarter = _length / 4;
    for (std::int64_t i = 0; i < rows / 4; ++i) {
        const T *const s = x + rev[i];
        OSTRINE_INDEPENDENT_ITERATIONS
        for (int w = 0; w < W; ++w) {
            const T b0 = s[w] + s[2 * quarter + w];
            const T b2 = s[quarter + w] + s[3 * quarter + w];
            d[w] = b0 + b2;
            d[W + w] = s[w] - s[2 * quarter + w];
            d[2 * W + w] = b0 - b2;
            d[3 * W + w] = s[quarter + w] - s[3 * quarter + w];
        }
        d += 4 * W;
    }
}

template<class T>
template<int W>
void FFTReal<T>::third_pass(T d[], const T s[], std::int64_t rows)
{
    constexpr T sqrt2_2 = std::numbers::sqrt2_v<T> / 2;
    for (std::int64_t i = 0; i < rows / 8; ++i) {
        OSTRINE_INDEPENDENT_ITERATIONS
        for (int w = 0; w < W; ++w) {
            const T re = (s[5 * W + w] - s[7 * W + w]) * sqrt2_2;
            const T im = (s[5 * W + w] + s[7 * W + w]) * sqrt2_2;
            d[w] = s[w] + s[4 * W + w];
            d[W + w] = s[W + w] + re;
            d[2 * W + w] = s[2 * W + w];
            d[3 * W + w] = s[W + w] - re;
            d[4 * W + w] = s[w] - s[4 * W + w];
            d[5 * W + w] = im + s[3 * W + w];
            d[6 * W + w] = s[6 * W + w];
            d[7 * W + w] = im - s[3 * W + w];
        }
        d += 8 * W;
        s += 8 * W;
    }
}

template<class T>
template<int W>
void FFTReal<T>::later_pass(T df[], const T sf[], std::int64_t rows, int pass) const
{
    const std::int64_t half = std::int64_t(1) << pass;
    const std::int64_t quarter = half / 2;
    const T *const cosine = cos_of_pass(pass);
    for (std::int64_t group = 0; group < rows; group += 2 * half) {
        T *const d = df + group * W;
        const T *const even = sf + group * W;
        const T *const odd = even + half * W;
        OSTRINE_INDEPENDENT_ITERATIONS
        for (int w = 0; w < W; ++w) {
            d[w] = even[w] + odd[w];
            d[half * W + w] = even[w] - odd[w];
            d[quarter * W + w] = even[quarter * W + w];
            d[(half + quarter) * W + w] = odd[quarter * W + w];
        }
        for (std::int64_t i = 1; i < quarter; ++i) {
            const T c = cosine[i];
            const T s = cosine[quarter - i];
            OSTRINE_INDEPENDENT_ITERATIONS
            for (int w = 0; w < W; ++w) {
                const T odd_re = odd[i * W + w];
                const T odd_im = odd[(quarter + i) * W + w];
                const T re = odd_re * c - odd_im * s;
                const T im = odd_re * s + odd_im * c;
                d[i * W + w] = even[i * W + w] + re;
                d[(half - i) * W + w] = even[i * W + w] - re;
                d[(half + i) * W + w] = im + even[(quarter + i) * W + w];
                d[(2 * half - i) * W + w] = im - even[(quarter + i) * W + w];
            }
        }
    }
}

template<class T>
void FFTReal<T>::pass_pair(T df[], const T sf[], int pass) const
{
    assertThat(df != nullptr, "df != 0");
    assertThat(sf != nullptr, "sf != 0");
    assertThat(df != sf, "df != sf");

    const std::int64_t half = std::int64_t(1) << pass;
    const std::int64_t quarter = half / 2;
    const std::int64_t count = std::min<std::int64_t>(quarter, CHUNK);
    OscillatorChunk inner_chunk;
    OscillatorChunk outer_chunk;
    for (std::int64_t begin = 0; begin < quarter; begin += count) {
        const Factors inner = factors(pass, begin, inner_chunk);
        const Factors outer = factors(pass + 1, begin, outer_chunk);
        for (std::int64_t group = 0; group < _length; group += 4 * half) {
            if (begin == 0)
                combine_edges(df + group, sf + group, half);
            combine(df + group, sf + group, half, begin, count, inner, outer);
        }
    }
}

/// The twiddle factors of a pass from number @p begin on. Those of an oscillator must be asked for
/// in sequence, CHUNK at a time, and lie in @p chunk.
template<class T>
typename FFTReal<T>::Factors FFTReal<T>::factors(int pass, std::int64_t begin,
                                                 OscillatorChunk &chunk) const
{
    if (pass <= TRIGO_BD_LIMIT) {
        const T *const block = cos_of_pass(pass);
        return {block + begin, block + (std::int64_t(1) << (pass - 1)) - begin};
    }
    if (begin == 0)
        chunk.oscillator = oscillator_of_pass(pass);
    for (int j = 0; j < CHUNK; ++j) {
        chunk.cosine[j] = chunk.oscillator.cos();
        chunk.sine[CHUNK - 1 - j] = chunk.oscillator.sin();
        chunk.oscillator.step();
    }
    return {chunk.cosine, chunk.sine + CHUNK - 1};
}

/// Combines the bins 0 and half/2 of the four transforms of one group, whose twiddle factors are 1,
/// i and the square root of i.
template<class T>
void FFTReal<T>::combine_edges(T d[], const T s[], std::int64_t half)
{
    constexpr T sqrt2_2 = std::numbers::sqrt2_v<T> / 2;
    const std::int64_t quarter = half / 2;
    const T *const s1 = s + half;
    const T *const s2 = s + 2 * half;
    const T *const s3 = s + 3 * half;
    d[0] = (s[0] + s1[0]) + (s2[0] + s3[0]);
    d[half] = s[0] - s1[0];
    d[2 * half] = (s[0] + s1[0]) - (s2[0] + s3[0]);
    d[3 * half] = s2[0] - s3[0];
    const T re = (s2[quarter] - s3[quarter]) * sqrt2_2;
    const T im = (s2[quarter] + s3[quarter]) * sqrt2_2;
    d[quarter] = s[quarter] + re;
    d[2 * half - quarter] = s[quarter] - re;
    d[2 * half + quarter] = im + s1[quarter];
    d[4 * half - quarter] = im - s1[quarter];
}

/// Combines the bins from @p begin (without bin 0) to begin + count - 1 of the four transforms of
/// @p half values of one group. Does both passes at once, so that the two transforms of 2 half
/// values between them are never stored. Their bins i and half - i are computed together; the
/// factor of the latter has the cosine and the sine of the former exchanged (docs/transform.md
/// shows why).
template<class T>
void FFTReal<T>::combine(T d[], const T s[], std::int64_t half, std::int64_t begin,
                         std::int64_t count, Factors inner, Factors outer)
{
    const T *const re = s + begin;
    const T *const im = s + half / 2 + begin;
    T *const up = d + begin;
    T *const down = d + half - begin;
    OSTRINE_INDEPENDENT_ITERATIONS
    for (std::int64_t j = begin == 0 ? 1 : 0; j < count; ++j) {
        const T c1 = inner.cosine[j];
        const T s1 = inner.sine[-j];
        const T c2 = outer.cosine[j];
        const T s2 = outer.sine[-j];

        const T b_re = re[half + j] * c1 - im[half + j] * s1;
        const T b_im = re[half + j] * s1 + im[half + j] * c1;
        const T even_re = re[j] + b_re;
        const T even_im = b_im + im[j];
        const T mirrored_even_re = re[j] - b_re;
        const T mirrored_even_im = b_im - im[j];

        const T d_re = re[3 * half + j] * c1 - im[3 * half + j] * s1;
        const T d_im = re[3 * half + j] * s1 + im[3 * half + j] * c1;
        const T odd_re = re[2 * half + j] + d_re;
        const T odd_im = d_im + im[2 * half + j];
        const T mirrored_odd_re = re[2 * half + j] - d_re;
        const T mirrored_odd_im = d_im - im[2 * half + j];

        const T turned_re = odd_re * c2 - odd_im * s2;
        const T turned_im = odd_re * s2 + odd_im * c2;
        up[j] = even_re + turned_re;
        down[half - j] = even_re - turned_re;
        up[2 * half + j] = turned_im + even_im;
        down[3 * half - j] = turned_im - even_im;

        const T mirrored_turned_re = mirrored_odd_re * s2 - mirrored_odd_im * c2;
        const T mirrored_turned_im = mirrored_odd_re * c2 + mirrored_odd_im * s2;
        down[-j] = mirrored_even_re + mirrored_turned_re;
        up[half + j] = mirrored_even_re - mirrored_turned_re;
        down[2 * half - j] = mirrored_turned_im + mirrored_even_im;
        up[3 * half + j] = mirrored_turned_im - mirrored_even_im;
    }
}

template<class T>
const T *FFTReal<T>::cos_of_pass(int pass) const
{
    assertThat(pass >= 3, "pass >= 3");
    assertThat(pass < _nbr_bits, "pass < _nbr_bits");
    return &_cos_table[(std::int64_t(1) << (pass - 1)) - 4];
}

template<class T>
Oscillator<T> FFTReal<T>::oscillator_of_pass(int pass) const
{
    assertThat(pass > TRIGO_BD_LIMIT, "pass > TRIGO_BD_LIMIT");
    assertThat(pass < _nbr_bits, "pass < _nbr_bits");
    Oscillator<T> oscillator = _oscillators[pass - TRIGO_BD_LIMIT - 1];
    oscillator.reset();
    return oscillator;
}
