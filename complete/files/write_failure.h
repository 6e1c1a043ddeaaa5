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

// The file gets this text by one rename, put together beside it as path + BESIDE; `surely`: on the disk.
// Throws WriteFailure, and the file is as it was.
inline constexpr const char* BESIDE = ".tmp";
void replaceFile(const std::string& path, const std::string& text, bool surely);

}  // namespace latbox::complete
