#pragma once

#include <cstdlib>

// Stops the fuzzer with the current input saved when a promised property does not hold.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
