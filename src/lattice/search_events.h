// What the search tells whoever runs it. A lower layer names what has happened; the driver acts on it.
#pragma once

namespace latbox {

template <class T, class F>
class Lattice;

template <class T, class F>
class SearchEvents {
 public:
  virtual ~SearchEvents() = default;
  // The solutions or the best vectors have changed.
  virtual void found(Lattice<T, F>& lattice) = 0;
  // A bound of `lattice.program` has moved: the lattice should be generated anew. May throw RestartException.
  virtual void boundMoved(Lattice<T, F>& lattice) = 0;
  // As many solutions are known as the run asked for. May end the process.
  virtual void limitReached(Lattice<T, F>& lattice) = 0;
};

}  // namespace latbox
