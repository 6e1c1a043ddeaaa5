#include <filesystem>

#include "driver/temporary_folder.h"
#include "lib/exceptions.h"
#include "lib/os/file.h"
#include "program/sol_file.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::shown;
using testing::TemporaryFolder;

template <class T>
class SolFile : public ::testing::Test {
 protected:
  using L = Lattice<T, dbl_t>;
  TemporaryFolder folder;

  std::unique_ptr<L> lattice(const std::string& program) {
    auto l = latticeOf<T>(program);
    l->solFile = folder.path("a.sol");
    l->latFile = folder.path("a.lat");
    l->writeEnabled = true;
    l->params.sol.set(0);
    l->params.pair.set(false);
    return l;
  }
  std::string content() const {
    std::string text;
    return readFile(folder.path("a.sol"), text) ? text : "none";
  }
  void put(const std::string& text) { std::ofstream(folder.path("a.sol"), std::ios::binary) << text; }
  static unsigned check(L& l, const std::string& point, DiscoveryTime time = foundAfter(1)) {
    return l.checkSolution(latticeVector(l, point), time, false);
  }
  // The lines without their tail of parameters and version.
  std::string heads(const L& l) const {
    std::string text = content();
    const std::string tail = " | " + l.params.text() + " | 2.2.2\n";
    for (std::size_t at = text.find(tail); at != std::string::npos; at = text.find(tail))
      text.replace(at, tail.size(), ";");
    return text;
  }
  // The stars that a file leaves, and what is logged about the others.
  std::string log;
  std::string read(L& l, const std::string& text) {
    put(text);
    l.params.verb.set(2);
    ::testing::internal::CaptureStdout();
    readStarsFromSolFile(l, false, false);
    log = ::testing::internal::GetCapturedStdout();
    std::string stars;
    for (long i = 1; i <= l.program.stars.MN; ++i) stars += shown<T>(l.program.stars[i]);
    return stars;
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(SolFile, NumberTypes);

TYPED_TEST(SolFile, LineOfAFeasiblePoint) {
  auto l = this->lattice(testing::SMALL);
  this->check(*l, "[ 1 1 ]", foundAfter(12));
  EXPECT_EQ(this->content(), "[ 1 1 ] | 0 | [ ] | 0 | 12 | " + l->params.text() + " | 2.2.2\n");
  EXPECT_EQ(l->params.text().find("gui"), std::string::npos);
  EXPECT_EQ(l->params.text().substr(0, 9), "--help=0 ");
}

TYPED_TEST(SolFile, LineOfATarget) {
  auto l = this->lattice(testing::SMALL_TARGET);
  this->check(*l, "[ 0 3 ]", foundAfter(-1));
  writeSolFile(*l, false);
  EXPECT_EQ(this->heads(*l), "[ 0 3 ] | -3 | [ -3 ] | 0 | -1;");
}

TYPED_TEST(SolFile, VectorThatStandsForNoPointFails) {
  auto l = this->lattice(testing::SMALL);
  this->check(*l, "[ 1 1 ]");
  l->solutions[1][l->dim] = TypeParam(0);  // no longer inhomogeneous
  EXPECT_FAILURE(sol2star(*l), "sol2star: lat2opt can not compute x_opt");
}

TYPED_TEST(SolFile, SlacksDeviationsAndFixedVariables) {
  auto l =
      this->lattice("[ 3 ] [ [ 1 2 1 ] ] [ ] [ ] [ [ 1 -1 0 ] ] [ 0 ] [ inf ] [ 0 0 0 ] [ 0 0 7 ] [ 4 4 7 ]");
  l->bestSlack.clear();  // what the preparation came across
  l->solutions.clear();
  this->check(*l, "[ 2 1 7 ]");
  writeSolFile(*l, false);
  // The slack norm takes the equation with the number of the target, here that of the slack: x1 - x2 = 1.
  EXPECT_EQ(this->heads(*l), "[ 2 1 7 ] | 8 | [ 8 ] | 1 | 1;");
  EXPECT_EQ(l->program.stars[1].MN, 3);
}

TYPED_TEST(SolFile, OrderOfTheLines) {
  using T = TypeParam;
  auto l = this->lattice(testing::SMALL);
  auto add = [&](const char* x, long target, long slack, long time, const char* version,
                 const char* parameters) {
    Star<T> star;
    star = Vector<T>(x);
    star.targetNorm = T(target);
    star.slackNorm = T(slack);
    star.secondsUntilDiscovered = time;
    star.version = version;
    star.parameters = parameters;
    l->program.stars.append(star);
  };
  add("[ 8 ]", 1, 0, -1, "2", "a");
  add("[ 7 ]", 1, 0, 5, "2", "b");
  add("[ 6 ]", 1, 0, 5, "2", "a");
  add("[ 5 ]", 1, 0, 5, "1", "b");
  add("[ 4 ]", 1, 0, 4, "2", "b");
  add("[ 3 ]", 1, -1, 9, "2", "b");
  add("[ 2 ]", 0, 9, 9, "2", "b");
  add("[ 1 ]", -4, 9, 9, "", "b");
  writeSolFile(*l, false);
  EXPECT_EQ(this->content(),
            "[ 1 ] | -4 | [ ] | 9 | 9 | b\n"
            "[ 2 ] | 0 | [ ] | 9 | 9 | b | 2\n"
            "[ 3 ] | 1 | [ ] | -1 | 9 | b | 2\n"
            "[ 4 ] | 1 | [ ] | 0 | 4 | b | 2\n"
            "[ 5 ] | 1 | [ ] | 0 | 5 | b | 1\n"
            "[ 6 ] | 1 | [ ] | 0 | 5 | a | 2\n"
            "[ 7 ] | 1 | [ ] | 0 | 5 | b | 2\n"
            "[ 8 ] | 1 | [ ] | 0 | -1 | a | 2\n");
}

// Of stars with the same point and target values the earlier in order stays.
TYPED_TEST(SolFile, DuplicatesAreMerged) {
  using T = TypeParam;
  auto l = this->lattice(testing::SMALL);
  for (const long time : {9, 2, -1, 4}) {
    Star<T> star;
    star = Vector<T>("[ 1 1 ]");
    star.secondsUntilDiscovered = time;
    l->program.stars.append(star);
    star = Vector<T>("[ 1 2 ]");
    star.parameters = "b";
    star.targetValues = Vector<T>(time == 4 ? "[ 1 ]" : "[ ]");
    l->program.stars.append(star);
  }
  writeSolFile(*l, false);
  EXPECT_EQ(
      this->content(),
      "[ 1 1 ] | 0 | [ ] | -1 | 2 | \n[ 1 2 ] | 0 | [ ] | -1 | 2 | b\n[ 1 2 ] | 0 | [ 1 ] | -1 | 4 | b\n");
}

TYPED_TEST(SolFile, ManyDuplicates) {
  using T = TypeParam;
  auto l = this->lattice(testing::SMALL);
  testing::Draws draws(5);
  for (int k = 0; k < 3000; ++k) {
    Star<T> star;
    star.append(T(draws.next(0, 9)));
    star.append(T(draws.next(0, 9)));
    star.secondsUntilDiscovered = draws.next(0, 1000);
    l->program.stars.append(star);
  }
  sol2star(*l);
  EXPECT_EQ(l->program.stars.MN, 100);
}

TYPED_TEST(SolFile, NothingWithoutPermission) {
  auto l = this->lattice(testing::SMALL);
  l->writeEnabled = false;
  this->check(*l, "[ 1 1 ]");
  writeSolFile(*l, false);
  EXPECT_EQ(this->content(), "none");
}

TYPED_TEST(SolFile, UnsetNameWarns) {
  auto l = this->lattice(testing::SMALL);
  l->solFile.clear();
  ::testing::internal::CaptureStderr();
  writeSolFile(*l, false);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "*** solFile is not set - solution write not possible\n");
}

TYPED_TEST(SolFile, FileWithoutLinesIsRemoved) {
  auto l = this->lattice(testing::SMALL);
  this->put("stale\n");
  writeSolFile(*l, false);
  EXPECT_EQ(this->content(), "none");
}

TYPED_TEST(SolFile, UnwritableFileIsToldOnceAndTheRunGoesOn) {
  auto l = this->lattice(testing::SMALL);
  l->solFile = this->folder.path("no/such/folder.sol");
  ::testing::internal::CaptureStderr();
  this->check(*l, "[ 1 1 ]");
  this->check(*l, "[ 1 2 ]");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "*** " + l->solFile + ": No such file or directory\n");
}

// A known vector is touched many times a second: the file is written for what is new, or when it is gone.
TYPED_TEST(SolFile, WrittenOnlyWhenTheTextDiffers) {
  auto l = this->lattice(testing::SMALL);
  this->check(*l, "[ 1 1 ]");
  const std::string before = this->content();
  this->put("tampered\n");
  this->check(*l, "[ 1 1 ]");
  EXPECT_EQ(this->content(), "tampered\n");
  removeFile(this->folder.path("a.sol"));
  this->check(*l, "[ 1 1 ]");
  EXPECT_EQ(this->content(), before);
  this->check(*l, "[ 1 2 ]");
  EXPECT_NE(this->content(), before);
}

TYPED_TEST(SolFile, ParametersFieldFollowsTheParameters) {
  auto l = this->lattice(testing::SMALL);
  l->params.beta.setText("30");
  this->check(*l, "[ 1 1 ]");
  const std::string before = this->content();
  l->params.beta.setText("20");
  writeSolFile(*l, false);
  // Of the two stars of the point the one with the lesser parameters stays.
  EXPECT_NE(this->content(), before);
  EXPECT_NE(this->content().find("--beta=20"), std::string::npos);
}

TYPED_TEST(SolFile, TwoVectorsOfOnePointGiveOneLine) {
  auto l = this->lattice("[ 3 ] [ [ 1 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  this->check(*l, "[ 1 1 ]");
  writeSolFile(*l, false);
  writeSolFile(*l, false);
  EXPECT_EQ(this->heads(*l), "[ 1 1 ] | 0 | [ 0 ] | 0 | 1;");
}

TYPED_TEST(SolFile, ReadsBackWhatItWrote) {
  auto l = this->lattice(testing::SMALL_TARGET);
  this->check(*l, "[ 2 1 ]", foundAfter(7));
  this->check(*l, "[ 0 3 ]", foundAfter(0));
  writeSolFile(*l, false);
  const std::string text = this->content();
  auto other = this->lattice(testing::SMALL_TARGET);
  EXPECT_EQ(this->read(*other, text), "[ 0 3 ][ 2 1 ]");
  EXPECT_EQ(other->bestSlack.secondsUntilDiscovered, 0);
  EXPECT_EQ(other->program.rtu(), TypeParam(-4));
  EXPECT_TRUE(other->writeEnabled);
  EXPECT_EQ(other->params.verb.get(), 2);
  EXPECT_EQ(this->content(), text);
  other->params.verb.set(0);
  l->params.verb.set(0);
  writeSolFile(*other, false);
  EXPECT_EQ(this->content(), text);
}

TYPED_TEST(SolFile, FieldsOfALine) {
  using T = TypeParam;
  auto l = this->lattice(testing::SMALL);
  EXPECT_EQ(this->read(
                *l, " [ 1 1 ]|1.5e1 |\t[ 3 1:1/2 -inf 2e-1 ] | -7/2 | 44 |  --a=1 --b=2 \t| 2.0 | more \r\n"),
            "[ 1 1 ]");
  const Star<T>& star = l->program.stars[1];
  EXPECT_EQ(star.targetNorm, T(15));
  EXPECT_EQ(star.slackNorm, T(-7) / T(2));
  EXPECT_EQ(star.targetValues.MN, 4);
  EXPECT_EQ(star.targetValues[2], T(3) / T(2));
  EXPECT_TRUE(isInfinite(star.targetValues[3]));
  EXPECT_EQ(star.targetValues[4], T(1) / T(5));
  EXPECT_EQ(star.secondsUntilDiscovered, 44);
  EXPECT_EQ(star.parameters, "--a=1 --b=2");
  EXPECT_EQ(star.version, "2.0");
}

TYPED_TEST(SolFile, AcceptedLines) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"\n\n \t\r\n", ""},
      {"[ 1 1 ] | 0 | [ ] | 0 | 3 | --a=1 | 2.2.2\n", "[ 1 1 ]"},
      {"[ 1 1 ] | 0 | [ ] | 0 | 3 | --a=1 | 2.2.2", "[ 1 1 ]"},
      {"\n[ 1 1 ] | 0 | [ ] | 0 | -1 | \n\n[ 1 2 ] | inf | [ ] | -inf | 3\n", "[ 1 1 ][ 1 2 ]"},
      {"[ 1 1 ] 0 [ ] 0 3\n", "[ 1 1 ]"},
      {"[ 1 1 ] | 0 | | 0 | 3\n | 0 | | 0 | 3\n", "[ 1 1 ]"},
      {"// a comment\n[ 1 1 ] /* point */ | 0 | [ ] | 0 | 3 | a // b\n[ 2 1 ] | 0 | [ ] | 0 | 3",
       "[ 1 1 ][ 2 1 ]"},
      {"[ 2/2 1e0 ] | 0 | [ ] | 0 | 3\n", "[ 1 1 ]"},
  };
  for (const auto& [text, stars] : rows) {
    auto l = this->lattice(testing::SMALL);
    EXPECT_EQ(this->read(*l, text), stars) << text;
    EXPECT_EQ(this->content(), text);
  }
}

TYPED_TEST(SolFile, DamagedLinesEndTheRun) {
  const std::pair<std::string, const char*> rows[] = {
      {"junk\n", "Vector: bad input"},
      {"0 0 0\n", "Vector: bad input"},
      {"[ 1 1 ] | 0 | 0 | 3\n", "Vector: bad input"},
      {"[ 1 1 ] | 0\n", "Vector: bad input"},
      {"[ 1 ", "Vector: bad input"},
      {"[ 1 x ] | 0 | [ ] | 0 | 3\n", "Vector: bad input"},
      {"[ 1 ix ] | 0 | [ ] | 0 | 3\n", "Vector: bad input2"},
      {"[ 1 inx ] | 0 | [ ] | 0 | 3\n", "Vector: bad input3"},
      {"[ 1 1 ]\n", "QQ: parse error1"},
      {"[ 1 1 ] | | [ ] | 0 | 3\n", "QQ: parse error1"},
      {"[ 1 1 ] | in | [ ] | 0 | 3\n", "QQ: parse error3"},
      {"[ 1 1 ] | ix | [ ] | 0 | 3\n", "QQ: parse error2"},
      {"[ 1 1 ] | 1/0 | [ ] | 0 | 3\n", "QQ: division by zero1"},
      {"[ 1 1 ] | 5.0 | [ ] | 0 | 3\n", "QQ: parse error1"},
      {"[ 1 1 ] | 1e99999999 | [ ] | 0 | 3\n", "Vector: bad input"},
      {"[ 1 1 ] | 0 | [ 1\n", "Vector: bad input"},
      {"[ 1 1 ] | 0 | [ ] | 0\n", "QQ: parse error1"},
      {"[ 1 1 ] | 0 | [ ] | 0 | soon\n", "QQ: parse error1"},
      {"[ 1 1 ] | 0 | [ ] | 0 | 3.5\n", "QQ: parse error1"},
      {"[ 1 1 ] | 0 | [ ] | 0 | 99999999999999999999\n", "QQ: parse error1"},
      {"[ 1 1 ] /* open\n", "Comment is not terminated"},
      {"[ 1 /* 1 ] | 0 | [ ] | 0 | 3\n", "Comment is not terminated"},
      {"[ 1 // 1 ] | 0 | [ ] | 0 | 3\n", "Vector: bad input"},
      {std::string("\0\x7f\x45\x4c\x46", 5), "Vector: bad input"},
      {"[ 1 1 ] | 0 | [ ] | 0 | 3\n[ 1 ", "Vector: bad input"},
  };
  for (const auto& [text, message] : rows) {
    auto l = this->lattice(testing::SMALL);
    this->put(text);
    EXPECT_FAILURE(readStarsFromSolFile(*l, false, false), message) << text;
    EXPECT_EQ(this->content(), text);
  }
}

TYPED_TEST(SolFile, MissingFileAndFolderAreEmpty) {
  auto l = this->lattice(testing::SMALL);
  EXPECT_NO_THROW(readStarsFromSolFile(*l, false, false));
  std::filesystem::create_directory(this->folder.path("a.sol"));
  EXPECT_NO_THROW(readStarsFromSolFile(*l, false, false));
  EXPECT_EQ(l->program.stars.MN, 0);
}

TYPED_TEST(SolFile, BenchmarkReadsNothing) {
  auto l = this->lattice(testing::SMALL);
  l->params.bench.set(2.0F);
  EXPECT_EQ(this->read(*l, "[ 1 1 ] | 0 | [ ] | 0 | 3\n"), "");
  EXPECT_EQ(this->log, "");
}

TYPED_TEST(SolFile, StarsThatDoNotFitAreDropped) {
  auto l = this->lattice(testing::SMALL);
  const std::string tail = " | 0 | [ ] | 0 | 3\n";
  EXPECT_EQ(this->read(*l, "[ 1/2 1 ]" + tail + "[ 1 1 1 ]" + tail + "[ ]" + tail + "[ 4 4 ]" + tail +
                               "[ 2 1 ]" + tail),
            "[ 2 1 ]");
  const std::string foreign = "|    |-> Star-Vector is not part of the lattice\n";
  EXPECT_EQ(this->log, "|-> Reading sol file ...\n" + foreign + foreign + foreign +
                           "|    |-> Star-Vector is neither a solution nor a feasible vector\n");
}

// Symptom: after a variable had been fixed at another value, the points of the former program stayed.
TYPED_TEST(SolFile, StarWithAnotherFixedValueIsDropped) {
  auto l = this->lattice("[ ] [ ] [ ] [ ] [ [ 1 1 1 ] ] [ 3 ] [ 9 ] [ 0 0 0 ] [ 0 3 0 ] [ 4 3 4 ]");
  EXPECT_EQ(this->read(*l, "[ 1 5 1 ] | 0 | [ ] | 0 | 3\n[ 2 3 1 ] | 0 | [ ] | 0 | 3\n"), "[ 2 3 1 ]");
  EXPECT_NE(this->log.find("Star-Vector is not part of the lattice"), std::string::npos);
}

TYPED_TEST(SolFile, StarThatBreaksASlackIsDropped) {
  auto l = this->lattice("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  EXPECT_EQ(this->read(*l, "[ 1 1 ] | 0 | [ ] | 0 | 3\n[ 2 1 ] | 0 | [ ] | 0 | 3\n"), "[ 2 1 ]");
  EXPECT_NE(this->log.find("Star-Vector is not part of the lattice"), std::string::npos);
}

// Infinitely many solutions may be missing: the file of an unprepared run says nothing of that.
TYPED_TEST(SolFile, QuietBelowVerbosityTwo) {
  auto l = this->lattice(testing::SMALL);
  this->put("[ 4 4 ] | 0 | [ ] | 0 | 3\n");
  l->params.verb.set(1);
  ::testing::internal::CaptureStdout();
  readStarsFromSolFile(*l, false, false);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(l->params.verb.get(), 1);
}

TYPED_TEST(SolFile, ReadStarsDoNotWrite) {
  auto l = this->lattice(testing::SMALL);
  const std::string text = "[ 1 1 ] | 0 | [ ] | 0 | 3\n";
  this->read(*l, text);
  EXPECT_EQ(this->content(), text);
  EXPECT_EQ(l->solutions[1].secondsUntilDiscovered, 3);
  EXPECT_TRUE(l->writeEnabled);
}

TYPED_TEST(SolFile, ReportOfTheStars) {
  using T = TypeParam;
  auto l = this->lattice(
      "[ -inf inf ] [ [ 1 1 ] [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  Star<T> star;
  star = Vector<T>("[ 2 1 ]");
  l->program.stars.append(star);
  EXPECT_EQ(starReport(*l), "x = [ 2 1 ]");
  star.slackNorm = T(0);
  star.targetNorm = T(2);
  star.targetValues = Vector<T>("[ 3 1 ]");
  l->program.stars.append(star);
  star.secondsUntilDiscovered = 61;
  l->program.stars.append(star);
  l->program.dt[2] = T(5);
  const std::string block =
      "x = [ 2 1 ]\n\nTarget values: [ 3\u2193 1\u21925 ]\nTarget Norm: 2\nSlack Norm: 0";
  EXPECT_EQ(starReport(*l), "x = [ 2 1 ]\n---\n" + block + "\n---\n" + block +
                                "\nFound after: 1:01 min(s):sec(s) == 61 secs");
  l->program.dt[2] = infinity<T>();
  EXPECT_NE(starReport(*l).find("[ 3\u2193 1\u2191 ]"), std::string::npos);
}

// What one precision wrote, the other reads.
TEST(SolFileAcross, MixedFormAndSeventeenDigits) {
  TemporaryFolder folder;
  const std::string path = folder.path("a.sol");
  const char* program = "[ -inf ] [ [ 0.25 1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 1 0 ] [ 0 0 ] [ 4 4 ]";
  auto exact = latticeOf<QQ>(program);
  auto standard = latticeOf<dbl_t>(program);
  exact->solFile = standard->solFile = path;
  exact->writeEnabled = standard->writeEnabled = true;
  exact->checkSolution(latticeVector(*exact, "[ 0.4 1 ]"), foundAfter(5), false);
  writeSolFile(*exact, false);
  EXPECT_EQ(exact->program.stars[1].targetNorm, QQ("1:1/10"));
  readStarsFromSolFile(*standard, false, false);
  ASSERT_EQ(standard->program.stars.MN, 1);
  EXPECT_TRUE(isZero(standard->program.stars[1].targetNorm - 1.1L));
  writeSolFile(*standard, false);
  auto again = latticeOf<QQ>(program);
  again->solFile = path;
  readStarsFromSolFile(*again, false, false);
  EXPECT_EQ(again->program.stars.MN, 1);
}

TEST(SolFileStandard, DigitsThatWouldBeLostAskForExactArithmetic) {
  TemporaryFolder folder;
  folder.write("a.sol", "[ 1 1 ] | 10000000000000000000001 | [ ] | 0 | 3\n");
  auto l = latticeOf<dbl_t>(testing::SMALL);
  l->solFile = folder.path("a.sol");
  EXPECT_THROW(readStarsFromSolFile(*l, false, false), FatalPrecisionException);
  EXPECT_EQ(l->program.stars.MN, 0);
}

// Stands for the console, whose commands come while stars are read.
template <class T>
class SettingArrives : public SearchEvents<T, dbl_t> {
 public:
  void found(Lattice<T, dbl_t>& l) override { l.params.verb.set(1); }
  void boundMoved(Lattice<T, dbl_t>&) override {}
  void limitReached(Lattice<T, dbl_t>&) override {}
};

// Symptom: a SET verb=1 that had been answered while a long .sol file was read was lost.
TYPED_TEST(SolFile, ASettingThatComesWhileStarsAreReadStays) {
  using T = TypeParam;
  auto l = this->lattice(testing::SMALL);
  SettingArrives<T> events;
  l->events = &events;
  this->read(*l, "[ 1 1 ] | 0 | [ ] | 0 | 3\n[ 2 1 ] | 0 | [ ] | 0 | 4\n[ 9 9 ] | 0 | [ ] | 0 | 4\n");
  EXPECT_EQ(l->program.stars.MN, 2);
  EXPECT_EQ(l->verb(), 1);
  EXPECT_EQ(l->params.verb.value.get(), "1");
  l->params.verb.set(0);
  l->forgetFinds();
  readmitStars(*l, ConversionArray<Star<T>>(l->program.stars), false);
  EXPECT_EQ(l->verb(), 1);
}

}  // namespace
}  // namespace latbox
