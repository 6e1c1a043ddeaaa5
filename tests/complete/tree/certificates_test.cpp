#include "complete/tree/certificates.h"

#include <cmath>

#include "small_lattice.h"

namespace latbox::complete {
namespace {

using testing::SmallLattice;

// Any vector: mostly of a few entries, some of them very small or large.
SparseVector randomWeights(SmallLattice& random) {
  SparseVector d;
  for (std::size_t j = 0; j < random.lattice.coordinates(); ++j) {
    if (random.draw(0, 2) == 0) continue;
    d.coordinates.push_back(j);
    const double fraction = static_cast<double>(random.draw(-1000, 1000)) / 777.0;
    const long kind = random.draw(0, 9);
    d.entries.push_back(kind == 0 ? fraction * 1e-120 : kind == 1 ? fraction * 1e12 : fraction);
  }
  return d;
}

std::vector<double> partialOf(const Certificates& certificates, const std::vector<double>& lambda,
                              std::size_t t) {
  std::vector<double> partial = certificates.point();
  for (std::size_t i = t + 1; i < lambda.size(); ++i) certificates.move(partial, partial, i, lambda[i]);
  return partial;
}

TEST(CertificatesTest, EveryVectorMakesABoundThatEveryPointKeeps) {
  std::size_t points = 0;
  std::size_t finite = 0;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SmallLattice random(seed, 4, 5);
    const auto reach = random.prepare();
    ASSERT_TRUE(reach);
    if (!SmallLattice::isShort(*reach)) continue;
    Certificates certificates(random.lattice, *reach);
    ASSERT_TRUE(certificates.exist());
    for (const std::vector<double>& lambda : random.points(*reach)) {
      ++points;
      for (std::size_t t = 0; t < lambda.size(); ++t)
        for (const int sign : {1, -1, 0}) {
          Certificate certificate;
          certificates.certify(certificate, randomWeights(random), t, sign);
          const double bound = certificates.evaluate(certificate, partialOf(certificates, lambda, t));
          EXPECT_GE(bound, sign * lambda[t]) << seed;
          finite += std::isfinite(bound) ? 1 : 0;
        }
    }
  }
  EXPECT_GT(points, 2000u);
  EXPECT_GT(finite, 10000u);
}

// Without open levels and with weights that are exact, nothing but the rounding may be left of the slack.
TEST(CertificatesTest, AreSharpWhereNothingIsOpen) {
  BoxLattice lattice;
  lattice.variables = {0};
  lattice.fixed.resize(1);
  lattice.point = testing::vectorOf({3});
  lattice.basis = {testing::vectorOf({2})};
  lattice.low = testing::vectorOf({-10});
  lattice.high = testing::vectorOf({20});
  Certificates certificates(lattice, {20});
  Certificate certificate;
  certificates.certify(certificate, {{0}, {0.5}}, 0, 1);
  EXPECT_NEAR(certificates.evaluate(certificate, certificates.point()), 8.5, 1e-9);
  EXPECT_GT(certificate.slack, 0);
  certificates.certify(certificate, {{0}, {-0.5}}, 0, -1);
  EXPECT_NEAR(certificates.evaluate(certificate, certificates.point()), 6.5, 1e-9);
}

// What a step in the open levels can add is in the slack.
TEST(CertificatesTest, CountWhatTheOpenLevelsCanAdd) {
  BoxLattice lattice;
  lattice.variables = {0, 1};
  lattice.fixed.resize(2);
  lattice.point = testing::vectorOf({0, 0});
  lattice.basis = {testing::vectorOf({1, 3}), testing::vectorOf({0, 1})};
  lattice.low = testing::vectorOf({0, 0});
  lattice.high = testing::vectorOf({5, 5});
  Certificates certificates(lattice, {5, 20});
  Certificate certificate;
  // lambda_1 = v_1 - 3 lambda_0 <= 5 + 3 * 5.
  certificates.certify(certificate, {{1}, {1.0}}, 1, 1);
  EXPECT_NEAR(certificates.evaluate(certificate, certificates.point()), 20, 1e-4);
  // lambda_1 = v_1 - 3 v_0 <= 5.
  certificates.certify(certificate, {{0, 1}, {-3.0, 1.0}}, 1, 1);
  EXPECT_NEAR(certificates.evaluate(certificate, certificates.point()), 5, 1e-9);
}

TEST(CertificatesTest, RefuteOnlyWhatHasNoPoint) {
  BoxLattice lattice;
  lattice.variables = {0, 1};
  lattice.fixed.resize(2);
  lattice.point = testing::vectorOf({0, 0});
  lattice.basis = {testing::vectorOf({1, 1}), testing::vectorOf({0, 1})};
  lattice.low = testing::vectorOf({0, 0});
  lattice.high = testing::vectorOf({4, 4});
  Certificates certificates(lattice, {4, 4});
  Certificate certificate;
  // lambda_1 = v_1 - v_0 is at most 4.
  certificates.certify(certificate, {{0, 1}, {-1.0, 1.0}}, 0, 0);
  std::vector<double> partial(2);
  for (const double lambda : {-5.0, -4.0, 0.0, 4.0, 5.0}) {
    certificates.move(partial, certificates.point(), 1, lambda);
    EXPECT_EQ(certificates.evaluate(certificate, partial) < 0, lambda > 4) << lambda;
  }
}

TEST(CertificatesTest, NumbersThatAreNoneMakeNoBound) {
  SmallLattice random(5, 4, 5);
  Certificates certificates(random.lattice, *random.prepare());
  for (const double entry : {double{INFINITY}, -double{INFINITY}, std::nan(""), 1e308, -1e308}) {
    Certificate certificate;
    certificates.certify(certificate, {{0}, {entry}}, 0, 1);
    EXPECT_GT(certificates.evaluate(certificate, certificates.point()), 1e290) << entry;
  }
  EXPECT_EQ(certificates.evaluate(Certificate(), certificates.point()), INFINITY);
}

TEST(CertificatesTest, LongNumbersHaveNone) {
  for (const int where : {0, 1, 2, 3}) {
    SmallLattice random(5, 4, 5);
    auto reach = *random.prepare();
    const Integer longOne = Integer(1) << 52;
    if (where == 0) random.lattice.point[0] = longOne;
    if (where == 1) random.lattice.basis[0][0] = -longOne;
    if (where == 2) random.lattice.high[0] = longOne;
    // Short, but sums of it are not.
    if (where == 3) reach[0] = 1e16;
    EXPECT_FALSE(Certificates(random.lattice, reach).exist()) << where;
  }
}

}  // namespace
}  // namespace latbox::complete
