#include "driver/temporary_folder.h"
#include "program/lat_file.h"
#include "support/lattice.h"
#include "support/rows.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::shown;

// The widths of the embedding are 71, for -2..3.1 with one digit, and 4; the range is a multiple of 51 and 4.
constexpr const char* FRACTIONS = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 6 ] [ 1 0 ] [ -2 0 ] [ 3.1 4 ]";

// The same long combination of rows in either type.
template <class T>
void combineRows(Lattice<T, dbl_t>& l) {
  Matrix<T>& B = testing::rows(l).B;
  B[1].addMultiple(T(1234), B[2]);
  B[1].addMultiple(T(-4321), B[3]);
  B[2].addMultiple(T(999), B[3]);
}

TEST(Multipliers, AreExactAgainAfterAConversion) {
  auto standard = latticeOf<dbl_t>(FRACTIONS);
  auto exact = latticeOf<QQ>(FRACTIONS);
  combineRows(*standard);
  combineRows(*exact);
  standard->setScale(2, 3);
  exact->setScale(2, QQ(3));
  standard->setTranslation(1, 5);
  exact->setTranslation(1, QQ(5));
  for (const char* point : {"[ 0.7 3 ]", "[ 0.8 3 ]"}) {
    standard->checkSolution(latticeVector(*standard, point), NOW, false);
    exact->checkSolution(latticeVector(*exact, point), NOW, false);
  }
  Lattice<QQ, dbl_t> extended;
  extended.convertFrom(*standard);
  EXPECT_EQ(shown(extended.c), shown(exact->c));
  EXPECT_EQ(shown(extended.B_save), shown(exact->B_save));
  EXPECT_EQ(shown(extended.B), shown(exact->B));
  ASSERT_EQ(extended.solutions.MN, 2);
  for (long i = 1; i <= 2; ++i) EXPECT_EQ(shown<QQ>(extended.solutions[i]), shown<QQ>(exact->solutions[i]));
  ASSERT_GT(extended.inhomogeneousVectors.count, 0);
  for (auto* node = extended.inhomogeneousVectors.head; node != nullptr; node = node->next)
    EXPECT_TRUE(extended.isMember(node->value));
  EXPECT_TRUE(extended.isMember(extended.unscaled(extended.B)[1]));
}

// Symptom: a file of the one type, read in the other, did not hold the solutions any more.
template <class From, class To>
void readAcross() {
  testing::TemporaryFolder folder;
  auto source = latticeOf<From>(FRACTIONS);
  combineRows(*source);
  source->latFile = folder.path("a.lat");
  source->writeEnabled = true;
  source->writeLatFile();
  auto target = testing::unpreparedLattice<To>(FRACTIONS);
  target->latFile = source->latFile;
  readLatFile(*target);
  auto generated = latticeOf<To>(FRACTIONS);
  combineRows(*generated);
  EXPECT_EQ(shown(target->c), shown(generated->c));
  EXPECT_EQ(shown(target->B_save), shown(generated->B));
  EXPECT_EQ(shown(target->B), shown(generated->B));
  EXPECT_TRUE(target->isMember(latticeVector(*target, "[ 0.7 3 ]")));
}

TEST(Multipliers, AreExactAgainAfterAFile) {
  readAcross<dbl_t, QQ>();
  readAcross<QQ, QQ>();
  readAcross<QQ, dbl_t>();
  readAcross<dbl_t, dbl_t>();
}

TEST(Multipliers, WhatIsNoRoundingStays) {
  auto l = latticeOf<QQ>(FRACTIONS);
  testing::rows(*l).B_save[2][2] += QQ("1/10000");
  const std::string rows = shown(l->B_save);
  l->restoreMultipliers();
  EXPECT_EQ(shown(l->B_save), rows);
  l->c[2] += QQ("1/10000");
  const std::string multipliers = shown(l->c);
  l->restoreMultipliers();
  EXPECT_EQ(shown(l->c), multipliers);
}

TEST(Multipliers, NothingToDoWithoutALattice) {
  Lattice<QQ, dbl_t> l;
  l.restoreMultipliers();
  EXPECT_EQ(l.c.MN, 0);
}

}  // namespace
}  // namespace latbox
