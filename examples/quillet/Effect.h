// Effect.h
//
// The sound of the effect: a gain, and a tone that tilts the spectrum about one frequency. Knows
// nothing of plug-in formats.
#pragma once

#include <array>
#include <cstdint>

namespace quillet {

constexpr int kChannels = 2;

/// The range of a control.
struct Range {
    float minimum, maximum, initial;
    /// Answers `value` moved into the range; `initial` for what is no number.
    float Clamp(float value) const;
};

constexpr Range kGainRange = {-24.0F, 24.0F, 0.0F}; ///< Decibels.
constexpr Range kToneRange = {-1.0F, 1.0F, 0.0F};   ///< -1 dark, 0 as it came, 1 bright.
/// How far the ends of the spectrum are moved at either end of the tone's range: bass and treble by
/// this, in opposite directions.
constexpr float kTiltDecibels = 9.0F;
/// About which frequency the tone tilts, in hertz.
constexpr float kPivotHertz = 700.0F;

/// Moves to a new value in a straight line, so that a turned knob is not heard as clicks, and
/// arrives at it exactly.
class CRamp {
public:
    void Jump(float value);
    /// Begins to move; from where it is, `frames` long.
    void MoveTo(float target, std::uint32_t frames);
    float Next()
    {
        if (m_left == 0)
            return m_value;
        --m_left;
        m_value = m_left == 0 ? m_target : m_value + m_step;
        return m_value;
    }

private:
    float m_value = 0, m_target = 0, m_step = 0;
    std::uint32_t m_left = 0;
};

/// Allocates nothing and waits for nothing; safe on an audio thread. One thread at a time.
class CEffect {
public:
    /// @param rate  frames a second; what is no sensible rate counts as 48,000.
    explicit CEffect(double rate);
    /// Forgets the sound so far; the next Process takes its settings at once.
    void Reset();
    /// Processes `frames` of each channel; an output may be the input of the same channel.
    /// @param gain  decibels; moved into its range, as `tone` is.
    void Process(float gain, float tone, const std::array<const float*, kChannels>& in,
                 const std::array<float*, kChannels>& out, std::uint32_t frames);

private:
    void SetTargets(float gain, float tone);

    std::uint32_t m_rampFrames;
    float m_pole;                         // how much of the difference the low-pass takes each frame
    std::array<float, kChannels> m_low{}; // its state
    CRamp m_all, m_bass, m_treble;        // factors; bass and treble less one
    float m_gain = 0, m_tone = 0;
    bool m_fresh = true;
};

} // namespace quillet
