// bench/PreferencesBench.h
//
// What the benchmarks of the preference store share.
#pragma once

#include <string>

/// Answers the folder that this run has for itself, on the disk that is measured.
const std::string& BenchFolder();

/// Registers the other stores, as far as their packages are installed.
void RegisterPeers();
