// Random numbers that are the same on every machine; the standard's distributions are not.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace truth {

/// Marsaglia's xorshift64* (2003).
class Dice
{
public:
    explicit Dice(std::uint64_t seed)
        : m_state(seed * 0x9E3779B97F4A7C15U + 1)
    {
        for (int i = 0; i < 8; ++i) {
            next();
        }
    }

    std::uint32_t next()
    {
        m_state ^= m_state >> 12U;
        m_state ^= m_state << 25U;
        m_state ^= m_state >> 27U;
        return static_cast<std::uint32_t>((m_state * 0x2545F4914F6CDD1DU) >> 32U);
    }
    /// 0 up to, not including, 1.
    double uniform() { return next() / 4294967296.0; }
    int below(int end) { return static_cast<int>(uniform() * end); }
    /// Mean 0, standard deviation 1: six uniform numbers come near enough.
    double gauss()
    {
        double sum = 0;
        for (int i = 0; i < 6; ++i) {
            sum += uniform();
        }
        return (sum - 3) * std::sqrt(2.0);
    }

private:
    std::uint64_t m_state;
};

/// Noise by the megapixel: 4096 drawn values, picked at random.
class NoiseTable
{
public:
    NoiseTable(double deviation, Dice& dice)
    {
        for (float& value : m_values) {
            value = static_cast<float>(dice.gauss() * deviation);
        }
    }
    float pick(Dice& dice) const { return m_values[dice.next() >> 20U]; }

private:
    std::array<float, 4096> m_values {};
};

} // namespace truth
