// Ports.h
//
// The plug-in's names and ports, as quillet.ttl declares them.
#pragma once

#include <cstdint>

namespace quillet {

constexpr const char* kPluginUri = "https://corvane.example/plugins/quillet";
constexpr const char* kUiUri = "https://corvane.example/plugins/quillet#ui";

enum Port : std::uint32_t {
    kGainPort,
    kTonePort,
    kFirstInput,
    kFirstOutput = kFirstInput + 2,
    kPortCount = kFirstOutput + 2
};

} // namespace quillet
