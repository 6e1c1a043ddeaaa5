#include "driver/program_name.h"
#include "lib/immortal.h"

namespace latbox {
namespace {

std::string& storedName() {
  static Immortal<std::string> name;
  return *name;
}

}  // namespace

// Where there is no "/", rfind gives npos, and npos + 1 is the beginning.
void setProgramName(const std::string& path) {
  storedName() = path.substr(path.rfind('/') + 1);
}

const std::string& programName() {
  return storedName();
}

}  // namespace latbox
