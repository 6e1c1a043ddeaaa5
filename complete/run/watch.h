// The thread beside the search: signals, the time limit, and the progress on standard error.
#pragma once

#include <csignal>
#include <functional>
#include <thread>

#include "complete/program/known_points.h"
#include "complete/run/results.h"

namespace latbox::complete {

class Watch {
 public:
  struct Settings {
    // Wall seconds; 0: no limit.
    double rtime = 0;
    bool quiet = false;
    // What others find meanwhile, or none.
    KnownPoints* known = nullptr;
  };

  // From here on SIGINT, SIGTERM and SIGUSR1 wait for a watch. Requires that no other thread runs yet.
  static void takeSignals();
  // They end the process again, as they did before.
  static void leaveSignals();

  // Requires that the signals were taken. `late` is called
  // when the search has not ended within a second of being asked to, a reduction, say, which nothing
  // interrupts; it must end the process.
  Watch(Settings settings, Results& results, SearchControl& control, std::function<void()> late);
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  void run();
  void heed(int signal);
  void flush();
  bool hasFound();
  void tell() const;

  Settings settings_;
  Results& results_;
  SearchControl& control_;
  std::function<void()> late_;
  // Of the last find that was told.
  std::optional<Norms> told_;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

}  // namespace latbox::complete
