#include "check/command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support.h"

namespace latbox::check {
namespace {

constexpr const char* OPT = "[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
constexpr const char* GOOD = "[ 3 1 ] | 0 | [ ] | 0 | 0 | p | 2.2.2\n";
constexpr const char* BAD = "[ 4 1 ] | 0 | [ ] | 0 | 0 | p | 2.2.2\n";

class Command : public testing::FolderTest {
 protected:
  void SetUp() override {
    FolderTest::SetUp();
    write("a.opt", OPT);
  }

  ExitStatus run(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream err;
    const ExitStatus status = runCommand(arguments, out, err);
    out_ = out.str();
    err_ = err.str();
    return status;
  }

  std::string out_;
  std::string err_;
};

TEST_F(Command, all_well) {
  write("a.sol", GOOD);
  EXPECT_EQ(run({path("a.opt")}), ALL_WELL);
  EXPECT_EQ(out_,
            "solution 1: ok, target norm 0, slack norm 0\n" + path("a.sol") + ": 1 solution, all well\n");
  EXPECT_EQ(err_, "");
}

TEST_F(Command, something_wrong) {
  write("other", std::string(GOOD) + "\n" + BAD);
  EXPECT_EQ(run({path("a.opt"), path("other")}), SOMETHING_WRONG);
  EXPECT_EQ(out_,
            "solution 1: ok, target norm 0, slack norm 0\n"
            "solution 2: wrong (line 3): equation 1 gives 17, not 14\n" +
                path("other") + ": 1 of 2 solutions wrong\n");
  EXPECT_EQ(err_, "");
}

TEST_F(Command, quiet_leaves_the_verdict) {
  write("a.opt", "[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ ] [ ] [ ] [ 0 0 ] [ 1 1 ] [ 4 4 ]");
  write("a.sol", std::string(GOOD) + BAD);
  EXPECT_EQ(run({path("a.opt"), "--quiet"}), SOMETHING_WRONG);
  EXPECT_EQ(out_, path("a.sol") + ": 1 of 2 solutions wrong\n");
}

TEST_F(Command, warnings_change_no_verdict) {
  write("a.opt", "[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ ] [ ] [ ] [ 0 0 ] [ 1 1 ] [ 4 4 ]");
  write("a.sol", GOOD);
  EXPECT_EQ(run({path("a.opt")}), ALL_WELL);
  EXPECT_TRUE(out_.starts_with("warning: lower bounds that are not 0 ")) << out_;
}

TEST_F(Command, a_missing_file_of_solutions_is_an_error_only_if_it_was_given) {
  EXPECT_EQ(run({path("a.opt")}), ALL_WELL);
  EXPECT_EQ(out_, path("a.sol") + " does not exist: no solutions to check\n");
  EXPECT_EQ(run({path("a.opt"), path("a.sol")}), UNREADABLE);
  EXPECT_EQ(out_, "");
  EXPECT_EQ(err_, "latbox-check: " + path("a.sol") + ": No such file or directory\n");
}

TEST_F(Command, an_empty_file_of_solutions) {
  write("a.sol", "\n");
  EXPECT_EQ(run({path("a.opt")}), ALL_WELL);
  EXPECT_EQ(out_, path("a.sol") + ": no solutions to check\n");
}

TEST_F(Command, unreadable_files) {
  EXPECT_EQ(run({path("b.opt")}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: " + path("b.opt") + ": No such file or directory\n");
  EXPECT_EQ(run({folder_.string()}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: " + folder_.string() + ": Is a directory\n");
  std::filesystem::create_directory(path("a.sol"));
  EXPECT_EQ(run({path("a.opt")}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: " + path("a.sol") + ": Is a directory\n");
  write("b.opt", "");
  EXPECT_EQ(run({path("b.opt")}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: " + path("b.opt") +
                      ": line 1, column 1: expected '[' to begin dt, found the end\n");
}

TEST_F(Command, the_place_is_told) {
  write("a.sol", std::string(GOOD) + "[ 3 1 ] | x");
  EXPECT_EQ(run({path("a.opt")}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: " + path("a.sol") + ": line 2, column 11: expected a number, found 'x'\n");
  // No judgement on a file that was read by half.
  EXPECT_EQ(out_, "");
}

TEST_F(Command, the_name_beside_is_that_of_the_last_point) {
  write("a.b.opt", OPT);
  write("a.b.sol", BAD);
  write("plain", OPT);
  write("plain.sol", BAD);
  EXPECT_EQ(run({path("a.b.opt")}), SOMETHING_WRONG);
  EXPECT_EQ(run({path("plain")}), SOMETHING_WRONG);
}

TEST_F(Command, a_solution_that_stands_twice) {
  write("a.sol", std::string(GOOD) + "\n" + BAD + "[ 6/2 01 ] | 0 | [ ] | 0 | 7 | q\n");
  EXPECT_EQ(run({path("a.opt")}), SOMETHING_WRONG);
  EXPECT_NE(out_.find("solution 3: wrong (line 4): the same as solution 1\n"), std::string::npos) << out_;
  EXPECT_NE(out_.find(": 2 of 3 solutions wrong\n"), std::string::npos) << out_;
}

TEST_F(Command, a_torn_line_is_told_and_no_solution) {
  const std::string torn = "[ 3 1 ] | 0 | [ ] | 0 ";
  write("a.sol", GOOD + torn);
  EXPECT_EQ(run({path("a.opt"), "--quiet"}), ALL_WELL);
  EXPECT_EQ(out_, path("a.sol") + ": 1 solution, all well; line 2 is torn, and no solution\n");
  write("a.sol", BAD + torn);
  EXPECT_EQ(run({path("a.opt"), "--quiet"}), SOMETHING_WRONG);
  EXPECT_EQ(out_, path("a.sol") + ": 1 of 1 solution wrong; line 2 is torn, and no solution\n");
  write("a.sol", torn);
  EXPECT_EQ(run({path("a.opt")}), ALL_WELL);
  EXPECT_EQ(out_, path("a.sol") + ": no solutions to check; line 1 is torn, and no solution\n");
  // With a line end it is not torn, but no solution.
  write("a.sol", GOOD + torn + "\n");
  EXPECT_EQ(run({path("a.opt")}), UNREADABLE);
  EXPECT_EQ(out_, "");
}

TEST_F(Command, a_wrong_line_makes_a_line_of_limited_length) {
  write("a.sol", "[ 1e9000 -1e9000 ] | 1e9000 | [ ] | 1e9000 | 0 | p\n");
  EXPECT_EQ(run({path("a.opt")}), SOMETHING_WRONG);
  EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 2);
  EXPECT_LT(out_.size(), 3000U);
}

TEST_F(Command, many_faults_are_cut) {
  write("a.opt",
        "[ ] [ ] [ [ 1 ] [ 2 ] [ 3 ] [ 4 ] [ 5 ] [ 6 ] ] [ 9 9 9 9 9 9 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]");
  write("a.sol", "[ 2 ] | 0 | [ ] | 0 | 0 | p");
  EXPECT_EQ(run({path("a.opt")}), SOMETHING_WRONG);
  EXPECT_NE(out_.find("equation 4 gives 8, not 9; and 2 more\n"), std::string::npos) << out_;
}

TEST_F(Command, help_and_version) {
  EXPECT_EQ(run({"--help"}), ALL_WELL);
  EXPECT_TRUE(out_.starts_with("usage: latbox-check ")) << out_;
  EXPECT_EQ(run({"--version"}), ALL_WELL);
  EXPECT_EQ(out_, "latbox-check v2.2.2\n");
}

TEST_F(Command, bad_arguments) {
  for (const auto& arguments : {std::vector<std::string>{}, {"--quiet"}, {"a", "b", "c"}}) {
    EXPECT_EQ(run(arguments), UNREADABLE);
    EXPECT_EQ(err_, "latbox-check: one or two files are needed: FILE.opt [FILE.sol]\n");
  }
  EXPECT_EQ(run({"-q", path("a.opt")}), UNREADABLE);
  EXPECT_EQ(err_, "latbox-check: unknown option -q; --help shows them\n");
}

TEST_F(Command, a_verdict_that_cannot_be_written_is_none) {
  write("a.sol", GOOD);
  std::ofstream full("/dev/full");
  std::ostringstream err;
  EXPECT_EQ(runCommand({path("a.opt")}, full, err), UNREADABLE);
  EXPECT_EQ(err.str(), "latbox-check: the output cannot be written\n");
}

}  // namespace
}  // namespace latbox::check
