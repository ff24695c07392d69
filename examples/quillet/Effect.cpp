// Effect.cpp
#include "Effect.h"

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

constexpr double kRampSeconds = 0.02;
constexpr float kTwoPi = 6.28318530718F;
// Below this the low-pass has faded out for every ear; further down the processor would be slow.
constexpr float kSilence = 1e-15F;

float FactorOfDecibels(float decibels)
{
    return std::pow(10.0F, decibels / 20.0F);
}

} // namespace

float Range::Clamp(float value) const
{
    return std::isnan(value) ? initial : std::clamp(value, minimum, maximum);
}

void CRamp::Jump(float value)
{
    m_value = m_target = value;
    m_left = 0;
}

void CRamp::MoveTo(float target, std::uint32_t frames)
{
    if (frames == 0) {
        Jump(target);
        return;
    }
    m_target = target;
    m_step = (target - m_value) / static_cast<float>(frames);
    m_left = frames;
}

CEffect::CEffect(double rate)
{
    const double sensible = rate >= 1000.0 && rate <= 1e6 ? rate : 48000.0;
    m_rampFrames = static_cast<std::uint32_t>(sensible * kRampSeconds);
    m_pole = 1.0F - std::exp(-kTwoPi * std::min(kPivotHertz / static_cast<float>(sensible), 0.5F));
}

void CEffect::Reset()
{
    m_low.fill(0.0F);
    m_fresh = true;
}

void CEffect::SetTargets(float gain, float tone)
{
    const std::uint32_t frames = m_fresh ? 0 : m_rampFrames;
    if (m_fresh || gain != m_gain)
        m_all.MoveTo(FactorOfDecibels(gain), frames);
    if (m_fresh || tone != m_tone) {
        m_bass.MoveTo(FactorOfDecibels(-kTiltDecibels * tone) - 1.0F, frames);
        m_treble.MoveTo(FactorOfDecibels(kTiltDecibels * tone) - 1.0F, frames);
    }
    m_gain = gain;
    m_tone = tone;
    m_fresh = false;
}

void CEffect::Process(float gain, float tone, const std::array<const float*, kChannels>& in,
                      const std::array<float*, kChannels>& out, std::uint32_t frames)
{
    if (frames == 0)
        return;
    SetTargets(kGainRange.Clamp(gain), kToneRange.Clamp(tone));
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const float all = m_all.Next();
        const float bass = m_bass.Next();
        const float treble = m_treble.Next();
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            const float sample = in[channel][frame];
            float& low = m_low[channel];
            low += m_pole * (sample - low);
            if (std::fabs(low) < kSilence)
                low = 0.0F;
            // With the tone in the middle both parts are multiplied by 0: the sample passes as it is.
            out[channel][frame] = all * (sample + bass * low + treble * (sample - low));
        }
    }
    for (float& low : m_low) {
        if (!std::isfinite(low)) // what a broken neighbour sends must not sound on for ever
            low = 0.0F;
    }
}

} // namespace quillet
