#include "complete/run/watch.h"

#include <cstdio>

#include "complete/run/outlook.h"

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

std::string format(const char* form, double value) {
  char text[64];
  std::snprintf(text, sizeof text, form, value);
  return text;
}

}  // namespace

void Watch::takeSignals() {
  const sigset_t signals = ownSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void Watch::leaveSignals() {
  const sigset_t signals = ownSignals();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
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
    if (ended_) return;
    const double now = results_.seconds();
    if (settings_.known) settings_.known->look();
    if (settings_.rtime > 0 && now >= settings_.rtime) control_.stop = true;
    if (now >= nextLine || hasFound()) {
      nextLine = now + BETWEEN_LINES;
      if (!settings_.quiet) tell();
      flush();
    }
    if (control_.stop && asked < 0) asked = now;
    if (asked >= 0 && now - asked > PATIENCE && !ended_) late_();
  }
}

// A thread that nobody waits for has nobody to throw to: the search ends, and who writes or closes the file
// next tells why it cannot be written.
void Watch::flush() {
  try {
    results_.flush();
  } catch (const WriteFailure&) {
    control_.stop = true;
  }
}

// A better point, or the first one of a list.
bool Watch::hasFound() {
  auto best = results_.best();
  if (!best || (results_.isWithoutTargets() ? told_.has_value() : told_ == best)) return false;
  told_ = std::move(best);
  return true;
}

void Watch::heed(int signal) {
  if (signal == SIGINT || signal == SIGTERM) control_.stop = true;
  if (signal == SIGUSR1) tell();
}

void Watch::tell() const {
  const double seconds = results_.seconds();
  const auto nodes = static_cast<double>(control_.nodes.load());
  const double done = control_.done;
  std::string line = duration(results_.allSeconds()) + ": ";
  if (done >= 0) line += format("%.3g %% done, ", 100 * done);
  line += format("%.4g nodes, ", nodes) + format("%.3g a second, ", nodes / results_.allSeconds());
  line += std::to_string(results_.count()) + " points";
  if (const auto norms = results_.best(); norms && !results_.isWithoutTargets())
    line += ", best " + toText(norms->target);
  if (const auto least = results_.least()) line += ", none below " + toText(*least);
  // By the share alone, nothing can be said at first.
  constexpr double TELLING = 0.001;
  if (done >= TELLING && done < 1) line += ", about " + duration(seconds * (1 - done) / done) + " left";
  std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace latbox::complete
