// Solutions as the .sol file shows them: one line per star, written as a whole, read back when a run resumes.
#pragma once

#include <string>

#include "lattice/lattice.h"

namespace latbox {

// The star of a vector of the lattice, with its norms, its time and the parameters of this run.
// Fails with: "sol2star: lat2opt can not compute x_opt".
template <class T, class F>
Star<T> starOf(const Lattice<T, F>& lattice, const TimeVector<T>& v);

// The best point and the solutions join program.stars.
// Ensures: the stars are sorted, best first, without duplicates.
// Fails with: "sol2star: lat2opt can not compute x_opt".
template <class T, class F>
void sol2star(Lattice<T, F>& lattice);

// The whole file as the stars say, after sol2star unless keepStars; no stars: the file is removed. Nothing
// happens while writing is off or held, or nothing has changed. A file that can't be written is a warning.
template <class T, class F>
void writeSolFile(Lattice<T, F>& lattice, bool keepStars);

// Nothing in a benchmark run or without a file. A damaged file ends the run.
template <class T, class F>
void readStarsFromSolFile(Lattice<T, F>& lattice, bool, bool);

// Judges stars against the lattice as it stands; those that fit join program.stars. `report` logs the
// others.
template <class T, class F>
void readmitStars(Lattice<T, F>& lattice, const ConversionArray<Star<T>>& candidates, bool report);

// The console's report of all stars.
template <class T, class F>
std::string starReport(const Lattice<T, F>& lattice);

}  // namespace latbox
