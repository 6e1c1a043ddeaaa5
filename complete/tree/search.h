// The complete search of a lattice in its box by several threads.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>

#include "complete/lattice/box_lattice.h"
#include "complete/tree/piece.h"

namespace latbox::complete {

// What a search may do after a point.
enum class Next {
  GO_ON,
  STOP,
  // As STOP, and the point was not taken: whoever goes on meets it again.
  REFUSED
};

// visit() is called by several threads at once, the others while none of them is.
class Visitor {
 public:
  virtual ~Visitor() = default;
  // All variables of a point of the program.
  virtual Next visit(const IntegerVector& z) = 0;
  // The point that it holds, if it does. With that, visit() brings another visitor to where this one is.
  virtual std::optional<IntegerVector> held() const { return std::nullopt; }
  // It has had enough for this run, and what is left of the search may be wanted by another.
  virtual bool isInterrupted() const { return false; }
};

struct SearchControl {
  // Set from outside: the search ends soon.
  std::atomic<bool> stop = false;
  // Set from outside, too: what is searched for is known. The present search ends, the next one may begin.
  std::atomic<bool> known = false;
  bool isOver() const { return stop || known; }
  // Candidates that were looked at, in all searches.
  std::atomic<unsigned long> nodes = 0;
  // The share of the present search that is done, estimated; below 0: not known.
  std::atomic<double> done = -1;
  unsigned threads = 1;
  // Is told of a search that will take its time: candidates, points and coordinates, the first two estimated.
  std::function<void(double nodes, double points, std::size_t coordinates)> announce;
  // Is given what is left each `keepEvery` seconds, unless these are 0; all threads stand still meanwhile, so
  // that what was visited is exactly what is not left.
  std::function<void(const Frontier&)> keep;
  double keepEvery = 60;
  // A run of many short searches keeps time across them.
  std::chrono::steady_clock::time_point lastKeep = std::chrono::steady_clock::now();
  // Of a search that has ended without being complete.
  Frontier left;

  std::chrono::steady_clock::time_point nextKeep() const;
  bool isKeepDue() const { return std::chrono::steady_clock::now() >= nextKeep(); }
};

// A tree of so many candidates is walked through before another thread would have begun.
inline constexpr unsigned long SMALL_TREE = 200'000;

struct SearchSettings {
  // Where to go on; empty: the whole tree.
  std::vector<Piece> pieces;
  // For a search that may miss points: the greatest value of a node at each level and behind them (see
  // cuts.h).
  std::vector<double> caps;
  // It ends, as if stopped, after so many candidates; 0: it is no trial.
  unsigned long trial = 0;
};

// Calls the visitor for every point of the box, once, in no order. True: all were visited. False: stopped.
// Moves the lattice's point. What a visitor throws is thrown on.
bool search(BoxLattice& lattice, Visitor& visitor, SearchControl& control,
            const SearchSettings& settings = {});

// Whether the search of all points comes to its end within so many candidates.
bool isSmall(BoxLattice& lattice, unsigned long candidates);

// As search, by multiprecision numbers of at least so many bits: for tests. 53 bits are those of double.
bool searchWith(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control,
                const SearchSettings& settings = {});

}  // namespace latbox::complete
