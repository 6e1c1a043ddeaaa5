// Block enumeration beside a plain transcription of its rules: same arithmetic in the same order, but stages
// as they are told, without the transposed coefficients, the cached shares of the bound or the mirror in F.
// Basis, budget of the sweeps and counters have to come out bit for bit alike.
#include "lattice/support.h"

#include <algorithm>
#include <cmath>

#include "params/statistics.h"

namespace latbox::testing {
namespace {

template <class T>
class PlainEnumeration {
 public:
  PlainEnumeration(Lattice<T, dbl_t>& lattice, const Vector<T>* target) : l_(lattice), target_(target) {}

  void run() {
    beta_ = std::min(l_.params.beta.get(), l_.rank);
    if (target_ != nullptr) {
      l_.gsoByFull(1, 0, false);
    } else {
      do l_.lll(1, 0, 0);
      while (l_.sweepSkipped != 0);
    }
    if (beta_ <= 2 || l_.rank <= 1) return;
    bool wrapped = false;
    for (long unchanged = 0; unchanged < l_.rank - 1;) {
      if (++j_ == l_.rank) {
        j_ = 1;
        wrapped = true;
      }
      k_ = std::min(j_ + beta_ - 1, l_.rank);
      const long h = std::min(k_ + 1, l_.rank);
      setUp(h);
      search();
      const bool found = insert();
      if (l_.rank == beta_) return;
      if (found && repair(h)) {
        unchanged = 0;
        wrapped = false;
        continue;
      }
      if (!wrapped) follow(l_.lll(h, h, l_.rank));
      ++unchanged;
    }
  }

 private:
  struct Level {
    dbl_t c = 0, y = 0;
    T v = T(0), u = T(0), delta = T(0), sign = T(1);
  };

  Lattice<T, dbl_t>& l_;
  const Vector<T>* target_;
  std::vector<Level> stage_;
  Vector<dbl_t> coordinates_;
  long beta_ = 0, j_ = 0, k_ = 0;

  void follow(long position) {
    if (position < j_) j_ = position - 1;
  }

  void takeCoordinates(long last) {
    l_.gsoByFull(1, last, false);
    coordinates_.resizeZero(l_.rank);
    for (long i = 1; i <= last; ++i) {
      dbl_t sum = 0;
      for (long p = 1; p <= l_.dim; ++p) sum += l_.Bstar[i][p] * toDouble((*target_)[p]);
      coordinates_[i] = sum * std::fabs(l_.lqL[i][i]) / l_.bstarSq[i];
    }
  }

  void setUp(long h) {
    for (long i = j_; i <= k_; ++i) l_.enumCoeffs[i] = T(0);
    stage_.assign(static_cast<std::size_t>(l_.rank) + 3, Level());
    if (target_ == nullptr) {
      l_.updateGso(j_, k_);
      l_.enumBound = l_.bstarSq[j_];
      at(j_).u = l_.enumCoeffs[j_] = T(1);
      return;
    }
    takeCoordinates(h);
    for (long t = h; t >= j_; --t) {
      at(t).c = coordinates_[t] * coordinates_[t] * l_.bstarSq[t] + at(t + 1).c;
      at(t).y = -coordinates_[t];
    }
    l_.enumBound = at(j_).c;
  }

  Level& at(long t) { return stage_[static_cast<std::size_t>(t)]; }

  bool passes(long t) const {
    const dbl_t half = dbl_t(1) / 2 - EPS;
    const dbl_t d = static_cast<dbl_t>(k_ - t), size = static_cast<dbl_t>(beta_);
    const dbl_t C = stage_[static_cast<std::size_t>(t)].c;
    const bool behind = t > (j_ + k_) / 2;
    switch (l_.params.eprune.get()) {
      case 0:
        return C < l_.enumBound;
      case 1:
        return C < (1 + d) / size * l_.enumBound;
      case 2:
        return C < (behind ? half : 1) * l_.enumBound;
      default:
        return C <
               (behind ? (2 * half * (d + 1)) / size : ((1 - half) * (d * 2 + 1)) / size + (2 * half - 1)) *
                   l_.enumBound;
    }
  }

  void next(long t, long s) {
    Level& a = at(t);
    if (t < s) a.delta = -a.delta;
    if (a.delta * a.sign >= T(0)) a.delta += a.sign;
    a.u = a.v + a.delta;
  }

  void descend(long t, long s) {
    Level& a = at(t - 1);
    a.y = 0;
    for (long i = t; i <= s; ++i) a.y += toDouble(at(i).u) * l_.mu[i][t - 1];
    a.v = T(static_cast<long long>(std::round(-a.y)));
    a.delta = T(0);
    a.sign = toDouble(a.v) <= -a.y ? T(1) : T(-1);
    a.u = a.v;
    if (target_ != nullptr) a.y -= coordinates_[t - 1];
  }

  void search() {
    for (long t = j_, s = j_; t <= k_;) {
      const dbl_t offset = toDouble(at(t).u) + at(t).y;
      at(t).c = offset * offset * l_.bstarSq[t] + at(t + 1).c;
      if (!passes(t)) {
        if (++t > k_) return;
        s = std::max(s, t);
        next(t, s);
      } else if (t == j_) {
        for (long i = j_; i <= k_; ++i) l_.enumCoeffs[i] = at(i).u;
        l_.enumBound = at(j_).c;
        next(t, s);
      } else {
        descend(t, s);
        --t;
      }
    }
  }

  bool insert() {
    if (!(l_.enumBound < (1 - EPS) * l_.bstarSq[j_])) return false;
    bool zero = true;
    for (long i = j_; i <= k_; ++i) zero = zero && isExactZero(l_.enumCoeffs[i]);
    if (zero) return false;
    const int trivial = l_.trivialInsert(l_.enumCoeffs, j_, k_);
    if (trivial != 0) return trivial == 1;
    l_.insertCombination(l_.enumCoeffs, j_, k_);
    ++statisticsOf<T>().nontrivialBasisExtensions;
    return true;
  }

  // An insertion that gains nothing at its place is no find.
  bool repair(long h) {
    const dbl_t before = l_.bstarSq[j_];
    const long position = target_ == nullptr ? l_.lll(j_, h, l_.rank) : j_;
    if (target_ != nullptr) l_.gsoByFull(j_, h, false);
    if (position >= j_ && !(l_.bstarSq[j_] < before)) return false;
    follow(position);
    return true;
  }
};

template <class T>
class EnumerationReference : public ::testing::Test {
 public:
  // The second run finds the scratch of the first.
  static constexpr int RUNS = 2;

  struct Outcome {
    Matrix<T> basis;
    dbl_t bound;
    long interval;
    long long trivial, extensions, deep;
  };

  template <class Search>
  Outcome outcomeOf(const Rows& rows, long beta, long eprune, bool deep, Search search) {
    Lattice<T, dbl_t> lattice;
    setBasis(lattice, matrixOf<T>(rows));
    lattice.params.verb.set(0);
    lattice.params.btime.set(0);
    lattice.params.beta.set(beta);
    lattice.params.eprune.set(eprune);
    lattice.params.deep.set(deep);
    statisticsOf<T>() = Statistics();
    search(lattice);
    const Statistics& counted = statisticsOf<T>();
    return {lattice.B,
            lattice.enumBound,
            lattice.interval_tt,
            counted.basisSubstitutionsTrivial,
            counted.nontrivialBasisExtensions,
            counted.deepInsertions};
  }

  void expectAlike(const Rows& rows, long beta, long eprune, bool deep, const Vector<T>* target) {
    const auto prepare = [&](auto& lattice) {
      if (target == nullptr) return;
      lattice.params.deep.set(false);
      reduceFully(lattice);
      lattice.params.deep.set(deep);
    };
    const Outcome wanted = outcomeOf(rows, beta, eprune, deep, [&](auto& lattice) {
      prepare(lattice);
      for (int run = 0; run < RUNS; ++run) PlainEnumeration<T>(lattice, target).run();
    });
    const Outcome found = outcomeOf(rows, beta, eprune, deep, [&](auto& lattice) {
      prepare(lattice);
      for (int run = 0; run < RUNS; ++run) lattice.enumerate(target);
    });
    SCOPED_TRACE(::testing::Message() << "beta " << beta << ", eprune " << eprune << ", deep " << deep);
    EXPECT_TRUE(found.basis == wanted.basis);
    EXPECT_EQ(found.bound, wanted.bound);
    EXPECT_EQ(found.interval, wanted.interval);
    EXPECT_EQ(found.trivial, wanted.trivial);
    EXPECT_EQ(found.extensions, wanted.extensions);
    EXPECT_EQ(found.deep, wanted.deep);
    finds += found.trivial + found.extensions;
  }

  static Rows randomRows(Draws& draw, long n, long size) {
    Rows rows(static_cast<std::size_t>(n), std::vector<long>(static_cast<std::size_t>(n)));
    for (auto& row : rows)
      for (long& x : row) x = draw.next(-size, size);
    return rows;
  }

  long long finds = 0;
};
TYPED_TEST_SUITE(EnumerationReference, NumberTypes);

TYPED_TEST(EnumerationReference, Blocks) {
  Draws draw(41);
  for (long n = 4; n <= 16; n += 3)
    for (const long beta : {3L, 5L, 8L, 20L})
      for (long eprune = 0; eprune <= 3; ++eprune)
        this->expectAlike(this->randomRows(draw, n, 60), beta, eprune, eprune == 1, nullptr);
  EXPECT_GT(this->finds, 40);
}

TYPED_TEST(EnumerationReference, KnapsackBases) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed)
    for (long eprune = 0; eprune <= 3; ++eprune)
      this->expectAlike(knapsackRows(14, 1000000, seed), 6, eprune, false, nullptr);
  EXPECT_GT(this->finds, 20);
}

TYPED_TEST(EnumerationReference, CloseVectors) {
  Draws draw(43);
  for (long n = 4; n <= 10; n += 2) {
    for (const long beta : {3L, 5L, 20L}) {
      for (long eprune = 0; eprune <= 3; ++eprune) {
        const Rows rows = this->randomRows(draw, n, 60);
        Vector<TypeParam> target(n);
        for (long p = 1; p <= n; ++p) target[p] = TypeParam(draw.next(-90, 90));
        this->expectAlike(rows, beta, eprune, false, &target);
      }
    }
  }
  EXPECT_GT(this->finds, 10);
}

}  // namespace
}  // namespace latbox::testing
