// The command line: the input holds the arguments, one per line. It is refused, or both sides of the pair
// hold the same parameters. Arguments that print the usage end the process by design and are left out.
#include "driver/command_line.h"

#include <vector>

#include "driver/run_state.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

// The usage comes for the switch that asks for it and for an empty input.
bool printsUsage(const std::string& argument) {
  const std::size_t key = argument.find_first_not_of('-');
  return argument.empty() || (key != std::string::npos && key > 0 && argument.compare(key, 5, "help=") == 0);
}

std::vector<std::string> argumentsOf(const std::string& text) {
  std::vector<std::string> arguments{"latbox"};
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    // An argument ends at its first zero byte.
    const std::string argument(text.substr(begin, end - begin).c_str());
    if (!printsUsage(argument)) arguments.push_back(argument);
    begin = end + 1;
  }
  return arguments;
}

void requireAgreement(YLattice<dbl_t>& y) {
  const std::string live = y.live([](auto& lattice) { return lattice.params.text(); });
  if (y.extendedActive) return;
  require(live == y.standard.params.text(), "the parameters of the live side");
  require(!y.live([](auto& lattice) { return lattice.params.help.get(); }), "no usage");
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox;
  using namespace latbox::fuzzing;
  std::vector<std::string> arguments = argumentsOf(textOf(bytes, size));
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const Output silenced;
  YLattice<dbl_t> y;
  if (accepted([&] { parseCommandLine(static_cast<int>(arguments.size()), argv.data(), y); }))
    requireAgreement(y);
  return 0;
}
