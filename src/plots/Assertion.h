// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <cstdlib>

/// Unless @p holds, prints what was asserted (@p text) and the caller's function and file to the
/// standard error, and ends the process by abort(). It does so in every build type.
inline void assertThat(bool holds, const char *text, const char *function = __builtin_FUNCTION(),
                       const char *file = __builtin_FILE())
{
    if (!holds) {
        std::fprintf(stderr, "Assertion failed: %s, function %s, file %s\n", text, function, file);
        std::abort();
    }
}
