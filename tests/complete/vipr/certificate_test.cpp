#include "complete/vipr/certificate.h"

#include <gtest/gtest.h>

namespace latbox::complete::vipr {
namespace {

FormPointer form(IntegerVector values) {
  return std::make_shared<IntegerVector>(std::move(values));
}

TEST(Certificate, ListsCoefficientsThatAreNotZero) {
  EXPECT_EQ(textOf({0, 4, 0, -1}), "2  1 4  3 -1");
  EXPECT_EQ(textOf({0, 0}), "0");
}

TEST(Certificate, NumbersGivenAndDerivedLines) {
  Certificate certificate(2);
  EXPECT_EQ(certificate.give({Sense::GREATER, 1, form({4, 1})}), 0u);
  EXPECT_EQ(certificate.give({Sense::LESS, Rational(7, 2), form({4, -1})}), 1u);
  EXPECT_EQ(certificate.assume({Sense::LESS, 0, form({0, 1})}), 2u);
  EXPECT_EQ(certificate.givenText(), "C0 G 1  2  0 4  1 1\nC1 L 7/2  2  0 4  1 -1\n");
  EXPECT_EQ(certificate.derivedText(), "C2 L 0  1  1 1 { asm } -1\n");
  EXPECT_EQ(certificate.givenCount(), 2u);
  EXPECT_EQ(certificate.derivedCount(), 1u);
}

TEST(Certificate, RoundsWhatItDerives) {
  Certificate certificate(2);
  certificate.give({Sense::GREATER, 1, form({4, 1})});
  certificate.give({Sense::LESS, 2, form({4, -1})});
  // 2 y >= -1.
  const std::size_t line = certificate.derive({{0, Rational(1, 2)}, {1, Rational(-1, 2)}}, Sense::GREATER);
  EXPECT_EQ(certificate[line].side, 0);
  EXPECT_EQ(*certificate[line].form, IntegerVector({0, 1}));
  EXPECT_EQ(certificate.derivedText(), "C2 G 0  1  1 1 { rnd 2  0 1/2  1 -1/2 } -1\n");
  const std::size_t upper = certificate.derive({{1, 1}, {2, 1}}, Sense::LESS);
  EXPECT_EQ(certificate[upper].side, 2);
}

// Nothing adds up to 0 = 0, which a reader does not round.
TEST(Certificate, DerivesNothingFromNothing) {
  Certificate certificate(1);
  certificate.derive({}, Sense::LESS);
  EXPECT_EQ(certificate.derivedText(), "C0 L 0  0 { lin 0 } -1\n");
}

TEST(Certificate, RefutesOnlyContradictions) {
  Certificate certificate(1);
  certificate.give({Sense::GREATER, 3, form({1})});
  certificate.give({Sense::LESS, 2, form({1})});
  EXPECT_EQ(certificate[certificate.refute({{0, -1}, {1, 1}})].side, -1);
  EXPECT_EQ(certificate.derivedText(), "C2 L -1  0 { lin 2  0 -1  1 1 } -1\n");
  certificate.give({Sense::LESS, 3, form({1})});
  EXPECT_THROW(certificate.refute({{0, -1}, {3, 1}}), std::logic_error);
}

TEST(Certificate, JoinsTheSidesOfASplit) {
  Certificate certificate(1);
  for (int i = 0; i < 4; ++i) certificate.give({Sense::LESS, -1, certificate.zero()});
  EXPECT_EQ(certificate.split(0, 1, 2, 3), 4u);
  certificate.split(0, 1, 2, 3, {Sense::GREATER, 5, form({1})});
  EXPECT_EQ(certificate.derivedText(), "C4 G 1  0 { uns 0 1 2 3 } -1\nC5 G 5  1  0 1 { uns 0 1 2 3 } -1\n");
}

TEST(Certificate, RelaxesAnEquation) {
  Certificate certificate(1);
  certificate.give({Sense::EQUAL, 5, form({2})});
  certificate.relax(0, Sense::LESS);
  EXPECT_EQ(certificate.derivedText(), "C1 L 5  1  0 2 { lin 1  0 1 } -1\n");
}

}  // namespace
}  // namespace latbox::complete::vipr
