// Trimming: the coordinates in which a nearly feasible basis vector leaves its bounds get a larger weight or
// a shift, so that the next reduction prefers vectors that behave there.
#include "lattice/lattice.h"
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

}  // namespace

// The first basis vector that carries the inhomogeneous coordinate once; 0 if there is none.
template <class T, class F>
long Lattice<T, F>::carrierOfInhom() const {
  for (long i = 1; i <= rank; ++i)
    if (isZero(T(abs(inhomScaled) - abs(B[i][dim])))) return i;
  return 0;
}

template <class T, class F>
void Lattice<T, F>::reduceTrimmed() {
  if (params.eenum.get())
    enumerate(nullptr);
  else
    lll(1, 0, 0);
}

template <class T, class F>
void Lattice<T, F>::scaleCoordinates(const Set<long>& coordinates) {
  const ProgressScope level(verb() > 1, listed("Scaling ...", coordinates));
  for (const auto* node = coordinates.head; node != nullptr; node = node->next) scaleStep(node->value, T(1));
  reduceTrimmed();
}

template <class T, class F>
void Lattice<T, F>::translateCoordinates(const Set<long>& coordinates) {
  const ProgressScope level(verb() > 1, "Translating ...");
  for (const auto* node = coordinates.head; node != nullptr; node = node->next) {
    const long p = node->value;
    const T old = p <= translation.MN ? translation[p] : T(0);
    // Drawn before the coordinate is looked at: the sequence of draws is part of the run.
    const T shift = randomSign(old + (old < T(0) ? T(-1) : T(1)));
    if (p == dim || abs(shift) >= T(TRANSLATION_LIMIT)) continue;
    setTranslation(p, shift);
    progressLine(verb() > 1,
                 "Component index: " + std::to_string(p) + ", Translation value: " + toText(shift));
  }
  reduceTrimmed();
}

// A coordinate that is still out of bounds is tried again with fresh deviations. The sets can only shrink,
// which bounds the recursion.
template <class T, class F>
void Lattice<T, F>::trimAgainst(const Set<long>* previous) {
  const long carrier = carrierOfInhom();
  if (carrier == 0) {
    const ProgressScope level(verb() > 1, "Inhomogenous component scaling");
    scaleStep(dim, T(1));
    reduceTrimmed();
    return;
  }
  const bool scaling = params.scale.get(), translating = params.translate.get();
  if (!scaling && !translating) return;
  Vector<T> x;
  unscaledVector(B[carrier], x);
  if ((x[dim] < T(0)) != (inhomBase < T(0))) x = -x;
  const Set<long> missed = coordinatesOf(deviations(x, false, false));
  if (missed.count == 0 && program.At.M > 0) fail("At least the target component should deviate ...");
  Set<long> scaled;
  if (scaling) scaled = previous == nullptr ? missed : difference(*previous, missed);
  if (scaled.count > 0) scaleCoordinates(scaled);
  if (translating) translateCoordinates(missed);
  if (scaled.count >= missed.count) return;
  if (previous == nullptr)
    trim(&missed);
  else if (previous->count > scaled.count)
    trim(&scaled);
}

template <class T, class F>
void Lattice<T, F>::trim(const Set<long>* previous) {
  const ProgressScope level(verb() > 1 && previous == nullptr, "Trimming ...");
  if (rank > 0) trimAgainst(previous);
}

#define LATBOX_INSTANTIATE(T)                                              \
  template long Lattice<T, dbl_t>::carrierOfInhom() const;                 \
  template void Lattice<T, dbl_t>::reduceTrimmed();                        \
  template void Lattice<T, dbl_t>::scaleCoordinates(const Set<long>&);     \
  template void Lattice<T, dbl_t>::translateCoordinates(const Set<long>&); \
  template void Lattice<T, dbl_t>::trimAgainst(const Set<long>*);          \
  template void Lattice<T, dbl_t>::trim(const Set<long>*);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
