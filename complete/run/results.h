// What a run has found so far: the points in the file, their number, the best norms; shared with the thread
// that watches.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

#include "complete/files/checkpoint.h"
#include "complete/files/points_file.h"
#include "complete/solving/solver.h"

namespace latbox::complete {

class Results : public Finds {
 public:
  // Without a path the points are counted only. `clear` is called before a new file takes the place of an
  // old one. The program must outlive the results.
  Results(const Program& program, std::string path, std::string parameters, std::function<void()> clear = {});

  void begin() override;
  bool hasBegun() const { return begun_; }
  void list(const Point& x, const Norms& norms) override;
  void listLines(const std::string& lines, unsigned long points) override;
  void add(unsigned long points) override;
  void replace(const Point& x, const Norms& norms) override;
  void prove(const Rational& least) override;
  unsigned long count() const override;

  // Goes on from where another run was after `seconds`: points that are told from here on are known already,
  // until goLive(). A run that lists no more than the best point has a `single` one in its file. Throws
  // WriteFailure if the file does not hold what it should.
  void resume(const FileState& state, double seconds, bool single);
  void goLive();
  // The file is as it was in that state, or, if that has one point at most, as the points that are known
  // already have made it. Requires a state that it has been in.
  void rewind(const FileState& state);
  // With all points in the file; with `surely`, on the disk.
  FileState state(bool surely = false);

  // For the progress of a run.
  std::optional<Norms> best() const;
  std::optional<Rational> least() const;
  bool isWithoutTargets() const { return program_.targets.empty(); }
  // Of this run, and of those that it goes on from, too.
  double seconds() const;
  double allSeconds() const { return before_ + seconds(); }
  void flush();
  // No point is taken any more: whoever finds one waits for the end of the process. Called once, by whoever
  // tells the verdict; false for everybody else.
  bool close();

 private:
  void open();
  void takeReplaced();
  std::string line(const Point& x, const Norms& norms) const;
  void waitForEnd(std::unique_lock<std::mutex>& lock) const;

  const Program& program_;
  std::string path_;
  std::optional<PointsFile> file_;
  std::string parameters_;
  std::function<void()> clear_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  double before_ = 0;
  mutable std::mutex mutex_;
  unsigned long count_ = 0;
  std::optional<Norms> best_;
  std::optional<Rational> least_;
  // Points are known already; the last line that would have taken the place of the file.
  bool known_ = false;
  bool single_ = false;
  std::string replaced_;
  bool begun_ = false;
  bool closed_ = false;
};

}  // namespace latbox::complete
