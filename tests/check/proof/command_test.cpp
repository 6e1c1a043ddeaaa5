#include "check/command.h"

#include <gtest/gtest.h>

#include <sstream>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

using testing::OPT;
using testing::PROOF;
using testing::replaced;

class ProofCommand : public check::testing::FolderTest {
 protected:
  void SetUp() override {
    FolderTest::SetUp();
    write("p.opt", OPT);
    write("p.proof", PROOF);
  }

  // What is printed for the sample's files and these arguments, and the status.
  std::string run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--proof=" + path("p.proof"), path("p.opt")});
    return runAll(arguments);
  }

  std::string runAll(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream err;
    const ExitStatus status = runCommand(arguments, out, err);
    std::string text = out.str() + err.str() + std::to_string(status);
    for (std::size_t at = 0; (at = text.find(folder_.string())) != std::string::npos;)
      text.replace(at, folder_.string().size() + 1, "");
    return text;
  }

  std::string compared(const std::string& lines) { return run({write("p.all", lines), "--quiet"}); }
};

std::string line(const std::string& x, const std::string& norms = "0 | [ ] | 0") {
  return "[ " + x + " ] | " + norms + " | 0 | p | 2.2.2\n";
}

TEST_F(ProofCommand, verdicts_and_statuses) {
  EXPECT_EQ(run({}), "proof: all 3\n0");
  EXPECT_EQ(run({"--threads=4"}), "proof: all 3\n0");
  write("p.proof", replaced(PROOF, "nodes 7", "nodes 8"));
  EXPECT_EQ(run({}), "proof: refused: line 17: the search points has 7 nodes, not 8\n1");
  write("p.proof", replaced(PROOF, "nodes 7", "nodes"));
  EXPECT_EQ(run({}), "latbox-check: p.proof:17: expected a number that is not negative, found 'points'\n2");
  write("p.proof", "");
  EXPECT_EQ(run({}), "latbox-check: p.proof:1: the file ends where 'latbox-proof' is expected\n2");
}

TEST_F(ProofCommand, files_that_cannot_be_read) {
  EXPECT_EQ(runAll({"--proof=" + path("q"), path("p.opt")}), "latbox-check: q: No such file or directory\n2");
  EXPECT_EQ(runAll({"--proof=" + path("p.proof"), path("q")}),
            "latbox-check: q: No such file or directory\n2");
  EXPECT_EQ(run({path("q")}), "latbox-check: q: No such file or directory\n2");
  EXPECT_EQ(run({"--join=" + path("q")}), "latbox-check: q: No such file or directory\n2");
  write("p.opt", "[ x");
  EXPECT_EQ(run({}), "latbox-check: p.opt: line 1, column 3: expected a number, found 'x'\n2");
}

TEST_F(ProofCommand, all_points_are_compared) {
  const std::string all = line("1 1 0") + line("1 0 1") + line("0 1 1");
  EXPECT_EQ(compared(all), "proof: all 3\n0");
  EXPECT_EQ(run({write("p.all", all)}),
            "solution 1: ok, target norm 0, slack norm 0\nsolution 2: ok, target norm 0, slack norm 0\n"
            "solution 3: ok, target norm 0, slack norm 0\nproof: all 3\n0");
  EXPECT_EQ(compared(line("1 1 0") + line("1 0 1")), "proof: refused: p.all: 2 points, not 3\n1");
  EXPECT_EQ(compared(""), "proof: refused: p.all: 0 points, not 3\n1");
  EXPECT_EQ(compared(all + line("0 1 1")), "proof: refused: p.all: 1 of 4 solutions wrong\n1");
  EXPECT_EQ(compared(line("1 1 0") + line("1 0 1") + line("1 0 1")),
            "proof: refused: p.all: 1 of 3 solutions wrong\n1");
  EXPECT_EQ(compared(line("1 1 0") + line("1 0 1") + line("1 1 1")),
            "proof: refused: p.all: 1 of 3 solutions wrong\n1");
  EXPECT_EQ(compared(all + "[ 1 1"),
            "proof: refused: p.all: 3 solutions, all well; line 4 is torn, and no solution\n1");
  EXPECT_EQ(compared("[ 1 1 x ]\n"),
            "latbox-check: p.all: line 1, column 7: expected a number, found 'x'\n2");
  // The proof comes first.
  write("p.proof", replaced(PROOF, "nodes 7", "nodes 8"));
  EXPECT_EQ(compared(all), "proof: refused: line 17: the search points has 7 nodes, not 8\n1");
}

TEST_F(ProofCommand, none_has_no_points) {
  write("p.opt", replaced(OPT, "[ 2 ]", "[ 4 ]"));
  write("p.proof",
        "latbox-proof 1\nverdict none\nsearch points\nobjective 0\nderive 1\nupper 0 1 r1 "
        "-1\ncontradiction\nend\n");
  EXPECT_EQ(compared(""), "proof: none\n0");
  EXPECT_EQ(compared("\n"), "proof: none\n0");
  EXPECT_EQ(compared(line("1 1 1")), "proof: refused: p.all: 1 of 1 solution wrong\n1");
}

// The points near 1, with whole x of 0 .. 1: |x1 + x2 - 1|.
constexpr const char* TIES = R"(latbox-proof 1
verdict optimum 0 0 2
point 0 1
search better
objective 1
norm 0
derive 0
contradiction
search equal
objective 0
derive 0
lattice 2 0 0
equations
coordinates
point 0 0
basis 1 0
basis 0 1
dual 1 0
dual 0 1
constant 0 0
level 1 1 0 0 1
level 0 1 0 1 0
walk nodes 6 points 2
end
)";

TEST_F(ProofCommand, the_points_of_an_optimum_have_its_norms) {
  write("p.opt", "[ 1 ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1 1 ]");
  // 0 <= -1, with all numbers 0, needs a step.
  const std::string ties = replaced(TIES, "derive 0\ncontra", "derive 1\nlower r1 1\ncontra");
  write("p.proof", ties);
  const std::string good = line("1 0", "0 | [ 0 ] | 0");
  const std::string other = line("0 1", "0 | [ 0 ] | 0");
  EXPECT_EQ(compared(good + other), "proof: optimum 0, 2 points\n0");
  EXPECT_EQ(compared(good), "proof: refused: p.all: 1 points, not 2\n1");
  EXPECT_EQ(run({write("p.all", good + line("1 1", "1 | [ 1 ] | 1"))}),
            "solution 1: ok, target norm 0, slack norm 0\n"
            "solution 2: wrong (line 2): its norms are not those of the proof\n"
            "proof: refused: p.all: 1 of 2 solutions wrong\n1");
  // The solver's larger distance would make two lines of one point.
  EXPECT_EQ(compared(good + line("1 0", "2 | [ 2 ] | 0")),
            "proof: refused: p.all: 1 of 2 solutions wrong\n1");
  write("p.proof", replaced(ties.substr(0, ties.find("search equal")), "0 0 2", "0 0") + "end\n");
  EXPECT_EQ(compared(good), "proof: optimum 0\n0");
  EXPECT_EQ(compared(good + other), "proof: refused: p.all: 2 points, not 1\n1");
}

TEST_F(ProofCommand, parts_are_joined) {
  std::string parts;
  for (const char* part : {"--part=1/3", "--part=2/3", "--part=3/3"}) {
    const std::string told = run({part});
    EXPECT_EQ(told.substr(told.size() - 2), "\n0");
    parts += told.substr(0, told.size() - 1);
  }
  EXPECT_EQ(run({"--join=" + write("parts", parts)}), "proof: all 3\n0");
  EXPECT_EQ(run({"--join=" + path("parts"), write("p.all", line("1 1 0"))}).substr(0, 47),
            "solution 1: ok, target norm 0, slack norm 0\npro");
  EXPECT_EQ(run({"--join=" + write("parts", parts.substr(parts.find('\n') + 1))}),
            "proof: refused: parts: line 3: part 1/3 is missing\n1");
  EXPECT_EQ(run({"--join=" + write("parts", parts + "x\n")}),
            "latbox-check: parts:4: no line of a part, or damaged\n2");
  write("parts", parts);
  // A blank more is another file.
  write("p.proof", replaced(PROOF, "all 3", "all  3"));
  EXPECT_EQ(run({"--join=" + path("parts")}),
            "proof: refused: parts: line 1: part 1/3 is of another proof\n1");
  write("p.proof", PROOF);
  write("p.opt", std::string(OPT) + " ");
  EXPECT_EQ(run({"--join=" + path("parts")}),
            "proof: refused: parts: line 1: part 1/3 is for another program\n1");
}

TEST_F(ProofCommand, a_part_needs_a_proof_that_is_right_otherwise) {
  write("p.proof", replaced(PROOF, "dual 1 0 0", "dual 1 1 0"));
  EXPECT_EQ(run({"--part=2/3"}), "proof: refused: line 12: not the wanted product with basis vector 0\n1");
  // What is stated wrongly is found when they are joined.
  write("p.proof", replaced(PROOF, "nodes 7", "nodes 8"));
  const std::string told = run({"--part=1/1"});
  EXPECT_EQ(run({"--join=" + write("parts", told.substr(0, told.size() - 1))}),
            "proof: refused: line 17: the search points has 7 nodes, not 8\n1");
}

TEST_F(ProofCommand, arguments) {
  for (const char* argument : {"--threads=0", "--threads=", "--threads=x", "--threads=1025", "--threads=2 ",
                               "--part=1", "--part=0/2", "--part=3/2", "--part=1/", "--part=1/2/3",
                               "--part=1/1000001", "--proof=", "--join=", "--proofs=x", "--thread=2"})
    EXPECT_EQ(run({argument}).back(), '2') << argument;
  EXPECT_EQ(run({"--threads=0"}), "latbox-check: --threads=N needs numbers from 1 to 1024\n2");
  EXPECT_EQ(run({"--part=3/2"}), "latbox-check: --part=K/N needs numbers from 1 to 2\n2");
  EXPECT_EQ(run({"--part=1/2", "--join=x"}), "latbox-check: --part and --join exclude each other\n2");
  EXPECT_EQ(run({"--part=1/2", "x.all"}), "latbox-check: a part compares no points: leave x.all out\n2");
  EXPECT_EQ(runAll({"--threads=2", path("p.opt")}), "latbox-check: --threads=2 needs --proof=FILE\n2");
}

}  // namespace
}  // namespace latbox::check::proof
