#include "driver/console.h"

#include <iostream>

#include "driver/command_line.h"
#include "driver/run_state.h"
#include "lib/text.h"

namespace latbox {
namespace {

constexpr const char* WHITE_SPACE = " \t\n\r\f\v";

// One insertion, so that what the solver prints meanwhile doesn't come between its parts.
void answer(const std::string& text) {
  std::cout << text << std::flush;
}

void answerState(const std::string& state) {
  answer("> Status: " + state + "\n");
}

void changeState(YLattice<dbl_t>& y, const char* state) {
  setRunState(y, state);
  answerState(state);
}

// What follows "SET" and at least one blank or tab; false if the line has another form. By hand, since a
// matcher that recurses would overflow the stack on a long line.
bool takeSetting(const std::string& line, std::string& setting) {
  if (line.compare(0, 3, "SET") != 0) return false;
  const std::size_t begin = line.find_first_not_of(" \t", 3);
  if (begin == 3 || begin == std::string::npos) return false;
  setting = line.substr(begin);
  return setting.find_first_of("\n\r") == std::string::npos;
}

// The last "=" splits.
void changeSetting(YLattice<dbl_t>& y, const std::string& setting) {
  const std::size_t split = setting.rfind('=');
  if (split == std::string::npos) return;
  const std::string key = setting.substr(0, split);
  const std::string value = setting.substr(split + 1);
  if (setParameter(y, key, value, OnBadNumber::zero))
    answer("> Setting: " + key + " = " + value + "\n");
  else
    std::cerr << "\n*** No such setting: " + key + "\n" << std::flush;
}

}  // namespace

void actOnLine(YLattice<dbl_t>& y, const std::string& line) {
  const std::string command = trimmed(line, WHITE_SPACE);
  std::string setting;
  if (command == "STATUS")
    answerState(runState(y));
  else if (command == "STOP")
    changeState(y, RUN_STOPPED);
  else if (command == "RUN")
    changeState(y, RUN_RUNNING);
  else if (command == "HELP")
    answer(liveOptionTable(y) + "\n");
  else if (takeSetting(command, setting))
    changeSetting(y, setting);
}

void serveConsole(YLattice<dbl_t>& y, LineInput& input) {
  std::string line;
  while (input.next(line)) actOnLine(y, line);
}

}  // namespace latbox
