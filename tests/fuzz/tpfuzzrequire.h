#pragma once

#include <cstdio>
#include <cstdlib>

// Stops the fuzzer with the current input saved when a promised property does not hold,
// naming the line of the property.
inline void require(bool holds, const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (holds)
        return;
    std::fprintf(stderr, "property broken at %s:%d\n", file, line);
    std::abort();
}
