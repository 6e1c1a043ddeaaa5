#include "complete/search.h"

#include <algorithm>

#include "complete/leaf.h"
#include "complete/reduction.h"
#include "complete/walk.h"
#include "complete/workers.h"

namespace latbox::complete {
namespace {

constexpr unsigned long DOUBLE_BITS = 53;
constexpr unsigned long FIRST_FLOAT_BITS = 256;
constexpr unsigned long LAST_FLOAT_BITS = 1ul << 17;

// A walk with what it does at its leaves.
template <class R>
class PointWalk : public PieceWalk {
 public:
  PointWalk(const BoxLattice& lattice, const CutTables<R>& tables, const SearchSettings& settings,
            Visitor& visitor, SharedLimit& shared)
      : lattice_(lattice), visitor_(visitor), shared_(shared), leaf_(lattice), walk_(tables, settings.caps) {
    heedLimit();
  }

  void start(const Piece& piece) override { walk_.start(piece); }
  Piece rest() const override { return walk_.rest(); }
  double share() const override { return walk_.share(); }
  bool split(Piece& other) override { return walk_.split(other); }
  unsigned long takeNodes() override { return walk_.takeNodes(); }

  Pause goOn() override {
    while (true) {
      switch (walk_.next()) {
        case WalkPause::END:
          return Pause::END;
        case WalkPause::LOOK:
          heedLimit();
          return Pause::LOOK;
        case WalkPause::NODE:
          break;
        case WalkPause::LEAF:
          if (!visitLeaf()) return Pause::STOP;
      }
    }
  }

 private:
  // False: the visitor has had enough.
  bool visitLeaf() {
    const std::optional<IntegerVector> v = leaf_.pointOf(walk_.lambda());
    if (!v) return true;
    const Next next = visitor_.visit(lattice_.allVariables(*v));
    if (next == Next::LIMIT) {
      ++shared_.version;
      heedLimit();
    }
    if (next == Next::REFUSED) walk_.takeBack();
    return next != Next::STOP && next != Next::REFUSED;
  }

  // Takes the limit of the target norm into the ranges of its rows, and these into the cuts.
  void heedLimit() {
    const unsigned long version = shared_.version;
    if (version == version_) return;
    version_ = version;
    const Integer limit = visitor_.limit();
    std::vector<ShrunkRange> shrunk;
    const std::size_t n = lattice_.variables.size();
    for (std::size_t r = 0; r < lattice_.rows.size(); ++r) {
      Row row = lattice_.rows[r];
      if (row.kind == RowKind::CONDITION) continue;
      limitRow(row, limit);
      const std::size_t j = n + r;
      leaf_.narrow(j, *row.range.low, *row.range.high);
      shrunk.push_back({j, inCube(j, *row.range.high), inCube(j, *row.range.low)});
    }
    walk_.shrink(shrunk);
  }

  // An end of a range in the coordinates of the cube. An end beyond the other side leaves nothing: the cube's
  // own end is as good, since the leaf asks again.
  Rational inCube(std::size_t j, const Integer& end) const {
    Rational u(Integer(2 * end - lattice_.low[j] - lattice_.high[j]),
               Integer(lattice_.high[j] - lattice_.low[j]));
    u.canonicalize();
    return std::clamp(u, Rational(-1), Rational(1));
  }

  const BoxLattice& lattice_;
  Visitor& visitor_;
  SharedLimit& shared_;
  Leaf leaf_;
  Walk<R> walk_;
  unsigned long version_ = 0;
};

// False: the precision does not do.
template <class R>
bool searchIn(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
              const SearchSettings& settings, bool& complete) {
  const auto tables = cutTablesOf<R>(lattice, bits);
  if (!tables) return false;
  SharedLimit shared;
  complete =
      walkThrough([&] { return std::make_unique<PointWalk<R>>(lattice, *tables, settings, visitor, shared); },
                  settings.pieces, control, settings.isTrial);
  return true;
}

}  // namespace

bool searchWith(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
                const SearchSettings& settings) {
  bool complete = false;
  if (bits == DOUBLE_BITS && searchIn<double>(bits, lattice, visitor, control, settings, complete))
    return complete;
  for (bits = std::max(bits, FIRST_FLOAT_BITS); bits <= LAST_FLOAT_BITS; bits *= 2)
    if (searchIn<Float>(bits, lattice, visitor, control, settings, complete)) return complete;
  throw ReductionFailure("the basis asks for more digits than there are");
}

bool search(BoxLattice& lattice, Visitor& visitor, SearchControl& control, const SearchSettings& settings) {
  return searchWith(DOUBLE_BITS, lattice, visitor, control, settings);
}

}  // namespace latbox::complete
