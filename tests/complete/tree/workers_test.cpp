#include "complete/tree/workers.h"

#include <mutex>
#include <random>
#include <thread>

#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;

// How often each number was visited.
class Tally {
 public:
  explicit Tally(std::size_t size) : counts_(size) {}

  // False: whoever visits has had enough.
  bool visit(std::size_t number) {
    const std::lock_guard lock(mutex_);
    ++counts_[number];
    ++visited_;
    if (failAt != 0 && visited_ >= failAt) throw std::runtime_error("no more");
    return stopAt == 0 || visited_ < stopAt;
  }

  std::vector<int> counts() const {
    const std::lock_guard lock(mutex_);
    return counts_;
  }
  std::size_t visited() const {
    const std::lock_guard lock(mutex_);
    return visited_;
  }
  bool hasAllOnce() const { return counts() == std::vector<int>(counts_.size(), 1); }

  // The last number of each piece is not visited as long as this holds.
  std::function<bool()> holdsBack = [] { return false; };
  // So many visits in all; 0: never.
  std::size_t stopAt = 0;
  std::size_t failAt = 0;

 private:
  mutable std::mutex mutex_;
  std::vector<int> counts_;
  std::size_t visited_ = 0;
};

// A tree that is a range of numbers: a piece has one level, from `down` to behind `up`.
class RangeWalk : public PieceWalk {
 public:
  RangeWalk(Tally& tally, std::size_t size) : tally_(tally), size_(size) {}

  void start(const Piece& piece) override {
    next_ = piece.empty() ? 0 : piece[0].down.get_ui();
    end_ = piece.empty() ? size_ : piece[0].up.get_ui();
  }

  Pause goOn() override {
    // Each step counts as many, so that a few of them are no small tree.
    constexpr unsigned long EACH = 50'000;
    for (int i = 0; i < 7; ++i) {
      if (next_ == end_) return Pause::END;
      nodes_ += EACH;
      if (next_ + 1 == end_ && tally_.holdsBack()) {
        std::this_thread::yield();
        return Pause::LOOK;
      }
      if (!tally_.visit(next_++)) return Pause::STOP;
    }
    return Pause::LOOK;
  }

  Piece rest() const override { return pieceOf(next_, end_); }
  double share() const override { return static_cast<double>(end_ - next_) / static_cast<double>(size_); }

  bool split(Piece& other) override {
    if (end_ - next_ < 2) return false;
    const std::size_t middle = next_ + (end_ - next_) / 2;
    other = pieceOf(middle, end_);
    end_ = middle;
    return true;
  }

  unsigned long takeNodes() override { return std::exchange(nodes_, 0ul); }

 private:
  static Piece pieceOf(std::size_t begin, std::size_t end) {
    return {{0, Integer(end), Integer(begin), false, false}};
  }

  Tally& tally_;
  std::size_t size_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  unsigned long nodes_ = 0;
};

constexpr std::size_t SIZE = 20'000;

class Workers : public ::testing::TestWithParam<unsigned> {
 protected:
  Workers() { control.threads = GetParam(); }

  bool run(std::vector<Piece> pieces = {}, unsigned long trial = 0) {
    return walkThrough([this] { return std::make_unique<RangeWalk>(tally, SIZE); }, std::move(pieces),
                       control, trial);
  }

  // Those that a frontier says are left.
  static std::vector<int> leftOf(const Frontier& frontier) {
    std::vector<int> counts(SIZE);
    for (const Piece& piece : frontier.pieces)
      for (std::size_t i = piece[0].down.get_ui(); i < piece[0].up.get_ui(); ++i) ++counts[i];
    return counts;
  }

  // Everything is either visited or left.
  void expectPartition(const Frontier& frontier) const {
    std::vector<int> counts = tally.counts();
    const std::vector<int> left = leftOf(frontier);
    for (std::size_t i = 0; i < SIZE; ++i) counts[i] += left[i];
    EXPECT_EQ(counts, std::vector<int>(SIZE, 1));
  }

  Tally tally{SIZE};
  SearchControl control;
};

TEST_P(Workers, VisitEverythingOnce) {
  EXPECT_TRUE(run());
  EXPECT_TRUE(tally.hasAllOnce());
  EXPECT_EQ(control.done, 1);
}

TEST_P(Workers, GoOnFromWhatWasLeft) {
  std::mt19937 random(GetParam());
  std::vector<Piece> pieces;
  int stops = 0;
  while (true) {
    tally.stopAt = tally.visited() + 1 + random() % 1500;
    if (run(pieces)) break;
    ++stops;
    expectPartition(control.left);
    EXPECT_LT(control.left.share, 1.01);
    pieces = control.left.pieces;
    // The next run has another number of threads.
    control.threads = 1 + static_cast<unsigned>(random() % 4);
  }
  EXPECT_GT(stops, 10);
  EXPECT_TRUE(tally.hasAllOnce());
}

TEST_P(Workers, AreStoppedFromOutside) {
  control.stop = true;
  EXPECT_FALSE(run());
  expectPartition(control.left);
  control.stop = false;
  EXPECT_TRUE(run(control.left.pieces));
  EXPECT_TRUE(tally.hasAllOnce());
}

// Each pause begins when the one before has hardly ended. Two of them were once taken for one, and all waited
// for ever.
TEST_P(Workers, StandStillWhileTheFrontierIsTold) {
  constexpr int WANTED = 200;
  std::atomic<int> kept = 0;
  tally.holdsBack = [&] { return kept < WANTED; };
  control.keepEvery = 1e-9;
  control.keep = [&](const Frontier& frontier) {
    ++kept;
    expectPartition(frontier);
  };
  EXPECT_TRUE(run());
  EXPECT_TRUE(tally.hasAllOnce());
  EXPECT_GE(kept, WANTED);
}

TEST_P(Workers, AreNotKeptEachZeroSeconds) {
  control.keepEvery = 0;
  control.keep = [](const Frontier&) { ADD_FAILURE(); };
  EXPECT_TRUE(run());
}

// A full disk ended the process by std::terminate.
TEST_P(Workers, AFailureToKeepIsThrownOn) {
  tally.holdsBack = [] { return true; };
  control.keepEvery = 1e-9;
  control.keep = [](const Frontier&) { throw std::runtime_error("the disk is full"); };
  EXPECT_THROW(run(), std::runtime_error);
}

TEST_P(Workers, AFailureOfAWalkIsThrownOn) {
  for (const std::size_t at : {1, 5000}) {
    tally.failAt = tally.visited() + at;
    EXPECT_THROW(run(), std::runtime_error);
  }
}

TEST_P(Workers, ATrialEndsAfterItsCandidates) {
  EXPECT_FALSE(run({}, SMALL_TREE));
  const std::size_t small = tally.visited();
  EXPECT_LT(small, 100u);
  expectPartition(control.left);
  EXPECT_FALSE(run(control.left.pieces, 10 * SMALL_TREE));
  EXPECT_GT(tally.visited() - small, 5 * small);
  expectPartition(control.left);
}

INSTANTIATE_TEST_SUITE_P(Threads, Workers, ::testing::Values(1, 2, 3, 4));

// Comes to its end while the others wait for it to stand still.
class LateWalk : public PieceWalk {
 public:
  void start(const Piece& piece) override { isBegun_ = !piece.empty(); }
  Pause goOn() override {
    if (!isBegun_) return Pause::LOOK;
    // Time for the thread that keeps, which is due at once; if it takes longer, nothing is tested.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return Pause::END;
  }
  Piece rest() const override { return {Choice()}; }
  double share() const override { return 1; }
  bool split(Piece&) override { return false; }
  unsigned long takeNodes() override { return SMALL_TREE; }

 private:
  bool isBegun_ = false;
};

// It stood in the checkpoint as nothing but the whole tree: a run that went on listed all points once more.
TEST(WorkersAtTheEnd, NothingLeftIsNotTold) {
  for (unsigned threads = 1; threads <= 2; ++threads)
    for (int i = 0; i < 10; ++i) {
      SearchControl control;
      control.threads = threads;
      control.keepEvery = 1e-9;
      control.keep = [](const Frontier& left) { EXPECT_FALSE(left.pieces.empty()); };
      EXPECT_TRUE(walkThrough([] { return std::make_unique<LateWalk>(); }, {}, control));
    }
}

// Points of a real search, each of which may be refused or be the last one for now.
class Interrupting : public Visitor {
 public:
  explicit Interrupting(unsigned seed) : random_(seed) {}

  Next visit(const IntegerVector& z) override {
    const std::lock_guard lock(mutex_);
    if (random_() % 100 == 0) return Next::REFUSED;
    points.insert(z);
    return random_() % 100 == 0 ? Next::STOP : Next::GO_ON;
  }

  std::multiset<IntegerVector> points;

 private:
  std::mutex mutex_;
  std::mt19937 random_;
};

TEST(Search, GoesOnWithOtherThreadsAndVisitsEveryPointOnce) {
  IntegerProgram program;
  Row row;
  std::mt19937 random(1);
  for (int j = 0; j < 10; ++j) {
    program.box.push_back(rangeOf(0, 2));
    row.a.emplace_back(static_cast<long>(20 + random() % 30));
  }
  row.range = {Integer(300), Integer(310)};
  program.rows.push_back(row);
  const auto lattice = boxLatticeOf(program);
  ASSERT_TRUE(lattice);
  testing::Collector truth;
  SearchControl undisturbed;
  BoxLattice copy = *lattice;
  EXPECT_TRUE(search(copy, truth, undisturbed));
  EXPECT_GT(truth.points.size(), 1000u);
  for (unsigned seed = 0; seed < 8; ++seed) {
    Interrupting visitor(seed);
    SearchControl control;
    // With it the threads do not wait for the tree to be large.
    control.keepEvery = 1e-9;
    control.keep = [](const Frontier&) {};
    SearchSettings settings;
    int stops = 0;
    while (true) {
      control.threads = 1 + (seed + static_cast<unsigned>(stops)) % 4;
      copy = *lattice;
      if (search(copy, visitor, control, settings)) break;
      settings.pieces = control.left.pieces;
      ++stops;
    }
    EXPECT_GT(stops, 10);
    EXPECT_EQ(visitor.points, std::multiset<IntegerVector>(truth.points.begin(), truth.points.end()));
  }
}

}  // namespace
}  // namespace latbox::complete
