#include "params/statistics.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <vector>

#include "lib/os/clock.h"
#include "numbers/qq.h"

namespace latbox {
namespace {

struct ProgressCase {
  const char* what;
  long long improvements, improvementsBefore;
  long long targets, targetsBefore;
  long long solutions, solutionsBefore;
  long long samplingCollections;
  long long extensions, extensionsBefore;
  bool progress;
};

const std::vector<ProgressCase> PROGRESS_CASES = {
    {"nothing found yet", 0, 0, 0, 0, 0, 0, 0, 0, 0, false},
    {"targets and solutions do not count without an improvement", 0, 0, 2, 1, 2, 1, 5, 2, 1, false},
    {"first inhomogeneous vector", 1, 0, 0, 0, 0, 0, 0, 0, 0, true},
    {"better inhomogeneous vector", 5, 4, 0, 0, 0, 0, 0, 0, 0, true},
    {"no better inhomogeneous vector", 5, 5, 0, 0, 0, 0, 0, 0, 0, false},
    {"solutions without targets: an improvement must come, too", 5, 5, 0, 0, 2, 1, 0, 0, 0, false},
    {"solutions without targets: a new one", 5, 4, 0, 0, 2, 1, 0, 0, 0, true},
    {"solutions without targets: an old one stops the improvement", 5, 4, 0, 0, 2, 2, 0, 0, 0, false},
    {"old solution, but sampling had extended the basis", 5, 4, 0, 0, 2, 2, 0, 3, 3, true},
    {"better target", 5, 5, 2, 1, 0, 0, 0, 0, 0, true},
    {"no better target", 5, 4, 2, 2, 0, 0, 0, 0, 0, false},
    {"targets and solutions: only a new solution counts", 5, 4, 2, 1, 3, 3, 0, 0, 0, false},
    {"targets and solutions: a new solution", 5, 5, 2, 2, 4, 3, 0, 0, 0, true},
    {"targets and solutions, extended basis: all counts", 5, 5, 2, 2, 3, 3, 0, 1, 1, true},
    {"sampling at work without extension never counts", 5, 4, 2, 1, 4, 3, 1, 7, 7, false},
    {"sampling at work without extension, better target", 5, 4, 2, 1, 0, 0, 1, 0, 0, false},
    {"sampling at work without extension, first vector", 1, 0, 0, 0, 0, 0, 1, 0, 0, false},
    {"sampling that extended the basis", 5, 4, 2, 1, 4, 3, 1, 8, 7, true},
    {"sampling that extended the basis, better target", 5, 5, 2, 1, 0, 0, 1, 1, 0, true},
    {"first extension, old solution", 5, 5, 2, 2, 3, 3, 1, 1, 0, false},
};

Statistics statisticsFor(const ProgressCase& row) {
  Statistics statistics;
  statistics.inhomogeneousImprovements = row.improvementsBefore;
  statistics.targetImprovements = row.targetsBefore;
  statistics.solutionsFound = row.solutionsBefore;
  statistics.samplingBasisExtensions = row.extensionsBefore;
  statistics.takeSnapshot();
  statistics.inhomogeneousImprovements = row.improvements;
  statistics.targetImprovements = row.targets;
  statistics.solutionsFound = row.solutions;
  statistics.samplingBasisExtensions = row.extensions;
  statistics.samplingCollections = row.samplingCollections;
  return statistics;
}

TEST(Statistics, ProgressFollowsTheTable) {
  for (const ProgressCase& row : PROGRESS_CASES) {
    Statistics statistics = statisticsFor(row);
    statistics.noPrimaryImprovement = 7;
    statistics.updateProgress();
    EXPECT_EQ(statistics.noPrimaryImprovement, row.progress ? 0 : 8) << row.what;
  }
}

// The rule as it is told, test by test; each names the one that follows it.
bool madeProgress(const ProgressCase& row) {
  if (row.improvements == 0) return false;
  if (row.targets == 0) {
    if (row.improvements == row.improvementsBefore) return false;
  } else if (row.solutions == 0) {
    if (row.targets == row.targetsBefore) return false;
    return !(row.samplingCollections >= 1 && row.extensions == row.extensionsBefore);
  }
  if (row.solutions >= 1 && row.extensionsBefore == 0 && row.solutions == row.solutionsBefore) return false;
  return !(row.samplingCollections >= 1 && row.extensions == row.extensionsBefore);
}

// Each counter and its value before from 0 to 2: nothing yet, the same, more.
TEST(Statistics, ProgressFollowsTheRuleForAllSmallCounters) {
  for (int code = 0; code < 3 * 3 * 3 * 3 * 3 * 3 * 2 * 3 * 3; ++code) {
    int rest = code;
    const auto digit = [&rest](int base) {
      const int value = rest % base;
      rest /= base;
      return static_cast<long long>(value);
    };
    ProgressCase row{};
    for (long long* counter : {&row.improvements, &row.improvementsBefore, &row.targets, &row.targetsBefore,
                               &row.solutions, &row.solutionsBefore, &row.extensions, &row.extensionsBefore})
      *counter = digit(3);
    row.samplingCollections = digit(2);
    Statistics statistics = statisticsFor(row);
    statistics.noPrimaryImprovement = 7;
    statistics.updateProgress();
    ASSERT_EQ(statistics.noPrimaryImprovement, madeProgress(row) ? 0 : 8) << "case " << code;
  }
}

TEST(Statistics, StartsWithZerosAndTheTime) {
  const long before = now();
  const Statistics statistics;
  EXPECT_EQ(statistics.iterations, 0);
  EXPECT_EQ(statistics.noPrimaryImprovement, 0);
  EXPECT_EQ(statistics.samplingCollections, 0);
  EXPECT_GE(statistics.startTime.get(), before);
  EXPECT_LE(statistics.startTime.get(), now());
  EXPECT_GE(statistics.discoveryStart, before);
}

TEST(Statistics, SnapshotTakesTheFourCounters) {
  Statistics statistics;
  statistics.inhomogeneousImprovements = 1;
  statistics.targetImprovements = 2;
  statistics.solutionsFound = 3;
  statistics.samplingBasisExtensions = 4;
  statistics.takeSnapshot();
  EXPECT_EQ(statistics.inhomogeneousImprovementsBefore, 1);
  EXPECT_EQ(statistics.targetImprovementsBefore, 2);
  EXPECT_EQ(statistics.solutionsFoundBefore, 3);
  EXPECT_EQ(statistics.samplingBasisExtensionsBefore, 4);
}

TEST(Statistics, CountsOfFindsGoBackAlone) {
  Statistics statistics;
  statistics.inhomogeneousImprovements = 1;
  statistics.targetImprovements = 2;
  statistics.solutionsFound = 3;
  const FindCounts before = statistics.findCounts();
  statistics.inhomogeneousImprovements = statistics.targetImprovements = statistics.solutionsFound = 9;
  statistics.deepInsertions = 9;
  statistics.setFindCounts(before);
  EXPECT_EQ(statistics.inhomogeneousImprovements, 1);
  EXPECT_EQ(statistics.targetImprovements, 2);
  EXPECT_EQ(statistics.solutionsFound, 3);
  EXPECT_EQ(statistics.deepInsertions, 9);
}

TEST(Statistics, CopyTakesEverything) {
  Statistics source;
  ++source.iterations;
  ++source.iterations;
  source.noPrimaryImprovement = 5;
  source.discoveryStart = 17;
  source.startTime.set(23);
  Statistics target;
  target = source;
  EXPECT_EQ(target.iterations, 2);
  EXPECT_EQ(target.noPrimaryImprovement, 5);
  EXPECT_EQ(target.discoveryStart, 17);
  EXPECT_EQ(target.startTime.get(), 23);
}

TEST(Statistics, EachPrecisionHasItsOwn) {
  EXPECT_NE(&statisticsStandard(), &statisticsExtended());
  EXPECT_EQ(&statisticsOf<dbl_t>(), &statisticsStandard());
  EXPECT_EQ(&statisticsOf<QQ>(), &statisticsExtended());
}

class Stamp : public ::testing::Test {
 protected:
  void SetUp() override {
    start_ = statisticsStandard().discoveryStart;
    statisticsStandard().discoveryStart = 1000;
    setClock([] { return 1010L; });
  }
  void TearDown() override {
    setClock(nullptr);
    statisticsStandard().discoveryStart = start_;
  }

 private:
  std::time_t start_ = 0;
};

TEST_F(Stamp, CountsFromTheStartOfTheRun) {
  EXPECT_EQ(stampNow<dbl_t>(0), 10);
}

TEST_F(Stamp, IsMultipliedInABenchmarkRun) {
  EXPECT_EQ(stampNow<dbl_t>(2.5F), 25);
  EXPECT_EQ(stampNow<dbl_t>(-1), -10);
}

// More would make a .sol file that is refused when it is read back.
TEST_F(Stamp, HasEighteenDigitsAtMost) {
  constexpr long LONGEST = 999'999'999'999'999'999;
  const float infinite = std::numeric_limits<float>::infinity();
  for (const float factor : {infinite, 1e30F, 2e17F}) {
    EXPECT_EQ(stampNow<dbl_t>(factor), LONGEST) << factor;
    EXPECT_EQ(stampNow<dbl_t>(-factor), -LONGEST) << factor;
  }
  EXPECT_EQ(stampNow<dbl_t>(0x1p56F), 10L << 56);
  statisticsStandard().discoveryStart = 1010;
  EXPECT_EQ(stampNow<dbl_t>(infinite), LONGEST);
}

TEST_F(Stamp, TinyFactorsAreNoBenchmark) {
  EXPECT_EQ(stampNow<dbl_t>(1e-10F), 10);
  EXPECT_EQ(stampNow<dbl_t>(-1e-10F), 10);
  EXPECT_TRUE(isBenchmark(1e-8F));
  EXPECT_TRUE(isBenchmark(-1e-8F));
  EXPECT_FALSE(isBenchmark(0));
}

}  // namespace
}  // namespace latbox
