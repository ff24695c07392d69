// Plugin.cpp
//
// The effect as an LV2 plug-in. The window is a library of its own (Ui.cpp), so that whoever scans
// or runs the effect alone loads no display library.
#include <array>
#include <new>

#include "Effect.h"
#include "Ports.h"
#include <lv2/core/lv2.h>

namespace {

using namespace quillet;

struct Instance {
    explicit Instance(double rate) : effect(rate) {}

    CEffect effect;
    std::array<void*, kPortCount> ports{};
};

LV2_Handle Instantiate(const LV2_Descriptor*, double rate, const char*, const LV2_Feature* const*)
{
    return new (std::nothrow) Instance(rate);
}

void ConnectPort(LV2_Handle handle, std::uint32_t port, void* data)
{
    if (port < kPortCount)
        static_cast<Instance*>(handle)->ports[port] = data;
}

void Activate(LV2_Handle handle)
{
    static_cast<Instance*>(handle)->effect.Reset();
}

float Control(const Instance& instance, Port port, const Range& range)
{
    const void* const data = instance.ports[port];
    return data ? *static_cast<const float*>(data) : range.initial;
}

void Run(LV2_Handle handle, std::uint32_t frames)
{
    Instance& instance = *static_cast<Instance*>(handle);
    std::array<const float*, kChannels> in{};
    std::array<float*, kChannels> out{};
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        in[channel] = static_cast<const float*>(instance.ports[kFirstInput + channel]);
        out[channel] = static_cast<float*>(instance.ports[kFirstOutput + channel]);
        if (!in[channel] || !out[channel])
            return;
    }
    instance.effect.Process(Control(instance, kGainPort, kGainRange), Control(instance, kTonePort, kToneRange), in, out,
                            frames);
}

void Cleanup(LV2_Handle handle)
{
    delete static_cast<Instance*>(handle);
}

const LV2_Descriptor kDescriptor = {kPluginUri, Instantiate, ConnectPort, Activate, Run, nullptr, Cleanup, nullptr};

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index)
{
    return index == 0 ? &kDescriptor : nullptr;
}
