// latbox-check: whether what the solver claims is true.
#include <iostream>

#include "check/command.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return latbox::check::runCommand(arguments, std::cout, std::cerr);
}
