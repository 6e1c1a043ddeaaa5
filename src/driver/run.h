// The phases of a run on the solver thread.
#pragma once

#include <string>

#include "driver/ylattice.h"

namespace latbox {

// The body of the solver thread: start, load, reduce, iterate, and again for every other input that is asked
// for. Ends the process through exit, the final report, or an exception.
template <class D>
[[noreturn]] void myMain(YLattice<D>& y);

// Loads .opt, .lat and .sol of `input` (a path without extension) into the live lattice, generates the
// lattice where there is no .lat file as young as the .opt file, and sets inputRequested to what the names
// derive from.
void readFiles(YLattice<dbl_t>& y, const std::string& input);

// Prepares the program that was read, generates the lattice and writes the .lat file.
void buildLattice(YLattice<dbl_t>& y);

// The names of the three files from `input`, whose last extension is dropped once more: "a.b" gives a.opt.
// A "/" ends the search for it, unlike on the command line; where nothing would be left, nothing is dropped.
// By another rule a run would not find the files of the runs before it.
template <class T, class F>
void deriveFileNames(Lattice<T, F>& lattice, const std::string& input);

// Whether the lattice must be generated: the .lat file can't be opened where the .opt file can, or it is
// older in whole seconds.
bool isNewer(const std::string& optName, const std::string& latName);

}  // namespace latbox
