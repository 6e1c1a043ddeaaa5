#include "driver/report.h"
#include "program/candidate_check.h"
#include "support/rows.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "lattice/lattice.h"
#include "lib/os/clock.h"
#include "lib/time_text.h"
#include "params/statistics.h"

namespace latbox {
namespace {

std::string timeOf(long seconds) {
  std::ostringstream text;
  timeText(text, seconds);
  return text.str();
}

TEST(TimeText, FollowsTheTable) {
  const std::pair<long, const char*> cases[] = {
      {-1, "-1 sec(s)"},
      {0, "0 sec(s)"},
      {9, "9 sec(s)"},
      {59, "59 sec(s)"},
      {60, "1:00 min(s):sec(s) == 60 secs"},
      {61, "1:01 min(s):sec(s) == 61 secs"},
      {600, "10:00 min(s):sec(s) == 600 secs"},
      {3599, "59:59 min(s):sec(s) == 3599 secs"},
      {3600, "1:00:00 hour(s):min(s):sec(s) == 3600 secs"},
      {3661, "1:01:01 hour(s):min(s):sec(s) == 3661 secs"},
      {360000, "100:00:00 hour(s):min(s):sec(s) == 360000 secs"},
  };
  for (const auto& [seconds, text] : cases) EXPECT_EQ(timeOf(seconds), text);
}

TEST(FixedText, CutsWhatDoesNotFit) {
  FixedText text;
  for (int i = 0; i < 2000; ++i) text << "x";
  EXPECT_EQ(text.size(), 1024U);
}

TEST(FixedText, WritesAllNumbers) {
  FixedText text;
  text << std::numeric_limits<long long>::min() << ' ' << std::numeric_limits<long long>::max() << ' ' << 0LL;
  EXPECT_EQ(std::string(text.data(), text.size()), "-9223372036854775808 9223372036854775807 0");
}

template <class T>
class Report : public ::testing::Test {
 protected:
  using L = Lattice<T, dbl_t>;

  void SetUp() override {
    statisticsOf<T>() = Statistics();
    statisticsOf<T>().startTime.set(1000);
    setClock([] { return 1070L; });
  }
  void TearDown() override {
    setClock(nullptr);
    statisticsOf<T>() = Statistics();
  }

  L lattice_;

  void addTarget() { lattice_.program.At = Matrix<T>("[[1 1]]"); }

  void addSolution(long seconds) {
    TargetVector<T> solution{Vector<T>("[ 1 2 ]")};
    solution.secondsUntilDiscovered = seconds;
    lattice_.solutions.append(solution);
  }

  void setBest(const char* target, const char* slack, long seconds) {
    lattice_.bestSlack = HeuristicVector<T, dbl_t>(Vector<T>("[ 3 4 ]"));
    lattice_.bestSlack.targetNorm = number(target);
    lattice_.bestSlack.slackNorm = number(slack);
    lattice_.bestSlack.secondsUntilDiscovered = seconds;
  }

  static T number(const char* text) { return Vector<T>(std::string("[ ") + text + " ]").first(); }
};

using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Report, NumberTypes);

TYPED_TEST(Report, BestTargetLine) {
  this->setBest("12", "-3", 61);
  std::ostringstream text;
  bestTargetLine(this->lattice_.bestSlack, text);
  EXPECT_EQ(text.str(), "T(bestTarget) = 12, S(bestTarget) = -3 -- { 1:01 min(s):sec(s) == 61 secs }");
}

TYPED_TEST(Report, BestTargetLineWithoutATarget) {
  std::ostringstream text;
  bestTargetLine(this->lattice_.bestSlack, text);
  EXPECT_EQ(text.str(), "T(bestTarget) = inf, S(bestTarget) = inf");
}

TYPED_TEST(Report, SummaryIsEmptyWithoutTargetsAndSolutions) {
  EXPECT_EQ(solutionSummary(this->lattice_), "");
}

TYPED_TEST(Report, SummaryWithTargets) {
  this->addTarget();
  EXPECT_EQ(solutionSummary(this->lattice_), "\nT(bestTarget) = inf, S(bestTarget) = inf\n");
  this->setBest("12345678", "0", 5);
  EXPECT_EQ(solutionSummary(this->lattice_),
            "\nT(bestTarget) = 12345678, S(bestTarget) = 0 -- { 5 sec(s) }\n");
}

TYPED_TEST(Report, SummaryWithSolutions) {
  this->addSolution(0);
  EXPECT_EQ(solutionSummary(this->lattice_),
            "\nSolutions found: 1\n\n{ The first solution/s was/were found after: 0 sec(s) }\n");
  this->addSolution(60);
  this->addSolution(-1);
  EXPECT_EQ(solutionSummary(this->lattice_),
            "\nSolutions found: 3\n\n{ The first solution/s was/were found after: 0 sec(s) "
            "1:00 min(s):sec(s) == 60 secs -1 sec(s) }\n");
}

TYPED_TEST(Report, FourthSolutionAddsNoTime) {
  for (long i = 1; i <= 4; ++i) this->addSolution(i);
  EXPECT_EQ(
      solutionSummary(this->lattice_),
      "\nSolutions found: 4\n\n{ The first solution/s was/were found after: 1 sec(s) 2 sec(s) 3 sec(s) }\n");
}

TYPED_TEST(Report, BenchmarkRunHidesTheNumberOfSolutions) {
  this->lattice_.params.bench.set(1);
  this->addSolution(7);
  EXPECT_EQ(solutionSummary(this->lattice_), "\n{ The first solution/s was/were found after: 7 sec(s) }\n");
}

TYPED_TEST(Report, Verb0PrintsNothingWithoutASummary) {
  EXPECT_EQ(iterationReport(this->lattice_), "");
}

TYPED_TEST(Report, Verb0PrintsASummaryOnce) {
  // The memory is that of the process, so each type needs times of its own.
  this->addSolution(std::is_same_v<TypeParam, QQ> ? 501 : 502);
  const std::string summary = solutionSummary(this->lattice_);
  EXPECT_EQ(iterationReport(this->lattice_), summary);
  EXPECT_EQ(iterationReport(this->lattice_), "");
  Lattice<TypeParam, dbl_t> other;
  EXPECT_EQ(iterationReport(other), "");
  this->addSolution(9);
  EXPECT_EQ(iterationReport(this->lattice_), solutionSummary(this->lattice_));
  this->lattice_.solutions.resize(1, false);
  EXPECT_EQ(iterationReport(this->lattice_), summary);
}

TYPED_TEST(Report, Verb1PrintsTheBlock) {
  auto& lattice = this->lattice_;
  lattice.params.verb.set(1);
  Statistics& statistics = statisticsOf<TypeParam>();
  statistics.iterations = 3;
  statistics.basisSubstitutionsTrivial = 4;
  statistics.basisSubstitutionsNontrivial = 5;
  statistics.nontrivialBasisExtensions = 6;
  statistics.pairwiseCollections = 7;
  statistics.inhomogeneousImprovements = 8;
  EXPECT_EQ(iterationReport(lattice),
            "------------------------- Some statistics --------------------------\n\n"
            "Total iterations: 3\nTotal running time: 1:10 min(s):sec(s) == 70 secs\n\n"
            "Basis substitutions (triv / ntriv): ( 4 / 5 )\n"
            "Non-trivial basis extensions: 6\n"
            "\nPairwise collections: 7\n"
            "\nInhomogenous improvements: 8\n"
            "\n--------------------------------------------------------------------\n\n");
}

TYPED_TEST(Report, Verb1PrintsWhatTheOptionsAskFor) {
  auto& lattice = this->lattice_;
  lattice.params.verb.set(1);
  lattice.params.pair.set(false);
  for (auto* option :
       {&lattice.params.consistency, &lattice.params.deep, &lattice.params.sample, &lattice.params.sieve})
    option->set(true);
  Statistics& statistics = statisticsOf<TypeParam>();
  statistics.deepInsertions = 11;
  statistics.samplingBasisExtensions = 12;
  statistics.samplingCollections = 13;
  statistics.targetImprovements = 14;
  statistics.noPrimaryImprovement = 15;
  testing::rows(lattice).TT.resize(2, false);
  lattice.homogeneousVectors.append(HeuristicVector<TypeParam, dbl_t>());
  this->addTarget();
  this->addSolution(1);
  EXPECT_EQ(iterationReport(lattice),
            "------------------------- Some statistics --------------------------\n\n"
            "Total iterations: 0\nTotal running time: 1:10 min(s):sec(s) == 70 secs\n\n"
            "Transformation matrices: 2\n\n"
            "Deep insertions: 11\n\n"
            "Basis substitutions (triv / ntriv): ( 0 / 0 )\n"
            "Non-trivial basis extensions: 0\n"
            "Sampling basis extensions: 12\n\nSampling collections: 13\n"
            "\nSieveable in/homogenous vectors: (0, 1)\n"
            "\nInhomogenous improvements: 0\nTarget improvements: 14\n"
            "\nNo primary improvement since 15 consecutive iteration(s)\n"
            "\nT(bestTarget) = inf, S(bestTarget) = inf\n"
            "\nSolutions found: 1\n\n{ The first solution/s was/were found after: 1 sec(s) }\n"
            "\n--------------------------------------------------------------------\n\n");
}

TYPED_TEST(Report, Verb2PrintsTheVectors) {
  auto& lattice = this->lattice_;
  lattice.params.verb.set(2);
  lattice.params.scale.set(true);
  lattice.resizeLattice(1, 2);
  lattice.enterBasis(Matrix<TypeParam>("[[5 123456789]]"));
  lattice.scaleFactor = Vector<TypeParam>("[ 1 2 ]");
  lattice.translation = Vector<TypeParam>("[ 0 3 ]");
  lattice.bestInhomogeneous = HeuristicVector<TypeParam, dbl_t>(Vector<TypeParam>("[ 7 8 ]"));
  lattice.bestInhomogeneous.secondsUntilDiscovered = 2;
  lattice.bestInhomogeneous.deviation.len = 113;
  lattice.bestInhomogeneous.deviation.fm = 1.5L;
  lattice.bestInhomogeneous.deviation.fc = 1;
  lattice.bestInhomogeneous.deviation.tn = 1.5L;
  this->setBest("6", "0", 3);
  const std::string text = iterationReport(lattice);
  EXPECT_TRUE(text.starts_with("\n------------------------- Some statistics")) << text;
  EXPECT_NE(text.find("\nBest inhomogenous vector: \n[ 7 8 ] -- { 2 sec(s) } -- "
                      "{ [len,f,fs,fm,fc,tn] = 113 0 inf 1.5 1 1.5 }\n\n"
                      "Best vector: \n[ 3 4 ] -- { 3 sec(s) } -- "
                      "T(bestTarget) = 6, S(bestTarget) = 0 -- { 3 sec(s) }\n\n"
                      "B[1]: \n[ 5 123456789 ]\n"
                      "\nTrimming (scale / translation): \nscaling = [ 1 2 ]\ntranslation = [ 0 3 ]\n"
                      "\nInhomogenous improvements: 0\n"),
            std::string::npos)
      << text;
}

TYPED_TEST(Report, Verb2LeavesOutWhatIsNotThere) {
  auto& lattice = this->lattice_;
  lattice.params.verb.set(2);
  lattice.params.pair.set(false);
  lattice.resizeLattice(1, 2);
  lattice.enterBasis(Matrix<TypeParam>("[[5 6]]"));
  EXPECT_NE(
      iterationReport(lattice).find("extensions: 0\n\nB[1]: \n[ 5 6 ]\n\nInhomogenous improvements: 0\n"),
      std::string::npos);
}

TYPED_TEST(Report, TranslationAloneShowsTheTrimming) {
  auto& lattice = this->lattice_;
  lattice.params.verb.set(2);
  lattice.params.translate.set(true);
  lattice.scaleFactor = Vector<TypeParam>("[ 1 1 ]");
  lattice.translation = Vector<TypeParam>("[ 4 0 ]");
  EXPECT_NE(iterationReport(lattice).find(
                "\nTrimming (scale / translation): \nscaling = [ 1 1 ]\ntranslation = [ 4 0 ]\n"),
            std::string::npos);
}

// The line end in front belongs to 2 alone, the vectors to all above.
TYPED_TEST(Report, OtherValuesOfVerb) {
  auto& lattice = this->lattice_;
  const std::string head = "------------------------- Some statistics --------------------------\n\n";
  for (const auto& [verb, vectors] : {std::pair(3L, true), std::pair(1000L, true), std::pair(-1L, false)}) {
    lattice.params.verb.set(verb);
    const std::string text = iterationReport(lattice);
    EXPECT_TRUE(text.starts_with(head)) << text;
    EXPECT_EQ(text.find("\nB[1]: \n") != std::string::npos, vectors) << verb;
  }
}

TYPED_TEST(Report, GuiKeepsTheTextAndPrintsTheBlockAtVerb0) {
  auto& lattice = this->lattice_;
  lattice.params.gui.init("", "", true, lattice.params.keys, lattice.params.hash);
  const std::string text = iterationReport(lattice);
  EXPECT_TRUE(text.starts_with("------------------------- Some statistics")) << text;
  EXPECT_NE(text.find("B[1]: \n"), std::string::npos);
  EXPECT_EQ(lattice.mainVars[MainMutexVariable::reportText].get(), text);
}

TYPED_TEST(Report, PublishesSummaryAndPath) {
  this->addSolution(4);
  this->lattice_.solFile = "some.sol";
  publishSummary(this->lattice_);
  EXPECT_EQ(publishedSummary().text, solutionSummary(this->lattice_));
  EXPECT_EQ(publishedSummary().solFile, "some.sol");
}

TYPED_TEST(Report, PublishesNothingWhileVectorsComeBack) {
  this->addSolution(4);
  publishSummary(this->lattice_);
  const std::string before = publishedSummary().text;
  this->lattice_.search.reinserting = true;
  this->lattice_.solutions.clear();
  publishSummary(this->lattice_);
  EXPECT_EQ(publishedSummary().text, before);
}

}  // namespace
}  // namespace latbox
