// tests/support/CountedMemory.h
//
// All memory of a test program that links CountedMemory.cpp, counted as it was asked for, so that what
// stays behind is known to the byte. Under the sanitizers, which count for themselves, all is 0.
#pragma once

struct CountedMemory {
    long bytes;
    long blocks;
};

CountedMemory MemoryInUse();
