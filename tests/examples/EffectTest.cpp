// tests/examples/EffectTest.cpp
//
// The sound of the example plug-in: exact where it is to be exact, and silent where it was silent.
#include "examples/quillet/Effect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using namespace quillet;

constexpr double kRate = 48000.0;
constexpr double kPi = 3.14159265358979;
using Sound = std::vector<float>;

// Processes the same sound on both channels, in blocks of `block`; answers the left one.
Sound Process(CEffect& effect, float gain, float tone, const Sound& in, std::size_t block = 512)
{
    Sound left = in;
    Sound right = in;
    for (std::size_t at = 0; at < in.size(); at += block) {
        const auto frames = static_cast<std::uint32_t>(std::min(block, in.size() - at));
        effect.Process(gain, tone, {left.data() + at, right.data() + at}, {left.data() + at, right.data() + at},
                       frames);
    }
    EXPECT_EQ(std::memcmp(left.data(), right.data(), left.size() * sizeof(float)),
              0); // as bytes: a NaN differs from itself
    return left;
}

Sound Impulse(std::size_t length)
{
    Sound sound(length, 0.0F);
    sound.front() = 1.0F;
    return sound;
}

// How loud a frequency comes out, in decibels, after the effect's answer to an impulse.
double DecibelsAt(const Sound& response, double hertz)
{
    std::complex<double> sum = 0;
    for (std::size_t frame = 0; frame < response.size(); ++frame)
        sum += static_cast<double>(response[frame]) *
               std::polar(1.0, -2.0 * kPi * hertz * static_cast<double>(frame) / kRate);
    return 20.0 * std::log10(std::abs(sum));
}

TEST(Effect, PassesTheSoundUnchangedInTheMiddle)
{
    CEffect effect(kRate);
    Sound noise(3000);
    unsigned state = 1;
    for (float& sample : noise) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<float>(state >> 8) / 8388608.0F - 1.0F;
    }
    EXPECT_EQ(Process(effect, 0.0F, 0.0F, noise), noise);
}

TEST(Effect, GainIsExactInDecibels)
{
    for (const float gain : {-24.0F, -6.0F, 0.0F, 3.5F, 24.0F}) {
        CEffect effect(kRate);
        const Sound out = Process(effect, gain, 0.0F, Sound(10, 0.5F));
        EXPECT_NEAR(20.0 * std::log10(static_cast<double>(out.front()) / 0.5), static_cast<double>(gain), 1e-4);
        EXPECT_EQ(out.front(), out.back());
    }
}

TEST(Effect, ToneTiltsBassAndTrebleOppositely)
{
    for (const float tone : {-1.0F, 0.5F, 1.0F}) {
        CEffect effect(kRate);
        const Sound response = Process(effect, 0.0F, tone, Impulse(48000));
        const double tilt = static_cast<double>(kTiltDecibels * tone);
        EXPECT_NEAR(DecibelsAt(response, 1.0), -tilt, 0.01) << tone;
        // At half the rate, one pole still lets this much of the bass side through.
        const double pole = 1.0 - std::exp(-2.0 * kPi * static_cast<double>(kPivotHertz) / kRate);
        const double low = pole / (2.0 - pole);
        const double highest = std::pow(10.0, -tilt / 20.0) * low + std::pow(10.0, tilt / 20.0) * (1.0 - low);
        EXPECT_NEAR(DecibelsAt(response, kRate / 2.0), 20.0 * std::log10(highest), 0.01) << tone;
        EXPECT_LT(std::fabs(DecibelsAt(response, static_cast<double>(kPivotHertz))), std::fabs(tilt)) << tone;
    }
}

TEST(Effect, ImpulseDiesAwayToSilence)
{
    CEffect effect(kRate);
    const Sound response = Process(effect, 24.0F, -1.0F, Impulse(48000), 8192);
    for (const float sample : response)
        EXPECT_NE(std::fpclassify(sample), FP_SUBNORMAL);
    EXPECT_EQ(response.back(), 0.0F);
}

TEST(Effect, BlocksOfEverySizeGiveTheSameSound)
{
    Sound in(20000);
    for (std::size_t frame = 0; frame < in.size(); ++frame)
        in[frame] = std::sin(static_cast<float>(frame) * 0.05F);
    CEffect whole(kRate);
    const Sound expected = Process(whole, 5.0F, 0.7F, in, in.size());
    for (const std::size_t block : {1U, 7U, 64U, 1024U, 8192U}) {
        CEffect effect(kRate);
        EXPECT_EQ(Process(effect, 5.0F, 0.7F, in, block), expected) << block;
    }
}

TEST(Effect, EmptyBlockChangesNothing)
{
    CEffect effect(kRate);
    effect.Process(24.0F, 1.0F, {nullptr, nullptr}, {nullptr, nullptr}, 0);
    EXPECT_EQ(Process(effect, 0.0F, 0.0F, Impulse(4)), Impulse(4));
}

TEST(Effect, TurnedKnobIsHeardAsARampWithoutSteps)
{
    CEffect effect(kRate);
    (void)Process(effect, 0.0F, 0.0F, Sound(64, 1.0F));
    const Sound out = Process(effect, 24.0F, 0.0F, Sound(4800, 1.0F));
    const float end = std::pow(10.0F, 24.0F / 20.0F);
    float largest = 0;
    for (std::size_t frame = 1; frame < out.size(); ++frame)
        largest = std::max(largest, out[frame] - out[frame - 1]);
    EXPECT_LT(largest, (end - 1.0F) / 900.0F);
    EXPECT_EQ(out.back(), end);
}

TEST(Effect, FirstBlockAfterAResetTakesItsSettingsAtOnce)
{
    CEffect effect(kRate);
    (void)Process(effect, -24.0F, 0.0F, Sound(64, 1.0F));
    effect.Reset();
    EXPECT_EQ(Process(effect, 0.0F, 0.0F, Sound(64, 1.0F)), Sound(64, 1.0F));
}

TEST(Effect, SettingsOutOfRangeAreMovedIntoIt)
{
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    const float most = std::numeric_limits<float>::infinity();
    CEffect wild(kRate);
    CEffect tame(kRate);
    EXPECT_EQ(Process(wild, most, -most, Impulse(100)), Process(tame, 24.0F, -1.0F, Impulse(100)));
    wild.Reset();
    EXPECT_EQ(Process(wild, nothing, nothing, Impulse(100)), Impulse(100));
}

TEST(Effect, BrokenInputIsForgottenWithItsBlock)
{
    for (const float broken : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        CEffect effect(kRate);
        (void)Process(effect, 0.0F, 1.0F, Sound(64, broken));
        for (const float sample : Process(effect, 0.0F, 1.0F, Impulse(64)))
            EXPECT_TRUE(std::isfinite(sample));
    }
}

TEST(Effect, SenselessRateStillWorks)
{
    for (const double rate : {0.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        CEffect effect(rate);
        EXPECT_EQ(Process(effect, 0.0F, 0.0F, Impulse(10)), Impulse(10));
    }
}

} // namespace
