// Points that others find while this program runs.
//
// Idea: another search may be quicker to a good point, and each one known leaves fewer to be searched for. It
// writes them to a file, lines of the .sol form, of which this reads the values alone; the file may be
// missing at first, grow, or be replaced. Nothing in it is believed: a point counts once it has been tested
// exactly against the program as read, and its norms are computed here. A line that is torn or wrong is no
// point.
#pragma once

#include <atomic>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "complete/program/program.h"

namespace latbox::complete {

class KnownPoints {
 public:
  // `interrupt` is set when a point is worth an interruption of the search. It and the program must outlive
  // this.
  KnownPoints(const Program& program, std::string path, std::atomic<bool>& interrupt);

  // For the thread that watches: reads what is new in the file.
  void look();

  // For the thread that searches. From here on new points are worth an interruption if their target norm is
  // at most `limit`; without one, if they are better than those before.
  void want(std::optional<Rational> limit);
  // The best point, if nobody has taken it yet and it is better; the interruption is over.
  std::optional<Point> takeBetter(const std::optional<Norms>& than);
  // Nothing is worth an interruption any more.
  void end();

 private:
  bool hasChanged();
  // Requires the mutex.
  void interruptIfWanted();
  void take(const std::string& line);

  const Program& program_;
  std::string path_;
  std::uintmax_t size_ = 0;
  std::filesystem::file_time_type time_;
  std::atomic<bool>& interrupt_;
  std::mutex mutex_;
  // Also when it has been taken; then `fresh_` is false.
  std::optional<Point> best_;
  Norms norms_;
  bool fresh_ = false;
  std::optional<Rational> limit_;
  bool ended_ = false;
};

}  // namespace latbox::complete
