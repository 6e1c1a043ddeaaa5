#include "check/proof/walk.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

using testing::changed;
using testing::replaced;

// A program of equations A x = b within a box, and a proof of all its points with cuts at random: right ones,
// which cut little. The lattice comes from whole column operations that make A triangular.
class RandomProof {
 public:
  RandomProof(unsigned seed, std::size_t equations, std::size_t variables, long width)
      : random_(seed), m_(equations), n_(variables) {
    for (std::size_t j = 0; j < n_; ++j) width_.push_back(number(0, 1) == 0 ? width : number(0, width));
    std::vector<long> x;
    for (const long w : width_) x.push_back(number(0, w));
    for (std::size_t i = 0; i < m_; ++i) {
      A_.emplace_back();
      b_.push_back(number(0, 9) == 0 ? 1 : 0);
      for (std::size_t j = 0; j < n_; ++j) A_[i].push_back(number(-4, 6));
      for (std::size_t j = 0; j < n_; ++j) b_[i] += A_[i][j] * x[j];
    }
    solve();
  }

  // Nothing is on the lattice if the equations have no whole solution.
  bool hasLattice() const { return hasLattice_; }

  std::string opt() const {
    std::string text = "[ ] [ ] [ ";
    for (const std::vector<long>& row : A_) text += "[ " + shown(row) + "] ";
    const std::vector<long> zero(n_);
    // A row that all points keep, for there must be one.
    text += "] [ " + shown(b_) + "] [ [ " + shown(zero) + "] ] [ 0 ] [ inf ] ";
    return text + "[ " + shown(zero) + "] [ " + shown(zero) + "] [ " + shown(width_) + "]";
  }

  std::uint64_t points() const {
    std::uint64_t count = 0;
    std::vector<long> x(n_);
    for (;;) {
      bool holds = true;
      for (std::size_t i = 0; i < m_; ++i) {
        long sum = 0;
        for (std::size_t j = 0; j < n_; ++j) sum += A_[i][j] * x[j];
        holds = holds && sum == b_[i];
      }
      count += holds ? 1 : 0;
      std::size_t j = 0;
      while (j < n_ && x[j] == width_[j]) x[j++] = 0;
      if (j == n_) return count;
      ++x[j];
    }
  }

  // With a factor for all cuts, which changes no node.
  Search search(long factor = 1) {
    random_.seed(99);
    Search s;
    s.lattice.values = {static_cast<long>(n_ - rank_), static_cast<long>(m_), 0};
    for (std::size_t i = 0; i < m_; ++i) s.equations.values.emplace_back(static_cast<long>(i + 1));
    s.point = columns(point_);
    for (std::size_t i = rank_; i < n_; ++i) {
      s.basis.push_back(columns(U_[i]));
      s.dual.push_back(columns(V_[i]));
    }
    s.constant = columns(times(combined(m_ == 0 ? n_ : 0, 0), factor));
    for (std::size_t t = 0; t + rank_ < n_; ++t) {
      Level level;
      level.number = static_cast<unsigned long>(t);
      level.divisor = number(1, 40) * factor;
      level.main = columns(times(combined(rank_ + t, 1), factor));
      for (long sides = number(0, 2); sides > 0; --sides)
        level.sides.push_back(columns(combined(rank_ + t, number(-2, 2))));
      s.levels.push_back(level);
    }
    s.nodes = mpz_class(1) << 70;
    return s;
  }

 private:
  long number(long low, long high) { return std::uniform_int_distribution<long>(low, high)(random_); }

  static std::string shown(const std::vector<long>& numbers) {
    std::string text;
    for (const long value : numbers) text += std::to_string(value) + " ";
    return text;
  }

  // Without the fixed variables, which are no columns.
  Numbers columns(const std::vector<long>& numbers) const {
    Numbers result;
    for (std::size_t j = 0; j < n_; ++j)
      if (width_[j] > 0) result.values.emplace_back(numbers[j]);
    return result;
  }

  static std::vector<long> times(std::vector<long> numbers, long factor) {
    for (long& value : numbers) value *= factor;
    return numbers;
  }

  // Rows of A at random, V_t of that sign and later V at random: orthogonal to all K before.
  std::vector<long> combined(std::size_t t, long first) {
    std::vector<long> sum(n_);
    const auto add = [&](const std::vector<long>& vector, long factor) {
      for (std::size_t j = 0; j < n_; ++j) sum[j] += factor * vector[j];
    };
    for (const std::vector<long>& row : A_) add(row, number(-1, 1));
    if (t < rank_ || t >= n_) return sum;
    add(V_[t], first);
    for (std::size_t i = t + 1; i < n_; ++i) add(V_[i], number(-1, 1));
    return sum;
  }

  void addColumn(std::size_t to, std::size_t from, long factor) {
    for (std::size_t j = 0; j < n_; ++j) U_[to][j] += factor * U_[from][j];
    for (std::size_t j = 0; j < n_; ++j) V_[from][j] -= factor * V_[to][j];
  }

  long image(std::size_t row, std::size_t column) const {
    long sum = 0;
    for (std::size_t j = 0; j < n_; ++j) sum += A_[row][j] * U_[column][j];
    return sum;
  }

  // U has the columns, one line each, and V the lines of its inverse. Fixed variables have no part in it.
  void solve() {
    for (std::size_t i = 0; i < n_; ++i) {
      U_.emplace_back(n_);
      V_.emplace_back(n_);
      U_[i][i] = V_[i][i] = 1;
    }
    point_.assign(n_, 0);
    std::vector<std::size_t> free;
    for (std::size_t j = 0; j < n_; ++j)
      if (width_[j] > 0) free.push_back(j);
    // Those of fixed variables first.
    for (std::size_t j = 0; j < n_; ++j)
      if (width_[j] == 0) {
        std::swap(U_[rank_], U_[j]);
        std::swap(V_[rank_++], V_[j]);
      }
    for (std::size_t i = 0; i < m_; ++i) {
      for (std::size_t c = rank_ + 1; c < n_; ++c)
        while (image(i, c) != 0) {
          addColumn(rank_, c, -(image(i, rank_) / image(i, c)));
          std::swap(U_[rank_], U_[c]);
          std::swap(V_[rank_], V_[c]);
        }
      long rest = b_[i];
      for (std::size_t j = 0; j < n_; ++j) rest -= A_[i][j] * point_[j];
      const long pivot = rank_ < n_ ? image(i, rank_) : 0;
      if (pivot == 0 && rest == 0) continue;
      if (pivot == 0 || rest % pivot != 0) {
        hasLattice_ = false;
        return;
      }
      for (std::size_t j = 0; j < n_; ++j) point_[j] += rest / pivot * U_[rank_][j];
      ++rank_;
    }
  }

  std::mt19937 random_;
  std::size_t m_;
  std::size_t n_;
  std::vector<long> width_;
  std::vector<std::vector<long>> A_;
  std::vector<long> b_;
  std::vector<std::vector<long>> U_;
  std::vector<std::vector<long>> V_;
  std::vector<long> point_;
  std::size_t rank_ = 0;
  bool hasLattice_ = true;
};

Counts walked(const std::string& opt, const Search& search, const Plan& plan = {}) {
  const Program program = readProgram(opt);
  return walk(program, boxOf(systemOf(program), search), search, {}, plan);
}

void expectEqual(const Counts& a, const Counts& b) {
  EXPECT_EQ(a.nodes, b.nodes);
  EXPECT_EQ(a.points, b.points);
}

bool isShort(RandomProof& random) {
  Search search = random.search();
  search.nodes = 20000;
  try {
    walked(random.opt(), search);
    return true;
  } catch (const Refused&) {
    return false;
  }
}

TEST(ProofWalk, all_points_of_small_lattices_in_both_kinds_of_numbers) {
  std::uint64_t points = 0;
  std::size_t lattices = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    RandomProof random(seed, seed % 4, 2 + seed % 4, 5);
    if (!random.hasLattice()) continue;
    SCOPED_TRACE(random.opt());
    // Cuts that cut too little are left out.
    if (!isShort(random)) continue;
    ++lattices;
    const Counts found = walked(random.opt(), random.search());
    EXPECT_EQ(found.points, random.points());
    points += found.points;
    expectEqual(found, walked(random.opt(), random.search(), {1, 1, 1, true}));
    // So long that doubles do not do.
    expectEqual(found, walked(random.opt(), random.search(1L << 40)));
  }
  EXPECT_GT(lattices, 250U);
  EXPECT_GT(points, 2000U);
}

TEST(ProofWalk, threads_and_parts_make_the_whole) {
  std::size_t divided = 0;
  for (unsigned seed = 0; seed < 8; ++seed) {
    RandomProof random(seed, 1, 6, 5);
    if (!random.hasLattice()) continue;
    SCOPED_TRACE(random.opt());
    const Search search = random.search();
    const Counts whole = walked(random.opt(), search);
    for (const bool exact : {false, true}) {
      expectEqual(walked(random.opt(), search, {3, 1, 1, exact}), whole);
      Counts sum;
      std::uint64_t most = 0;
      for (std::uint64_t part = 1; part <= 3; ++part) {
        const Counts counts = walked(random.opt(), search, {part, part, 3, exact});
        sum = {sum.nodes + counts.nodes, sum.points + counts.points};
        most = std::max(most, counts.nodes);
      }
      expectEqual(sum, whole);
      if (whole.nodes > 5000) {
        EXPECT_LT(most, whole.nodes);
        ++divided;
      }
    }
  }
  EXPECT_GT(divided, 3U);
}

TEST(ProofWalk, a_part_that_is_none_walks_nothing) {
  RandomProof random(1, 1, 4, 5);
  expectEqual(walked(random.opt(), random.search(), {1, 0, 1, false}), {0, 0});
}

TEST(ProofWalk, more_nodes_than_stated_end_it) {
  // Far more than any check could walk.
  RandomProof random(3, 0, 6, 100000);
  Search search = random.search();
  search.endLine = 77;
  for (const char* nodes : {"0", "1", "5000"}) {
    search.nodes = mpz_class(nodes);
    for (const std::size_t threads : {1, 3})
      for (const std::uint64_t part : {1, 2}) {
        std::string fault;
        try {
          walked(random.opt(), search, {threads, part, 2, threads == 1 && part == 2});
        } catch (const Refused& refused) {
          fault = refused.what();
        }
        EXPECT_EQ(fault, std::string("line 77: the walk has more than ") + nodes + " nodes");
      }
  }
  EXPECT_EQ(changed("nodes 7", "nodes 6"), "refused: line 17: the walk has more than 6 nodes");
}

TEST(ProofWalk, the_cuts_have_conditions) {
  EXPECT_EQ(changed("constant 1 1 1", "constant 1 1 2"),
            "refused: line 14: not orthogonal to basis vector 1");
  EXPECT_EQ(changed("constant 1 1 1", "constant 1 1"), "refused: line 14: 2 numbers, not 3");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 0 1 2 -3"),
            "refused: line 15: not orthogonal to basis vector 0");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 0 -1 -1 2"),
            "refused: line 15: the product with the level's own basis vector is not positive");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 0 1 1 1"),
            "refused: line 15: the product with the level's own basis vector is not positive");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 0 0 1 1 -2"),
            "refused: line 15: the divisor is not positive");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 0 6 0 1 1 -2"),
            "refused: line 15: not the level whose turn it is");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 0 1 1"), "refused: line 15: 2 numbers, not 3");
  EXPECT_EQ(changed("level 1 6 0", "level 1 6 1 1 1 -2\nside 1 0 0\nlevel 1 6 0").substr(0, 11),
            "unreadable:");
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 1 1 1 -2\nside 1 0 0"),
            "refused: line 16: not orthogonal to basis vector 0");
  // Side vectors need no sign, and may say nothing at all.
  EXPECT_EQ(changed("level 1 6 0 1 1 -2", "level 1 6 2 1 1 -2\nside 0 0 0\nside -1 -1 2"), "all 3");
}

TEST(ProofWalk, a_lattice_of_one_point) {
  const std::string text = R"(latbox-proof 1
verdict all 1
search points
objective 0
derive 0
lattice 0 1 0
equations 1
coordinates
point 2
constant 5
walk nodes 0 points 1
end
)";
  const std::string opt = "[ ] [ ] [ [ 3 ] ] [ 6 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 4 ]";
  for (const std::size_t threads : {1, 3})
    EXPECT_EQ(testing::verdict(opt, text, {threads, 1, 1, false}), "all 1");
  EXPECT_EQ(testing::verdict(opt, text, {1, 2, 2, false}),
            "refused: line 11: the search points has 0 points, not 1");
  EXPECT_EQ(testing::verdict(replaced(opt, "[ 6 ]", "[ 15 ]"), replaced(text, "point 2", "point 5")),
            "refused: line 11: the search points has 0 points, not 1");
}

}  // namespace
}  // namespace latbox::check::proof
