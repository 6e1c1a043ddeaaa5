// Stands in for the judging of vectors and for the saved lattice until these are there.
#include "lattice/lattice.h"

namespace latbox {
template <class T, class F>
unsigned Lattice<T, F>::checkSolution(const Vector<T>&, bool, DiscoveryTime, bool, Membership) {
  return 0;
}
template <class T, class F>
void Lattice<T, F>::writeLatFile() {}
template unsigned Lattice<dbl_t, dbl_t>::checkSolution(const Vector<dbl_t>&, bool, DiscoveryTime, bool, Membership);
template unsigned Lattice<QQ, dbl_t>::checkSolution(const Vector<QQ>&, bool, DiscoveryTime, bool, Membership);
template void Lattice<dbl_t, dbl_t>::writeLatFile();
template void Lattice<QQ, dbl_t>::writeLatFile();
}  // namespace latbox
