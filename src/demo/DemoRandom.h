#pragma once

#include <random>

/// The chance in the demo books. Maps the engine's numbers itself: the distributions of the standard library differ
/// from one implementation to the next, and a seed has to give the same books everywhere.
class DemoRandom {
  public:
    explicit DemoRandom(unsigned seed) : engine_(seed) {}

    /// Both ends included; first <= last.
    long Between(long first, long last);

    bool Chance(long per_mille) { return Between(1, 1000) <= per_mille; }

    /// An amount of the range in euro and cents, the small ones more often than the large ones.
    double Amount(long first_euro, long last_euro);

    /// One of the items; there has to be one.
    template <class Items>
    const auto &Pick(const Items &items)
    {
        return items[static_cast<std::size_t>(Between(0, static_cast<long>(items.size()) - 1))];
    }

  private:
    std::mt19937_64 engine_;
};
