// The two loops in which a search spends its time. The cut vectors of a search in double are of float: they
// only suggest a sum of sizes whose error is bounded, and twice as many of them fit a vector of the
// processor. Sums are formed in one order on every processor, and no product is added unrounded, so that a
// search visits the same nodes everywhere.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#include "complete/gram_schmidt.h"

namespace latbox::complete {

// Cut vectors are padded with zeros to a multiple of so many entries.
inline constexpr std::size_t LANES = 16;

// Begins at a line of the cache, so that no load of a whole vector spans two.
template <class T>
struct LineAllocator {
  static constexpr std::align_val_t LINE{64};
  using value_type = T;
  LineAllocator() = default;
  template <class U>
  explicit LineAllocator(const LineAllocator<U>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), LINE)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, LINE); }
  friend bool operator==(const LineAllocator&, const LineAllocator&) { return true; }
};

// The entries of cut vectors for a search in R.
template <class R>
struct WeightOf {
  using type = R;
};
template <>
struct WeightOf<double> {
  using type = float;
};
template <class R>
using Weight = typename WeightOf<R>::type;
template <class R>
using Weights = std::vector<Weight<R>, LineAllocator<Weight<R>>>;

// to = from + a g; returns the sum of the sizes of the entries. Requires equal, padded sizes.
float addScaled(Weights<double>& to, const Weights<double>& from, const Weights<double>& g, float a);
Float addScaled(Weights<Float>& to, const Weights<Float>& from, const Weights<Float>& g, const Float& a);

// The roundings that one entry can meet in the sum of sizes.
inline std::size_t sumDepth(std::size_t size, double) {
  return size / LANES + LANES;
}
inline std::size_t sumDepth(std::size_t size, const Float&) {
  return size;
}

// The sum of a[i] b[i] for i from `begin` on. Requires equal sizes.
double partialProduct(const std::vector<double>& a, const std::vector<double>& b, std::size_t begin);
Float partialProduct(const std::vector<Float>& a, const std::vector<Float>& b, std::size_t begin);

}  // namespace latbox::complete
