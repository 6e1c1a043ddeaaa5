// latbox-all: all points of a program, the best one, or the proof that there is none.
#include "complete/command.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return latbox::complete::runCommand(arguments);
}
