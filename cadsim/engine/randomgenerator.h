#pragma once

#include <cstdint>
#include <optional>

namespace cadsim {

// Rnd and Randomize: VBA's 24-bit linear congruential generator, so that a seeded sequence
// repeats the numbers VBA gives.
class RandomGenerator final {
public:
    // Rnd(x): x < 0 reseeds from x and returns that seed's number, x = 0 repeats the last
    // number, anything else (or none) the next one.
    double next(std::optional<double> x);
    // Randomize x: mixes x into the seed.
    void seed(double x);

private:
    std::uint32_t m_seed = 0x50000;
};

} // namespace cadsim
