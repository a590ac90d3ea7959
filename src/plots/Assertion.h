// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process by abort() unless @p holds, in every build type, after printing to the standard
/// error what was asserted (@p text), in which function and in which file. The last two are the
/// caller's.
inline void assertThat(bool holds, const char *text, const char *function = __builtin_FUNCTION(),
                       const char *file = __builtin_FILE())
{
    if (!holds) {
        std::fprintf(stderr, "Assertion failed: %s, function %s, file %s\n", text, function, file);
        std::abort();
    }
}
