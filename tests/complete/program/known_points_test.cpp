#include "complete/program/known_points.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "complete/solving/solver.h"
#include "support.h"

namespace latbox::complete {
namespace {

// Minimise 2 x + 3 y with x + y >= 3 in 0..4: the best point is (3, 0), with 6.
const char* const PROGRAM = "[ -inf ] [ [ 2 3 ] ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

class KnownPointsTest : public ::testing::Test {
 protected:
  KnownPointsTest()
      : program_(readProgram(PROGRAM, "p.opt")),
        path_(::testing::TempDir() + "known_" + std::to_string(getpid()) + ".sol"),
        known_(program_, path_, interrupt_) {
    std::filesystem::remove(path_);
  }
  ~KnownPointsTest() override { std::filesystem::remove(path_); }

  // In the place of what was there, as the size alone tells a file of the same moment.
  void write(const std::string& text) {
    std::ofstream(path_, std::ios::binary) << text;
    known_.look();
  }

  std::optional<Point> taken(std::optional<Norms> than = {}) { return known_.takeBetter(than); }

  Program program_;
  std::string path_;
  std::atomic<bool> interrupt_ = false;
  KnownPoints known_;
};

Point pointOf(long x, long y) {
  return {Rational(x), Rational(y)};
}

TEST_F(KnownPointsTest, AFileThatIsNotThereHoldsNone) {
  known_.look();
  EXPECT_FALSE(interrupt_);
  EXPECT_EQ(taken(), std::nullopt);
}

TEST_F(KnownPointsTest, TheBestIsTakenOnce) {
  write("[ 4 4 ] | 1 | whatever\n[ 4 0 ]\n[ 0 4 ] | 0\n");
  EXPECT_TRUE(interrupt_);
  EXPECT_EQ(taken(), pointOf(4, 0));
  EXPECT_FALSE(interrupt_);
  EXPECT_EQ(taken(), std::nullopt);
}

TEST_F(KnownPointsTest, OnlyPointsOfTheProgramAreBelieved) {
  // Outside of a row, of the box, of the grid; too short, too long; torn; no line at all.
  for (const char* line : {"[ 1 1 ] | -100\n", "[ 5 0 ] | 0\n", "[ 7/2 0 ]\n", "[ 3 ]\n", "[ 3 0 0 ]\n",
                           "[ 3 0 ", "[ 3 0 ]", "hello\n", "[ 3 a ]\n", "[ 1/0 3 ]\n", "\n\n\n"}) {
    write(line);
    EXPECT_FALSE(interrupt_) << line;
    EXPECT_EQ(taken(), std::nullopt) << line;
  }
}

TEST_F(KnownPointsTest, AWorseOneIsNotTaken) {
  write("[ 3 1 ]\n");
  EXPECT_EQ(taken(Norms{9, 0}), std::nullopt);
  write("[ 3 1 ]\n[ 3 0 ]\n");
  EXPECT_EQ(taken(Norms{9, 0}), pointOf(3, 0));
}

TEST_F(KnownPointsTest, InterruptsForWhatIsWantedAlone) {
  known_.want(Rational(8));
  write("[ 3 1 ]\n");
  EXPECT_FALSE(interrupt_);
  known_.want(Rational(9));
  EXPECT_TRUE(interrupt_);
  EXPECT_EQ(taken(), pointOf(3, 1));
  known_.end();
  write("[ 3 1 ]\n[ 3 0 ]\n");
  EXPECT_FALSE(interrupt_);
}

class Ignore : public Finds {
 public:
  void begin() override {}
  void list(const Point&, const Norms&) override {}
  unsigned long count() const override { return 0; }
  void replace(const Point& x, const Norms&) override {
    if (!first) first = x;
    last = x;
  }
  std::optional<Point> first;
  Point last;
};

TEST_F(KnownPointsTest, TheSolverBeginsWithIt) {
  write("[ 3 1 ]\n");
  SearchControl control;
  Journal journal(control);
  Ignore finds;
  Task task;
  task.known = &known_;
  EXPECT_EQ(solve(program_, task, finds, journal), Outcome::COMPLETE);
  EXPECT_EQ(finds.first, pointOf(3, 1));
  EXPECT_EQ(finds.last, pointOf(3, 0));
}

}  // namespace
}  // namespace latbox::complete
