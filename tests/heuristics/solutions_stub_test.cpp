// Stands in for the files that a find is written to, until they are there.
#include "lattice/lattice.h"

namespace latbox {
template <class T, class F>
void Lattice<T, F>::writeLatFile() {}
template <class T, class F>
void Lattice<T, F>::writeSolFile(bool) {}
template <class T, class F>
void Lattice<T, F>::reinstate(const ConversionArray<Star<T>>&, const std::vector<Star<T>>&,
                              const SortedSet<HeuristicVector<T, F>>&,
                              const SortedSet<HeuristicVector<T, F>>&, int) {}
template <class T, class F>
std::string Lattice<T, F>::starReport() const {
  return "";
}
template <class T, class F>
void Lattice<T, F>::readmitStars(const ConversionArray<Star<T>>&, bool) {}
template std::string Lattice<dbl_t, dbl_t>::starReport() const;
template std::string Lattice<QQ, dbl_t>::starReport() const;
template void Lattice<dbl_t, dbl_t>::readmitStars(const ConversionArray<Star<dbl_t>>&, bool);
template void Lattice<QQ, dbl_t>::readmitStars(const ConversionArray<Star<QQ>>&, bool);
template void Lattice<dbl_t, dbl_t>::writeLatFile();
template void Lattice<QQ, dbl_t>::writeLatFile();
template void Lattice<dbl_t, dbl_t>::writeSolFile(bool);
template void Lattice<QQ, dbl_t>::writeSolFile(bool);
template void Lattice<dbl_t, dbl_t>::reinstate(const ConversionArray<Star<dbl_t>>&,
                                               const std::vector<Star<dbl_t>>&,
                                               const SortedSet<HeuristicVector<dbl_t, dbl_t>>&,
                                               const SortedSet<HeuristicVector<dbl_t, dbl_t>>&, int);
template void Lattice<QQ, dbl_t>::reinstate(const ConversionArray<Star<QQ>>&, const std::vector<Star<QQ>>&,
                                            const SortedSet<HeuristicVector<QQ, dbl_t>>&,
                                            const SortedSet<HeuristicVector<QQ, dbl_t>>&, int);
}  // namespace latbox
