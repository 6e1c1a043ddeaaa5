#include "driver/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "driver/ladder.h"
#include "driver/program_name.h"
#include "driver/run_state.h"

namespace latbox {
namespace {

bool setIn(const Params& params, const std::string& key, const std::string& text, OnBadNumber onBad) {
  ParamInfo* const parameter = params.lookUp(key);
  if (parameter == nullptr) return false;
  if (onBad == OnBadNumber::zero)
    parameter->setTextOrZero(text);
  else
    parameter->setText(text);
  return true;
}

void readOption(YLattice<dbl_t>& y, const std::string& argument) {
  const std::string option = argument.substr(std::min(argument.find_first_not_of('-'), argument.size()));
  const std::size_t split = option.find('=');
  if (split == std::string::npos) fail("Malformed parameter: " + option);
  const std::string key = option.substr(0, split);
  if (!setParameter(y, key, option.substr(split + 1), OnBadNumber::failure))
    fail("No such parameter: " + key);
}

void readArgument(YLattice<dbl_t>& y, const std::string& argument) {
  if (argument.starts_with('-'))
    readOption(y, argument);
  else if (argument.empty())
    printUsage(y, false);
  else
    setMainValue(y, MainMutexVariable::inputRequested, withoutExtension(argument));
}

// A block may not outlive the run.
template <class T, class F>
void boundBlockTime(Lattice<T, F>& lattice) {
  const long runTime = lattice.params.rtime.get();
  const long blockTime = lattice.params.btime.get();
  if (runTime != 0 && (blockTime == 0 || blockTime > runTime)) lattice.params.btime.set(runTime);
}

// The way down at the start is silent. `verb` is put back as the number that it was read as, by which its
// text becomes that of the number: what a .sol line shows is a value and not what was typed.
void enterStandardPrecision(YLattice<dbl_t>& y) {
  {
    const Mute mute;
    tryStandardPrecision(y);
  }
  y.live([](auto& lattice) { lattice.params.verb.set(lattice.verb()); });
}

}  // namespace

// A side that ceases to be live meanwhile may have been left already: the other one takes the value, too.
bool setParameter(YLattice<dbl_t>& y, const std::string& key, const std::string& text, OnBadNumber onBad) {
  for (;;) {
    const bool extended = y.extendedActive;
    const bool known = extended ? setIn(y.extended.params, key, text, onBad)
                                : setIn(y.standard.params, key, text, onBad) &&
                                      setIn(y.standardBackup.params, key, text, onBad);
    if (!known || extended == y.extendedActive) return known;
  }
}

// The exact side takes the values first: no digit of a norm that the operator asked for is lost.
void parseCommandLine(int argc, char** argv, YLattice<dbl_t>& y) {
  switchToExtended(y);
  for (int i = 1; i < argc; ++i) readArgument(y, argv[i]);
  if (y.live([](auto& lattice) { return lattice.params.help.get(); })) printUsage(y, true);
  y.live([](auto& lattice) { boundBlockTime(lattice); });
  enterStandardPrecision(y);
}

void printUsage(YLattice<dbl_t>& y, bool full) {
  std::cout << "Usage: " << programName() << ' ';
  if (full)
    std::cout << "[options] file.opt|file.lat\n\nOptions:\n" << liveOptionTable(y) << '\n';
  else
    std::cout << y.live([](auto& lattice) { return lattice.params.text(); }) << " file.opt|file.lat\n";
  std::cout << std::flush;
  std::exit(0);
}

std::string liveOptionTable(YLattice<dbl_t>& y) {
  std::ostringstream text;
  y.live([&text](auto& lattice) { lattice.params.optionTable(text); });
  return text.str();
}

std::string withoutExtension(const std::string& path) {
  return path.substr(0, path.rfind('.'));
}

}  // namespace latbox
