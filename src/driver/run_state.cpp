#include "driver/run_state.h"

namespace latbox {

std::string mainValue(YLattice<dbl_t>& y, MainMutexVariable key) {
  return y.live([key](auto& lattice) { return lattice.mainVars[key].get(); });
}

void setMainValue(YLattice<dbl_t>& y, MainMutexVariable key, const std::string& value) {
  y.live([&](auto& lattice) { lattice.mainVars[key].set(value); });
}

void setRunState(YLattice<dbl_t>& y, const std::string& state) {
  bool extendedBefore;
  do {
    extendedBefore = y.extendedActive;
    setMainValue(y, MainMutexVariable::runState, state);
    y.standard.mainVars[MainMutexVariable::runState].set(state);
    y.standardBackup.mainVars[MainMutexVariable::runState].set(state);
    y.extended.mainVars[MainMutexVariable::runState].set(state);
  } while (extendedBefore != y.extendedActive || runState(y) != state);
}

bool inputIsLoaded(YLattice<dbl_t>& y) {
  return mainValue(y, MainMutexVariable::inputLoaded) == mainValue(y, MainMutexVariable::inputRequested);
}

}  // namespace latbox
