// tests/support/CountedMemory.h
//
// All memory of this process, counted as it was asked for, so that what stays behind is known to the
// byte. A test program that links CountedMemory.cpp has it; the sanitizers, which count for
// themselves, do not.
#pragma once

struct CountedMemory {
    long bytes;
    long blocks;
};

CountedMemory MemoryInUse();
