#include "refusal.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

#include "lib/failure.h"

namespace latbox {

// In place of the ones in lib/failure.cpp.
void fail(const std::string& message) {
  throw fuzzing::Refusal{message};
}

void warn(const std::string&) {}

namespace fuzzing {
namespace {

struct Capture {
  std::ostringstream out;
  std::ostringstream err;
  std::streambuf* formerOut = nullptr;
  std::streambuf* formerErr = nullptr;
};

Capture& capture() {
  static auto& one = *new Capture;
  return one;
}

std::string taken(std::ostringstream& stream) {
  std::string text = stream.str();
  stream.str("");
  return text;
}

}  // namespace

void broken(const std::string& property) {
  const std::string line = "property broken: " + property + "\n";
  if (write(STDERR_FILENO, line.data(), line.size()) < 0) std::abort();
  std::abort();
}

Output::Output() {
  Capture& c = capture();
  c.formerOut = std::cout.rdbuf(c.out.rdbuf());
  c.formerErr = std::cerr.rdbuf(c.err.rdbuf());
}

Output::~Output() {
  Capture& c = capture();
  std::cout.rdbuf(c.formerOut);
  std::cerr.rdbuf(c.formerErr);
  taken(c.out);
  taken(c.err);
}

std::string Output::take() {
  return taken(capture().out);
}

std::string Output::takeErrors() {
  return taken(capture().err);
}

}  // namespace fuzzing
}  // namespace latbox
