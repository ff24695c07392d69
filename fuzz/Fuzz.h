// fuzz/Fuzz.h
//
// What the targets share.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stdlib.h>

/// Ends the run, so that the fuzzer keeps the input, unless `holds`.
inline void Require(bool holds)
{
    if (!holds)
        abort();
}
