// What a run has found so far: the points in the file, their number, the best norms; shared with the thread
// that watches.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>

#include "complete/points_file.h"
#include "complete/solver.h"

namespace latbox::complete {

class Results : public Finds {
 public:
  // Without a path the points are counted only. The program must outlive the results.
  Results(const Program& program, std::string path, std::string parameters);

  void begin() override;
  void list(const Point& x, const Norms& norms) override;
  void replace(const Point& x, const Norms& norms) override;

  // For the progress of a run.
  unsigned long count() const;
  std::optional<Norms> best() const;
  bool isWithoutTargets() const { return program_.targets.empty(); }
  double seconds() const;
  // No point is taken any more: whoever finds one waits for the end of the process. Called once, by whoever
  // tells the verdict; false for everybody else.
  bool close();

 private:
  void open();
  std::string line(const Point& x, const Norms& norms) const;
  void waitForEnd(std::unique_lock<std::mutex>& lock) const;

  const Program& program_;
  std::string path_;
  std::optional<PointsFile> file_;
  std::string parameters_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  mutable std::mutex mutex_;
  unsigned long count_ = 0;
  std::optional<Norms> best_;
  bool closed_ = false;
};

}  // namespace latbox::complete
