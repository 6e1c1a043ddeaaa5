// Lines from a file descriptor, waited for with the termination signals let in.
#pragma once

#include <string>

namespace latbox {

class LineInput {
 public:
  // Reads from the descriptor, which stays open.
  explicit LineInput(int descriptor) : descriptor_(descriptor) {}

  // Waits for the next line and stores it without its line end; false at the end of the input or on an error.
  // A last line without a line end counts. SIGINT and SIGTERM arrive during the wait alone, so their handler
  // never interrupts the work on a line. A line longer than MAX_LENGTH is passed over: no command is as long,
  // and an input without line ends must not fill the memory.
  bool next(std::string& line);

  static constexpr std::size_t MAX_LENGTH = 1U << 20;

 private:
  bool fill();
  bool takeLine(std::string& line);

  int descriptor_;
  std::string pending_;       // read and not yet handed out
  std::size_t searched_ = 0;  // how much of it is known to hold no line end
  bool overlong_ = false;     // the present line is too long, its beginning is gone
};

}  // namespace latbox
