// A file cannot be written: the run ends with status 1.
#pragma once

#include <stdexcept>
#include <string>

namespace latbox::complete {

class WriteFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What was written to the file is on the disk when this returns, as far as the system can tell. Throws
// WriteFailure.
void synchronise(const std::string& path);

}  // namespace latbox::complete
