#include "complete/watch.h"

#include <cstdio>

namespace latbox::complete {
namespace {

constexpr double BETWEEN_LINES = 2;
constexpr double PATIENCE = 1;
constexpr long TICK = 50'000'000;

sigset_t ownSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&signals, signal);
  return signals;
}

}  // namespace

void Watch::takeSignals() {
  const sigset_t signals = ownSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

Watch::Watch(Settings settings, Results& results, SearchControl& control, std::function<void()> late)
    : settings_(settings), results_(results), control_(control), late_(std::move(late)) {
  thread_ = std::thread([this] { run(); });
}

Watch::~Watch() {
  ended_ = true;
  thread_.join();
}

void Watch::run() {
  const sigset_t signals = ownSignals();
  double nextLine = BETWEEN_LINES;
  double asked = -1;
  while (!ended_) {
    const timespec tick{0, TICK};
    heed(sigtimedwait(&signals, nullptr, &tick));
    const double now = results_.seconds();
    if (settings_.rtime > 0 && now >= settings_.rtime) control_.stop = true;
    if (now >= nextLine) {
      nextLine = now + BETWEEN_LINES;
      if (!settings_.quiet) tell();
    }
    if (control_.stop && asked < 0) asked = now;
    if (asked >= 0 && now - asked > PATIENCE && !ended_) late_();
  }
}

void Watch::heed(int signal) {
  if (signal == SIGINT || signal == SIGTERM) control_.stop = true;
  if (signal == SIGUSR1) tell();
}

void Watch::tell() const {
  const double seconds = results_.seconds();
  const auto nodes = static_cast<double>(control_.nodes.load());
  std::string best;
  if (const auto norms = results_.best(); norms && !results_.isWithoutTargets())
    best = ", best " + toText(norms->target);
  std::fprintf(stderr, "%.0f s: %.4g nodes, %.3g a second, %lu points%s\n", seconds, nodes, nodes / seconds,
               results_.count(), best.c_str());
}

}  // namespace latbox::complete
