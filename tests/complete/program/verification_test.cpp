#include "complete/program/verification.h"

#include <random>

#include "support.h"

namespace latbox::complete {
namespace {

bool isPoint(const Verification& verification, const IntegerVector& z) {
  try {
    verification.pointOf(z);
    return true;
  } catch (const std::logic_error&) {
    return false;
  }
}

// Small numbers with fractions and digits, infinite sides, sides that no sum reaches, rows that nothing
// keeps.
class Random {
 public:
  explicit Random(unsigned long seed) : random_(seed) {}

  Program program(const Rational& scale) {
    Program program;
    const std::size_t n = static_cast<std::size_t>(number(1, 4));
    for (std::size_t j = 0; j < n; ++j) {
      program.digits.push_back(static_cast<unsigned long>(number(0, 2)));
      program.lower.push_back({0, fraction()});
      program.upper.push_back({0, program.lower.back().value + number(0, 3)});
    }
    if (number(0, 1) == 0) {
      program.equations.push_back(row(n, scale));
      program.sides.push_back(product(program.equations[0], pointOf(program, planted_ = point(program))));
    }
    for (long i = number(0, 2); i > 0; --i) {
      program.inequations.push_back(row(n, scale));
      program.lowerSides.push_back(side(-1, scale));
      program.upperSides.push_back(side(1, scale));
    }
    return program;
  }

  // That keeps the equation, if there is one.
  const IntegerVector& planted() const { return planted_; }

  // In the box or beside it.
  IntegerVector point(const Program& program) {
    IntegerVector z;
    for (std::size_t j = 0; j < program.variables(); ++j) {
      const Integer steps = powerOfTen(program.digits[j]);
      const Integer low = floorOf(Rational(program.lower[j].value * steps));
      z.push_back(low + number(0, 3 * steps.get_si() + 1));
    }
    return z;
  }

  long number(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

 private:
  Rational fraction() {
    Rational value(number(-8, 8), number(1, 4));
    value.canonicalize();
    return value;
  }

  std::vector<Rational> row(std::size_t n, const Rational& scale) {
    std::vector<Rational> row;
    for (std::size_t j = 0; j < n; ++j) row.push_back(scale * fraction());
    return row;
  }

  Number side(int sign, const Rational& scale) {
    if (number(0, 3) == 0) return {number(0, 9) == 0 ? -sign : sign, 0};
    const Rational huge(powerOfTen(30));
    return {0, scale * (sign * 4 + fraction()) + (number(0, 9) == 0 ? Rational(sign * huge) : Rational(0))};
  }

  std::mt19937_64 random_;
  IntegerVector planted_;
};

// Rows in machine words, and the same ones with numbers that are too long for them.
TEST(Verification, SaysWhatRationalsSay) {
  for (const Rational& scale : {Rational(1), Rational(powerOfTen(25) + 1)}) {
    std::size_t kept = 0;
    std::size_t equal = 0;
    std::size_t refused = 0;
    for (unsigned long seed = 0; seed < 3000; ++seed) {
      Random random(seed);
      const Program program = random.program(scale);
      const Verification verification(program);
      for (int i = 0; i < 10; ++i) {
        const IntegerVector z =
            i == 0 && !program.equations.empty() ? random.planted() : random.point(program);
        const bool is = isFeasible(program, pointOf(program, z));
        ASSERT_EQ(isPoint(verification, z), is) << seed;
        ++(!is ? refused : program.equations.empty() ? kept : equal);
      }
    }
    EXPECT_GT(kept, 1000u);
    EXPECT_GT(equal, 100u);
    EXPECT_GT(refused, 3000u);
  }
}

// Coefficient times bound is just below and just above what words are used for: sums must not come round.
TEST(Verification, SumsDoNotLeaveAWord) {
  for (const unsigned long bits : {29ul, 30ul, 31ul, 32ul, 33ul, 62ul, 63ul, 64ul}) {
    const Integer bound = (Integer(1) << bits) - 1;
    Program program;
    program.digits = {0, 0, 0, 0};
    program.lower.assign(4, {0, Rational(Integer(-bound))});
    program.upper.assign(4, {0, Rational(bound)});
    program.inequations = {std::vector<Rational>(4, Rational(bound))};
    program.lowerSides = {{-1, 0}};
    program.upperSides = {{0, 0}};
    const Verification verification(program);
    EXPECT_TRUE(isPoint(verification, {-bound, -bound, -bound, -bound})) << bits;
    EXPECT_FALSE(isPoint(verification, {bound, bound, bound, bound})) << bits;
    EXPECT_FALSE(isPoint(verification, {bound, 1, 0, -bound})) << bits;
    EXPECT_TRUE(isPoint(verification, {bound, -1, 0, -bound})) << bits;
    EXPECT_FALSE(isPoint(verification, {Integer(bound + 1), -bound, -bound, -bound})) << bits;
    EXPECT_FALSE(isPoint(verification, {Integer(-(Integer(1) << 70)), 0, 0, 0})) << bits;
  }
}

TEST(Verification, GivesThePointOfWholeSteps) {
  Program program;
  program.digits = {0, 2};
  program.lower.assign(2, {-1, 0});
  program.upper.assign(2, {1, 0});
  EXPECT_EQ(Verification(program).pointOf({Integer(-3), Integer(150)}), (Point{-3, Rational(3, 2)}));
}

}  // namespace
}  // namespace latbox::complete
