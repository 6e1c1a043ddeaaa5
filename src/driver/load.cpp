// From the files to the lattice.
#include "driver/command_line.h"
#include "driver/ladder.h"
#include "driver/run.h"
#include "driver/run_state.h"
#include "lib/os/file.h"
#include "lib/scope_value.h"
#include "program/generation.h"
#include "program/lat_file.h"
#include "program/sol_file.h"

namespace latbox {
namespace {

// The exact form of the input is always the first one.
void readProgram(YLattice<dbl_t>& y) {
  const ProgressScope level(y.verb() == 2, "Reading opt file ...");
  switchToExtended(y);
  y.extended.program.readOpt();
  tryStandardPrecision(y);
}

void prepareProgram(YLattice<dbl_t>& y) {
  const ProgressScope level(y.verb() == 2, "Preparing optimization program ...");
  oneStep(y, [](auto& lattice) { prepare(lattice, true, false); });
}

// The first .lat file is written whatever the flag says.
template <class T, class F>
void writeFirstLatFile(Lattice<T, F>& lattice) {
  const ScopeValue writing(lattice.writeEnabled, true);
  lattice.writeLatFile();
}

bool mustGenerate(YLattice<dbl_t>& y) {
  if (y.live([](auto& lattice) { return isBenchmark(lattice.params.bench.get()); })) return true;
  return y.live([](auto& lattice) { return isNewer(lattice.optFile, lattice.latFile); });
}

}  // namespace

template <class T, class F>
void deriveFileNames(Lattice<T, F>& lattice, const std::string& input) {
  const std::size_t last = input.find_last_of("./");
  std::string base = last != std::string::npos && input[last] == '.' ? input.substr(0, last) : input;
  if (base.empty()) base = input;
  lattice.optFile = lattice.program.optFile = base + ".opt";
  lattice.solFile = lattice.program.solFile = base + ".sol";
  lattice.latFile = base + ".lat";
}

LATBOX_BOTH_TYPES(deriveFileNames)

bool isNewer(const std::string& optName, const std::string& latName) {
  long optTime = 0;
  long latTime = 0;
  if (!modificationTime(optName, optTime)) return false;
  return !modificationTime(latName, latTime) || latTime < optTime;
}

void buildLattice(YLattice<dbl_t>& y) {
  const ProgressScope level(y.verb() == 2, "Generating lattice ...");
  prepareProgram(y);
  oneStep(y, [](auto& lattice) { prepareLattice(lattice); });
  oneStep(y, [](auto& lattice) { writeFirstLatFile(lattice); });
}

void readFiles(YLattice<dbl_t>& y, const std::string& input) {
  const ProgressScope level(y.verb() == 2, "Reading files ...");
  y.live([&input](auto& lattice) { deriveFileNames(lattice, input); });
  readProgram(y);
  if (mustGenerate(y))
    buildLattice(y);
  else
    oneStep(y, [](auto& lattice) { readLatFile(lattice); });
  oneStep(y, [](auto& lattice) { readStarsFromSolFile(lattice, false, false); });
  const std::string latFile = y.live([](auto& lattice) { return lattice.latFile; });
  setMainValue(y, MainMutexVariable::inputRequested, withoutExtension(latFile));
}

}  // namespace latbox
