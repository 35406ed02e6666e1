#include "cadsim/engine/randomgenerator.h"

#include <cstring>

namespace cadsim {

namespace {

constexpr std::uint32_t kMask = 0xFFFFFF;

} // namespace

double RandomGenerator::next(std::optional<double> x)
{
    if (x && *x < 0) {
        // The single-precision bits of x make the seed.
        const float f = static_cast<float>(*x);
        std::uint32_t bits = 0;
        std::memcpy(&bits, &f, sizeof bits);
        m_seed = (bits + (bits >> 24)) & kMask;
    }
    if (!x || *x != 0)
        m_seed = static_cast<std::uint32_t>((static_cast<std::uint64_t>(m_seed) * 1140671485u + 12820163u) & kMask);
    return static_cast<double>(m_seed) / 16777216.0;
}

void RandomGenerator::seed(double x)
{
    // The high word of the double, folded into the middle two bytes of the seed.
    std::uint64_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    auto high = static_cast<std::uint32_t>(bits >> 32);
    high = ((high & 0xFFFF) ^ (high >> 16)) << 8;
    m_seed = (m_seed & 0xFF0000FF) | (high & 0x00FFFF00);
}

} // namespace cadsim
