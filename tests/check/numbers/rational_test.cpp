#include "check/numbers/rational.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace latbox::check {
namespace {

constexpr long MOST = std::numeric_limits<long>::max();
constexpr long LEAST = std::numeric_limits<long>::min();

mpq_class gmp(long numerator, long denominator) {
  mpq_class value(numerator, denominator);
  value.canonicalize();
  return value;
}

// Numbers about which the machine's words end, and others.
std::vector<mpq_class> values() {
  const std::vector<long> words = {0,        1,    -1,       2,     3,         -7,      1L << 31,
                                   1L << 32, MOST, MOST - 1, LEAST, LEAST + 1, MOST / 2};
  std::vector<mpq_class> all;
  for (const long numerator : words)
    for (const long denominator : {1L, 2L, 3L, 10L, 1L << 32, MOST, MOST - 1})
      all.push_back(gmp(numerator, denominator));
  for (const char* text : {"9223372036854775808", "-9223372036854775809", "1/9223372036854775808",
                           "-1000000000000000000000/3", "18446744073709551616/18446744073709551617"})
    all.emplace_back(text);
  return all;
}

TEST(Rational, every_operation_agrees_with_gmp_s_own) {
  for (const mpq_class& a : values())
    for (const mpq_class& b : values()) {
      const Rational p(a);
      const Rational q(b);
      const std::string where = a.get_str() + " and " + b.get_str();
      EXPECT_EQ((p + q).exact(), a + b) << where;
      EXPECT_EQ((p - q).exact(), a - b) << where;
      EXPECT_EQ((p * q).exact(), a * b) << where;
      if (b != 0) {
        EXPECT_EQ((p / q).exact(), a / b) << where;
      }
      EXPECT_EQ(p <=> q, cmp(a, b) <=> 0) << where;
      EXPECT_EQ(p == q, a == b) << where;
    }
}

TEST(Rational, a_value_has_one_form_however_it_came_about) {
  for (const mpq_class& a : values())
    for (const mpq_class& b : values()) {
      const Rational p(a);
      const Rational back = p + Rational(b) - Rational(b);
      EXPECT_EQ(back, p) << a << " and " << b;
      EXPECT_EQ(back.digest(), p.digest()) << a << " and " << b;
      EXPECT_EQ(back.isWord(), p.isWord()) << a << " and " << b;
    }
}

TEST(Rational, one_operand) {
  for (const mpq_class& a : values()) {
    const Rational p(a);
    EXPECT_EQ(p.exact(), a);
    EXPECT_EQ((-p).exact(), -a);
    EXPECT_EQ(abs(p).exact(), abs(a));
    EXPECT_EQ(p.isWhole(), a.get_den() == 1);
    EXPECT_EQ(p.isWord(), a.get_den() == 1 && a.get_num().fits_slong_p());
    if (p.isWord()) {
      EXPECT_EQ(p.word(), a.get_num().get_si());
    }
    Rational sum = p;
    sum += p;
    EXPECT_EQ(sum.exact(), 2 * a);
  }
}

TEST(Rational, digests_of_near_values_differ) {
  std::vector<std::uint64_t> digests;
  for (const mpq_class& a :
       {gmp(0, 1), gmp(1, 1), gmp(-1, 1), gmp(1, 2), gmp(-1, 2), gmp(1, 3), gmp(2, 3), gmp(MOST, 1),
        gmp(LEAST, 1), mpq_class("9223372036854775808"), mpq_class("9223372036854775809")})
    digests.push_back(Rational(a).digest());
  std::sort(digests.begin(), digests.end());
  EXPECT_EQ(std::unique(digests.begin(), digests.end()), digests.end());
}

}  // namespace
}  // namespace latbox::check
