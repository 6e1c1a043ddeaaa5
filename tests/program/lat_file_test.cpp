#include <filesystem>

#include "driver/temporary_folder.h"
#include "lib/exceptions.h"
#include "lib/os/clock.h"
#include "lib/os/file.h"
#include "params/statistics.h"
#include "program/generation.h"
#include "program/lat_file.h"
#include "support/failure.h"
#include "support/lattice.h"
#include "support/rows.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::shown;
using testing::TemporaryFolder;

long aMinuteIn() {
  return 1000060;
}

constexpr const char* COMMENT = "\n// B -- l, r -- c, R -- lx, rx, fx -- tu, At, dt, lrtu\n";

constexpr const char* SMALL_TEXT =
    "[\n[ -8 -4 -4 1 ]\n[ 4 2 0 0 ]\n[ 4 0 2 0 ]\n]\n\n"
    "[ -4 -4 -4 1 ]\n[ 4 4 4 1 ]\n\n"
    "[ 2 1 1 1 ]\n4\n\n"
    "[ 0 0 ]\n[ 4 4 ]\n\n"
    "0\n(-inf, inf)\n\n60\n";

template <class T>
class LatFile : public ::testing::Test {
 protected:
  using L = Lattice<T, dbl_t>;
  TemporaryFolder folder;

  void SetUp() override {
    setClock(aMinuteIn);
    statisticsOf<T>().startTime.set(1000000);
  }
  void TearDown() override { setClock(nullptr); }

  void name(L& l) {
    l.latFile = folder.path("a.lat");
    l.solFile = folder.path("a.sol");
    l.writeEnabled = true;
  }
  std::unique_ptr<L> generated(const std::string& program) {
    auto l = latticeOf<T>(program);
    name(*l);
    return l;
  }
  std::unique_ptr<L> fresh(const std::string& program) {
    auto l = testing::unpreparedLattice<T>(program);
    name(*l);
    return l;
  }
  std::unique_ptr<L> restored(const std::string& program) {
    auto l = fresh(program);
    readLatFile(*l);
    return l;
  }
  std::string content() const {
    std::string text;
    return readFile(folder.path("a.lat"), text) ? text : "none";
  }
  void put(const std::string& text) { std::ofstream(folder.path("a.lat"), std::ios::binary) << text; }
  static void expectSame(const L& a, const L& b) {
    EXPECT_EQ(a.B_save, b.unscaled(b.B));
    EXPECT_EQ(shown(a.lbnd), shown(b.lbnd));
    EXPECT_EQ(shown(a.ubnd), shown(b.ubnd));
    EXPECT_EQ(a.c, b.c);
    EXPECT_EQ(a.R, b.R);
    EXPECT_EQ(a.rank, b.rank);
    EXPECT_EQ(a.dim, b.dim);
    EXPECT_EQ(a.checkMode, CHECK_MODE_FINAL);
    EXPECT_EQ(a.generatedTu, b.generatedTu);
    EXPECT_EQ(a.TT.MN, 1);
    EXPECT_EQ(a.lx, b.lx);
    EXPECT_EQ(a.rx, b.rx);
    EXPECT_EQ(shown(a.lrtu), shown(b.lrtu));
    EXPECT_EQ(shown(a.Ag), shown(b.Ag));
    EXPECT_EQ(a.normBound, b.normBound);
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(LatFile, NumberTypes);

TYPED_TEST(LatFile, WholeText) {
  this->generated(testing::SMALL)->writeLatFile();
  EXPECT_EQ(this->content(), std::string(SMALL_TEXT) + COMMENT);
}

TYPED_TEST(LatFile, NothingWithoutPermission) {
  auto l = this->generated(testing::SMALL);
  l->writeEnabled = false;
  l->writeLatFile();
  EXPECT_EQ(this->content(), "none");
}

TYPED_TEST(LatFile, UnsetNameWarnsAtEachWrite) {
  auto l = this->generated(testing::SMALL);
  l->latFile.clear();
  ::testing::internal::CaptureStderr();
  l->writeLatFile();
  l->writeLatFile();
  const std::string line = "*** latFile is not set - lattice write not possible\n";
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), line + line);
}

TYPED_TEST(LatFile, UnwritableFileIsToldOnce) {
  auto l = this->generated(testing::SMALL);
  std::filesystem::create_directory(this->folder.path("b.lat"));
  l->latFile = this->folder.path("b.lat");
  ::testing::internal::CaptureStderr();
  l->writeLatFile();
  l->writeLatFile();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "*** " + l->latFile + ": Is a directory\n");
}

TYPED_TEST(LatFile, ReadsBackTheSmallLattice) {
  auto l = this->generated(testing::SMALL);
  l->writeLatFile();
  auto again = this->restored(testing::SMALL);
  this->expectSame(*again, *l);
  EXPECT_EQ(again->savedSeconds, 60);
  EXPECT_FALSE(programAhead(*again));
  again->params.sol.set(0);
  EXPECT_EQ(again->checkSolution(latticeVector(*again, "[ 1 1 ]"), NOW, false),
            CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
}

TYPED_TEST(LatFile, ReducedAndWeightedBasis) {
  using T = TypeParam;
  auto l = this->generated(testing::SMALL);
  l->swapBase(1, 3, false);
  testing::rows(*l).B[2] += l->B[1];
  l->setScale(2, T(5));
  l->setTranslation(1, T(2));
  l->writeLatFile();
  auto again = this->restored(testing::SMALL);
  this->expectSame(*again, *l);
  EXPECT_TRUE(again->unweighted());
}

// Slacks, deviations, a target bound, fixed, swapped and free variables, digits, equations.
constexpr const char* RICH =
    "[ -inf 5 ] [ [ 1 2 0 0 1 ] [ 1 1 1 0 1 ] ] [ [ 1 1 0 -1 1 ] ] [ 9 ] [ [ 1 -1 0 0 1 ] [ 1 1 1 1 1 ] ] "
    "[ -4 0 ] [ inf 40 ] [ 0 0 0 0 0 ] [ 0 0 -inf -inf 3 ] [ 9 8 6 inf 3 ]";

TYPED_TEST(LatFile, RichProgram) {
  auto l = this->generated(RICH);
  const Vector<TypeParam> v = latticeVector(*l, "[ 5 2 -1 1 3 ]");
  ASSERT_TRUE(l->isMember(v));
  l->writeLatFile();
  auto again = this->restored(RICH);
  this->expectSame(*again, *l);
  EXPECT_TRUE(again->isMember(latticeVector(*again, "[ 5 2 -1 1 3 ]")));
  EXPECT_EQ(again->slackCount, l->slackCount);
  EXPECT_EQ(again->deviationCount, l->deviationCount);
  const std::string before = this->content();
  again->writeLatFile();
  EXPECT_EQ(this->content(), before);
}

TYPED_TEST(LatFile, AfterARegeneration) {
  auto l = this->generated(testing::SMALL_TARGET);
  l->finishEnabled = true;
  EXPECT_THROW(l->checkSolution(latticeVector(*l, "[ 2 1 ]"), NOW, false), RestartException);
  l->writeLatFile();
  EXPECT_NE(this->content().find("\n1\n(-1, 0)\n"), std::string::npos);
  auto again = this->restored(testing::SMALL_TARGET);
  this->expectSame(*again, *l);
  EXPECT_TRUE(again->program.tu);
  EXPECT_EQ(again->program.rtu(), TypeParam(0));
}

// The bounds are those of the basis in the file, though `program` has moved on.
TYPED_TEST(LatFile, ProgramAheadOfItsLattice) {
  auto l = this->generated("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  l->writeLatFile();
  const std::string before = this->content();
  l->writeEnabled = false;
  l->params.sol.set(0);
  l->checkSolution(latticeVector(*l, "[ 1 2 ]"), NOW, false);
  EXPECT_EQ(l->program.rx[2], TypeParam(2));
  l->writeEnabled = true;
  l->writeLatFile();
  EXPECT_EQ(this->content(), before);
}

TYPED_TEST(LatFile, MissingFileFails) {
  auto l = this->fresh(testing::SMALL);
  EXPECT_FAILURE(readLatFile(*l), "The lattice file [ " + l->latFile + " ] can't be opened!");
  std::filesystem::create_directory(l->latFile);
  EXPECT_FAILURE(readLatFile(*l), "The lattice file [ " + l->latFile + " ] can't be opened!");
}

TYPED_TEST(LatFile, LogLines) {
  this->generated(testing::SMALL)->writeLatFile();
  auto l = this->fresh(testing::SMALL);
  l->params.verb.set(2);
  ::testing::internal::CaptureStdout();
  readLatFile(*l);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> Reading lat file ...\n"
            "|    |-> Optimization program: Targets = 0, Equations = 0, Inequations = 1, Variables = 2\n");
}

TYPED_TEST(LatFile, AcceptedTexts) {
  const std::string basis = "[ [ -8 -4 -4 1 ] [ 4 2 0 0 ] [ 4 0 2 0 ] ] ";
  const std::string rows[] = {
      SMALL_TEXT,
      basis + "[ -4 -4 -4 1 ] [ 4 4 4 1 ] [ 2 1 1 1 ] 4 [ 0 0 ] [ 4 4 ] 0 (-inf,inf) 0",
      basis + "[ -4 -4 -4 1 ] [ 4 4 4 1 ] // c\n [ 2 1 1 1 ] 4 [ 0 0 ] [ 4 4 ] 0 ( -inf , inf ) 0 /* open",
      basis + "[ -4 -4 -4 1 ] [ 4 4 4 1 ] [ 2 1 1 1 ] 4e0 [ 0 0 ] [ 4 40e-1 ] 0\r\n(-3:1/2, 7.5)\r\n-7 rest",
  };
  for (const std::string& text : rows) {
    this->put(text);
    auto l = this->restored(testing::SMALL);
    EXPECT_EQ(shown(l->B), "[ -8 -4 -4 1 ][ 4 2 0 0 ][ 4 0 2 0 ]") << text;
    EXPECT_EQ(l->R, TypeParam(4));
    EXPECT_EQ(this->content(), text);
  }
}

// A text that ends anywhere never gives a lattice.
TYPED_TEST(LatFile, EveryTruncationEndsTheRun) {
  const std::string text = SMALL_TEXT;
  auto l = this->fresh(testing::SMALL);
  const std::size_t end = text.find("60");
  for (std::size_t length = 0; length <= end; length += 3) {
    this->put(text.substr(0, length));
    EXPECT_EXIT(
        {
          try {
            readLatFile(*l);
          } catch (const ReadException& e) {
            fail(e.what());
          }
        },
        ::testing::ExitedWithCode(1), "FAIL: (Vector|Matrix|QQ|check vector|c vector|The dimensions)")
        << length;
  }
}

TYPED_TEST(LatFile, DamagedTextsEndTheRun) {
  const std::string basis = "[ [ -8 -4 -4 1 ] [ 4 2 0 0 ] [ 4 0 2 0 ] ] ";
  const std::string bounds = basis + "[ -4 -4 -4 1 ] [ 4 4 4 1 ] ";
  const std::string scale = bounds + "[ 2 1 1 1 ] 4 ";
  const std::string box = scale + "[ 0 0 ] [ 4 4 ] ";
  const char* dimensions = "check vector dimensions are incorrect";
  const std::pair<std::string, std::string> rows[] = {
      {"", "Matrix: bad input"},
      {"junk", "Matrix: bad input"},
      {std::string("\x7f\x45\x4c\x46\0\1", 6), "Matrix: bad input"},
      {"[ ]", "Matrix: bad input"},
      {"[ [ 1 2 ] 3 ]", "Matrix: bad input"},
      {"[ [ 1 2", "Vector: bad input"},
      {"[ [ 1 2 ]", "Matrix: bad input"},
      {"[ [ 1 2 ] [ 1 2 3 ] ]", "Matrix row dimension mismatch"},
      {"[ [ 1 2 3 ] [ 1 2 ] ]", "Matrix row dimension mismatch"},
      {"[ [ 1 inf ] ]", "Vector: bad input"},
      {"[ [ 1 ix ] ]", "Vector: bad input2"},
      {basis + "[ -4 -4 -4 ] [ 4 4 4 1 ]", dimensions},
      {basis + "[ -4 -4 -4 1 ] [ 4 4 4 ]", dimensions},
      {basis + "[ -4 -4 -4 1 ]", dimensions},
      {bounds, "c vector dimension mismatch"},
      {bounds + "[ 2 1 1 ] 4", "c vector dimension mismatch"},
      {bounds + "[ 2 0 1 1 ] 4", "Vector: bad input"},
      {bounds + "[ 2 1 1 1 ]", "QQ: parse error1"},
      {bounds + "[ 2 1 1 1 ] 0", "Vector: bad input"},
      {bounds + "[ 2 1 1 1 ] inf", "Vector: bad input"},
      {bounds + "[ 2 1 1 1 ] 5.0", "QQ: parse error1"},
      {scale + "[ 0 0 ] [ 4 4 ] 2 (-inf, inf) 0", "Vector: bad input"},
      {scale + "[ 0 0 ] [ 4 4 ] yes", "QQ: parse error1"},
      {scale + "[ 0 ] [ 4 4 ] 0 (-inf, inf) 0",
       "The dimensions of the solution properties (lx, rx, dx) differ (1, 2, 2)"},
      {scale + "[ 0 0 ] [ 4 4 4 ] 0 (-inf, inf) 0",
       "The dimensions of the solution properties (lx, rx, dx) differ (2, 3, 2)"},
      {box + "0 -inf, inf) 0", "Vector: bad input"},
      {box + "0 (-inf inf) 0", "Vector: bad input"},
      {box + "0 (-inf, inf 0", "Vector: bad input"},
      {box + "0 (-inf, ) 0", "Vector: bad input"},
      {box + "0 (-inf, .) 0", "QQ: parse error1"},
      {box + "0 (-inf, inf)", "QQ: parse error1"},
      {box + "1 (-inf, inf) 0", "Vector: bad input"},
      {box + "1 (3, 2) 0", "Vector: bad input"},
      {box + "1 (1, 2) 0", dimensions},  // no coordinate for the target
      {"[ [ 1 2 3 ] ] [ 0 0 1 ] [ 1 1 1 ] [ 1 1 1 ] 4 [ 0 0 ] [ 4 4 ] 0 (-inf, inf) 0", dimensions},
  };
  for (const auto& [text, message] : rows) {
    auto l = this->fresh(testing::SMALL);
    this->put(text);
    EXPECT_FAILURE(readLatFile(*l), message) << text;
    EXPECT_EQ(this->content(), text);
  }
}

TYPED_TEST(LatFile, StreamThatEndedBeforeThrows) {
  for (const char* text : {"[ [ 1 2 ] ]", "[ [ 1 2 ] ] [ 1 2 ] [ 1 2 ] [ 1 2 ] 3"}) {
    auto l = this->fresh("[ ] [ ] [ ] [ ] [ [ 1 ] ] [ 1 ] [ 3 ] [ 0 ] [ 0 ] [ 4 ]");
    this->put(text);
    try {
      readLatFile(*l);
      ADD_FAILURE() << text;
    } catch (const ReadException& e) {
      EXPECT_STREQ(e.what(), "Vector: bad stream");
    }
    EXPECT_EQ(l->rank, 0);
    EXPECT_EQ(l->checkMode, CHECK_MODE_NONE);
  }
}

TYPED_TEST(LatFile, MoreTargetsThanColumns) {
  auto l = this->fresh("[ -inf -inf ] [ [ 1 ] [ 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 4 ]");
  this->put("[ [ 1 ] ]");
  EXPECT_FAILURE(readLatFile(*l), "target dimension > lattice dimension");
}

TEST(LatFileStandard, ValuesBeyondTheLimitAskForExactArithmetic) {
  const std::pair<const char*, const char*> rows[] = {
      {"[ [ 2000000000 1 ] ]", "B_save overflow"},
      {"[ [ 2 1 ] ] [ 2000000000 1 ] [ 1 1 ]", "lbnd overflow"},
      {"[ [ 2 1 ] ] [ 1 1 ] [ 1 2000000000 ]", "ubnd overflow"},
      {"[ [ 2 1 ] ] [ 1 1 ] [ 1 1 ] [ 2000000000 1 ]", "c overflow"},
  };
  TemporaryFolder folder;
  for (const auto& [text, message] : rows) {
    auto l = testing::unpreparedLattice<dbl_t>("[ ] [ ] [ ] [ ] [ [ 1 ] ] [ 1 ] [ 3 ] [ 0 ] [ 0 ] [ 4 ]");
    folder.write("a.lat", text);
    l->latFile = folder.path("a.lat");
    testing::expectPrecisionException([&] { readLatFile(*l); }, message);
    EXPECT_EQ(l->rank, 0);
  }
}

// Symptom: the second run read 166151711:2/3 rounded and ended with "Precision lost during conversion".
TEST(LatFileStandard, FractionsOfAWideRangeAskForExactArithmetic) {
  const char* program = "[ ] [ ] [ ] [ ] [ [ 1 1 0 ] ] [ 7 ] [ 12 ] [ 0 0 0 ] [ -1 0 0 ] [ 4 99991 997 ]";
  TemporaryFolder folder;
  auto exact = latticeOf<QQ>(program);
  exact->latFile = folder.path("a.lat");
  exact->writeEnabled = true;
  exact->writeLatFile();
  auto standard = testing::unpreparedLattice<dbl_t>(program);
  standard->latFile = folder.path("a.lat");
  testing::expectPrecisionException([&] { readLatFile(*standard); }, "B_save overflow");
  EXPECT_EQ(standard->rank, 0);
  auto again = testing::unpreparedLattice<QQ>(program);
  again->latFile = folder.path("a.lat");
  readLatFile(*again);
  EXPECT_EQ(again->B_save, exact->B_save);
}

// What one precision wrote, the other reads; multipliers such as 4/3 are fractions in one and decimals in the
// other.
template <class From, class To>
void readAcross() {
  const char* program = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 6 ] [ 0 0 ] [ -2 0 ] [ 3 4 ]";
  TemporaryFolder folder;
  auto source = latticeOf<From>(program);
  auto target = testing::unpreparedLattice<To>(program);
  source->latFile = target->latFile = folder.path("a.lat");
  source->writeEnabled = true;
  source->writeLatFile();
  readLatFile(*target);
  for (long i = 1; i <= source->rank; ++i)
    for (long j = 1; j <= source->dim; ++j)
      EXPECT_TRUE(isZero(toDouble(source->B[i][j]) - toDouble(target->B[i][j])));
  target->params.sol.set(0);
  EXPECT_EQ(target->checkSolution(latticeVector(*target, "[ 1 3 ]"), NOW, false),
            CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
}

TEST(LatFileAcross, StandardToExtended) {
  readAcross<dbl_t, QQ>();
}

TEST(LatFileAcross, ExtendedToStandard) {
  readAcross<QQ, dbl_t>();
}

}  // namespace
}  // namespace latbox
