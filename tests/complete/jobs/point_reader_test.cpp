#include "complete/jobs/point_reader.h"

#include "../support.h"
#include "complete/files/points_file.h"
#include "complete/files/words.h"
#include "complete/jobs/splitting.h"
#include "complete/program/opt_reader.h"
#include "complete/program/presolve.h"

namespace latbox::complete::jobs {
namespace {

// What is said of lines, by words or by GMP: equations of long numbers leave nothing to words.
class Reader {
 public:
  Reader(const std::string& scale, const std::string& digits)
      : program_(readProgram("[ ] [ ] [ [ " + scale + " " + scale + " -" + scale + " " + scale + " ] ] [ " +
                                 scale + " ] [ ] [ ] [ ] [ " + digits +
                                 " 0 0 0 ] [ -3 0 0 0 ] [ 9 12 12 12 ]",
                             "p.opt")) {
    IntegerProgram whole = integerProgramOf(program_);
    EXPECT_TRUE(tighten(whole));
    BoxLattice lattice = *boxLatticeOf(whole);
    settle(lattice);
    for (const Portion& portion : split(lattice, {{}}, 2)) {
      entries_.emplace_back();
      entries_.back().pieces = portion.pieces;
    }
    lattice_ = withDual(std::move(lattice));
  }

  // Of the piece that has the first line, if any has.
  std::string judge(const std::vector<std::string>& lines, std::vector<Piece> open = {}) const {
    Result result;
    result.open = std::move(open);
    for (const std::string& line : lines) result.lines += line + "\n";
    result.points = lines.size();
    return judge(result);
  }

  std::string judge(const Result& result) const {
    const PointReader reader(program_, lattice_);
    std::string complaint;
    for (const Entry& entry : entries_) try {
        reader.judge(result, entry);
        return "";
      } catch (const BadWords& e) {
        if (complaint.empty() || complaint.find("another piece") != std::string::npos) complaint = e.what();
      }
    return complaint;
  }

  const std::vector<Entry>& entries() const { return entries_; }

 private:
  Program program_;
  PieceLattice lattice_;
  std::vector<Entry> entries_;
};

constexpr const char* LONG = "1000000000000000000000000000000";
const char* const WELL = "[ 1 0 0 0 ] | 0 | [ ] | 0 | 0 | --job=1";

TEST(PointReader, SaysTheSameByWordsAndByLongNumbers) {
  const Reader words("1", "0");
  const Reader gmp(LONG, "0");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {WELL, ""},
      {"[ -3 12 8 0 ] | 0 | [ ] | 0 | 12345678901234567890 | ", ""},
      {"[ -1 10 8 0 ] | 0 | [ ] | 0 | 7 | --seed=1 --job=1", ""},
      {"[ 1 0 0 1 ] | 0 | [ ] | 0 | 0 | ", "a point that was found is no point of the program"},
      {"[ -4 12 7 0 ] | 0 | [ ] | 0 | 0 | ", "a point that was found is no point of the program"},
      {"[ 1 13 13 0 ] | 0 | [ ] | 0 | 0 | ", "a point that was found is no point of the program"},
      {"[ 99999999999999999999 0 0 0 ] | 0 | [ ] | 0 | 0 | ",
       "a point that was found is no point of the program"},
      {"[ 01 0 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 -0 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 00 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 0/2 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[  1 0 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 0 0 0  ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {" [ 1 0 0 0 ] | 0 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 1 | [ ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ 0 ] | 0 | 0 | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ ] | 0 | x | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ ] | 0 |  | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ ] | 0 | -1 | ", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ ] | 0 | 0 | a | b", "another line than that of its point"},
      {"[ 1 0 0 0 ] | 0 | [ ] | 0 | 0", "another line than that of its point"},
      {"[ 1 0 0 0 ]", "another line than that of its point"},
      {"[ 1 0 0 1/2 ] | 0 | [ ] | 0 | 0 | ", "a value between two steps"},
      {"[ 1 0 0 ] | 0 | [ ] | 0 | 0 | ", "a value that is none"},
      {"[ 1 0 0 0 0 ] | 0 | [ ] | 0 | 0 | ", "a point of another number of variables"},
      {"[ 1 0 0 - ] | 0 | [ ] | 0 | 0 | ", "a value that is none"},
      {"[ 1 0 0 0", "a point of another number of variables"},
      {"[ ", "a value that is none"},
      {"", "no point"},
      {"x", "no point"}};
  for (const auto& [line, complaint] : cases) {
    const std::string whole = complaint.empty() ? "" : "point 1: " + complaint;
    EXPECT_EQ(words.judge({line}), whole) << line;
    EXPECT_EQ(gmp.judge({line}), whole) << line;
  }
}

TEST(PointReader, WantsEachPointOnce) {
  for (const Reader& reader : {Reader("1", "0"), Reader(LONG, "0")}) {
    EXPECT_EQ(reader.judge({WELL, "[ 1 0 0 0 ] | 0 | [ ] | 0 | 9 | "}), "point 2: stands there twice");
    Result result;
    result.lines = std::string(WELL) + "\n";
    result.points = 2;
    EXPECT_EQ(reader.judge(result), "1 points, not 2");
    result.points = 0;
    EXPECT_EQ(reader.judge(result), "1 points, not 0");
  }
}

TEST(PointReader, WantsPointsOfThePiece) {
  for (const Reader& reader : {Reader("1", "0"), Reader(LONG, "0")}) {
    ASSERT_EQ(reader.entries().size(), 2u);
    EXPECT_EQ(reader.judge({WELL}), "");
    // What the result has left is everything.
    EXPECT_EQ(reader.judge({WELL}, {{}}), "point 1: a point of another piece");
    std::set<std::size_t> pieces;
    for (const char* line :
         {"[ -3 4 0 0 ]", "[ 9 0 8 0 ]", "[ 1 12 12 0 ]", "[ 1 0 12 12 ]", "[ -3 0 8 12 ]", "[ 9 4 12 0 ]"})
      for (std::size_t i = 0; i < 2; ++i)
        if (reader.judge({std::string(line) + " | 0 | [ ] | 0 | 0 | "}, reader.entries()[i].pieces) == "")
          pieces.insert(i);
    EXPECT_EQ(pieces.size(), 2u);
  }
}

TEST(PointReader, TakesValuesBetweenWholeNumbersWhereTheProgramDoes) {
  const Reader reader("1", "1");
  EXPECT_EQ(reader.judge({WELL}), "");
  EXPECT_EQ(reader.judge({"[ 1.5 0 0 0 ] | 0 | [ ] | 0 | 0 | "}),
            "point 1: a point that was found is no point of the program");
  EXPECT_EQ(reader.judge({"[ 3/7 0 0 0 ] | 0 | [ ] | 0 | 0 | "}), "point 1: a value between two steps");
}

}  // namespace
}  // namespace latbox::complete::jobs
