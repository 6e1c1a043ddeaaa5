// Trimming bends the metric of the reduction towards the box. Reduction knows lengths alone, but a point is
// feasible coordinate by coordinate: a vector may be short and leave its bounds in two places all the same.
// So the first row that carries the inhomogeneous coordinate is looked at, and the coordinates in which it
// leaves its bounds get a larger weight (`scale`, scale_steps.h) or another centre (`translate`); the
// reduction that follows avoids vectors that are large there. Where no row carries the coordinate, its own
// weight moves instead, whatever the options say. The signs of weights and shifts are drawn, so that a second
// try is another one. No source.
//
// It pays where the same few coordinates are violated again and again, as with few, wide rows: on five
// packing rows `scale` gave the best target of all settings that were tried (docs/search.md). It does not pay
// where violations are spread evenly: all weights then grow in turn, which weighs nothing.
//
// Cost: a reduction for each pass and kind, on a basis of which no Gram-Schmidt data hold any more; all else
// is small beside it. With `scale` there is one pass, with `translate` alone there are at most three.
#include "heuristics/trimming.h"

#include <string>

#include "heuristics/carrier.h"
#include "heuristics/scale_steps.h"
#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr long TRANSLATION_LIMIT = 1000000;

bool contains(const Set<long>& set, long element) {
  for (const auto* node = set.head; node != nullptr; node = node->next)
    if (node->value == element) return true;
  return false;
}

// `from` without the members of `removed`, in the order of `from`.
Set<long> difference(const Set<long>& from, const Set<long>& removed) {
  Set<long> result;
  for (const auto* node = from.head; node != nullptr; node = node->next)
    if (!contains(removed, node->value)) result.append(node->value);
  return result;
}

template <class T>
Set<long> coordinatesOf(const DeviationList<T>& list) {
  Set<long> result;
  for (long i = 1; i <= list.MN; ++i) result.append(list[i].left);
  return result;
}

std::string listed(const std::string& text, const Set<long>& coordinates) {
  std::string line = text;
  for (const auto* node = coordinates.head; node != nullptr; node = node->next)
    line += " " + std::to_string(node->value);
  return line;
}

template <class T, class F>
void scaleCoordinates(Lattice<T, F>& l, const Set<long>& coordinates) {
  const ProgressScope level(l.verb() > 1, listed("Scaling ...", coordinates));
  for (const auto* node = coordinates.head; node != nullptr; node = node->next)
    scaleStep(l, node->value, T(1));
  l.reduce();
}

template <class T, class F>
void translateCoordinates(Lattice<T, F>& l, const Set<long>& coordinates) {
  const ProgressScope level(l.verb() > 1, "Translating ...");
  for (const auto* node = coordinates.head; node != nullptr; node = node->next) {
    const long p = node->value;
    const T old = p <= l.translation.MN ? l.translation[p] : T(0);
    // Drawn before the coordinate is looked at: the sequence of draws is part of the run.
    const T shift = randomSign(old + (old < T(0) ? T(-1) : T(1)));
    if (p == l.dim || abs(shift) >= T(TRANSLATION_LIMIT)) continue;
    l.setTranslation(p, shift);
    progressLine(l.verb() > 1,
                 "Component index: " + std::to_string(p) + ", Translation value: " + toText(shift));
  }
  l.reduce();
}

// What is still out of bounds is tried again, with the deviations of the basis as it is then. The sets can
// only shrink, which bounds the recursion.
template <class T, class F>
void trimAgainst(Lattice<T, F>& l, const Set<long>* previous) {
  const long carrier = carrierOfInhom(l);
  if (carrier == 0) {
    const ProgressScope level(l.verb() > 1, "Inhomogenous component scaling");
    scaleStep(l, l.dim, T(1));
    l.reduce();
    return;
  }
  const bool scaling = l.params.scale.get(), translating = l.params.translate.get();
  if (!scaling && !translating) return;
  Vector<T> x;
  l.unscaledVector(l.B[carrier], x);
  if ((x[l.dim] < T(0)) != (l.inhomBase < T(0))) x = -x;
  const Set<long> missed = coordinatesOf(l.deviations(x, false, false));
  if (missed.count == 0 && l.program.At.M > 0) fail("At least the target component should deviate ...");
  Set<long> scaled;
  if (scaling) scaled = previous == nullptr ? missed : difference(*previous, missed);
  if (scaled.count > 0) scaleCoordinates(l, scaled);
  if (translating) translateCoordinates(l, missed);
  if (scaled.count >= missed.count) return;
  if (previous == nullptr)
    trim(l, &missed);
  else if (previous->count > scaled.count)
    trim(l, &scaled);
}

}  // namespace

template <class T, class F>
void trim(Lattice<T, F>& l, const Set<long>* previous) {
  const ProgressScope level(l.verb() > 1 && previous == nullptr, "Trimming ...");
  if (l.rank > 0) trimAgainst(l, previous);
}

LATBOX_BOTH_TYPES(trim)

}  // namespace latbox
