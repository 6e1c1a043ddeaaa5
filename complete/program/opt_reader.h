// The .opt file, read exactly.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "complete/program/program.h"

namespace latbox::complete {

// What is wrong with the command line, a file or the program: the run ends with status 2.
class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads an .opt text. Thresholds are read and left. Throws BadInput, whose text begins with
// "NAME:LINE:COLUMN: ".
Program readProgram(std::string_view text, const std::string& name);

}  // namespace latbox::complete
