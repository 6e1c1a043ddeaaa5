// What a walk works on, laid out for its hot loop: plain numbers and pointers, so that the loop can be
// compiled for several processors without a function of another header among them.
#pragma once

#include <cstddef>

namespace latbox::complete {

// R is the type of steps, W that of the entries of cut vectors.
template <class R, class W>
struct alignas(64) WalkLevel {
  // The next candidates on both sides of the centre, and which sides are closed.
  R up{};
  R down{};
  // g u at lambda = 0, as far as it is known, and where it is 0.
  R base{};
  R centre{};
  // W u.
  R value{};
  bool closedUp = true;
  bool closedDown = true;
  // The walk pauses at candidates that the cuts have kept; the level was entered since it did so last.
  bool asks = false;
  bool isNew = false;

  // g K_t, 1 / (g g), and the g u of the cube's constant part.
  R step{};
  R inverseNorm{};
  R constant{};
  // Greatest and least g u, the least negated, both with what rounding can do; and what it is centred on.
  R most{};
  R least{};
  R nearest{};
  R cap{};
  // g K_i for all i; g; W. The last two are of the padded width.
  const R* products = nullptr;
  const W* g = nullptr;
  W* w = nullptr;

  bool isOpen() const { return !closedUp || !closedDown; }
};

template <class R, class W>
struct WalkData {
  // Levels 0 to k.
  WalkLevel<R, W>* levels = nullptr;
  // What is chosen at each level; zeros from k to the next multiple of the lanes and as many behind it.
  R* lambda = nullptr;
  std::size_t k = 0;
  // Entries of a cut vector, a multiple of LANES.
  std::size_t width = 0;
  R margin{};
  // Where the next candidate is taken; k: nothing is left.
  std::size_t level = 0;
  // The walk pauses when it comes to this level again, and after so many candidates.
  std::size_t ceiling = 0;
  unsigned long nextLook = 0;
  unsigned long sinceLook = 0;
};

enum class WalkPause {
  // All candidates are chosen: the point of lambda keeps all cuts.
  LEAF,
  // A level that asks has a candidate that the cuts have kept: it is to be accepted or refused.
  CANDIDATE,
  // The ceiling is reached.
  CEILING,
  // Some thousand candidates were looked at.
  LOOK,
  // Nothing is left.
  END
};

inline constexpr unsigned long BETWEEN_LOOKS = 4096;
// Cut vectors are padded with zeros to a multiple of so many entries, and so are products.
inline constexpr std::size_t LANES = 16;
inline constexpr std::size_t PRODUCT_LANES = 8;

}  // namespace latbox::complete
