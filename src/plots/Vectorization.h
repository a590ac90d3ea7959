// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Written before a loop, this promises that no iteration reads what another one writes, so that
/// the compiler can work on several at a time where it could not prove that itself.
#if defined(__clang__)
#define OSTRINE_INDEPENDENT_ITERATIONS _Pragma("clang loop vectorize(assume_safety)")
// With little optimisation the compiler cannot follow the hint; that is no reason for a warning.
#pragma clang diagnostic ignored "-Wpass-failed"
#elif defined(__GNUC__)
#define OSTRINE_INDEPENDENT_ITERATIONS _Pragma("GCC ivdep")
#else
#define OSTRINE_INDEPENDENT_ITERATIONS
#endif

/// Where OSTRINE_HAS_AVX2_TARGET is defined, OSTRINE_TARGET_AVX2 before a function has it compiled,
/// with all that is inlined into it, for x86-64 processors with AVX2 and FMA, whatever the rest of
/// the program is compiled for. It may be called only if runs_avx2() is true.
#if defined(__GNUC__) && defined(__x86_64__)
#define OSTRINE_HAS_AVX2_TARGET
#define OSTRINE_TARGET_AVX2 [[gnu::target("avx2,fma")]]
/// Whether the processor has AVX2 and FMA.
inline bool runs_avx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}
#endif
