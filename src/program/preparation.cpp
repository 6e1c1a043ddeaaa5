// The two stages of the preparation on their two objects.
#include "lattice/lattice.h"

namespace latbox {

// Whether stage one has work to do. It runs once per program: run twice, it would take its own slacks for
// variables of the user.
template <class T, class F>
static bool needsStageOne(const Lattice<T, F>& lattice, bool full, bool force) {
  if (lattice.program.prepared) return false;
  return full || force || (lattice.tu && !lattice.atu.notEmpty());
}

template <class T, class F>
void Lattice<T, F>::prepare(bool full, bool force) {
  const bool verbose = verb() == 2;
  if (needsStageOne(*this, full, force)) program.prepareStageOne(full, verbose);
  const std::string ownOptFile = this->optFile;
  const std::string ownSolFile = this->solFile;
  Tessik<T>::operator=(program);
  // The names belong to the object that reads and writes the files.
  if (!ownOptFile.empty()) this->optFile = ownOptFile;
  if (!ownSolFile.empty()) this->solFile = ownSolFile;
  this->prepareStageTwo(verbose);
}

template void Lattice<dbl_t, dbl_t>::prepare(bool, bool);
template void Lattice<QQ, dbl_t>::prepare(bool, bool);

}  // namespace latbox
