// The entries of cut vectors. Those of a search in double are of float: they only suggest a sum of sizes
// whose error is bounded, and twice as many of them fit a vector of the processor.
#pragma once

#include <new>
#include <vector>

#include "complete/lattice/gram_schmidt.h"
#include "complete/tree/walk_data.h"

namespace latbox::complete {

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

// The roundings that one entry can meet in the sum of the sizes of all.
inline std::size_t sumDepth(std::size_t size, double) {
  return size / LANES + LANES;
}
inline std::size_t sumDepth(std::size_t size, const Float&) {
  return size;
}

inline std::size_t paddedTo(std::size_t size, std::size_t lanes) {
  return (size + lanes - 1) / lanes * lanes;
}

}  // namespace latbox::complete
