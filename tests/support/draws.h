// The random numbers of tests.
#pragma once

namespace latbox::testing {

// A linear congruential sequence (D. E. Knuth, MMIX), so that every run sees the same cases.
class Draws {
 public:
  explicit Draws(unsigned long long seed) : state_(seed) {}
  // low <= result <= high
  long next(long low, long high) {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return low + static_cast<long>((state_ >> 33) % static_cast<unsigned long long>(high - low + 1));
  }

 private:
  unsigned long long state_;
};

}  // namespace latbox::testing
