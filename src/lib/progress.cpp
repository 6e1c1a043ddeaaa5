#include "lib/progress.h"

#include <exception>
#include <iostream>
#include <utility>

#include "lib/failure.h"

namespace latbox {
namespace {

constexpr int MAX_DEPTH = 128;

// Plain static storage: exit() may run static destructors while the solver thread still traces.
struct Trace {
  int depth = 0;
  unsigned char lineOpen[MAX_DEPTH] = {};
  unsigned char firstHere[MAX_DEPTH] = {};
};
constinit Trace trace;

int mutes = 0;  // within how many scopes of Mute

bool muted() {
  return mutes > 0;
}

}  // namespace

std::string progressEnter() {
  std::string text;
  if (trace.lineOpen[trace.depth]) {
    text += '\n';
    trace.lineOpen[trace.depth] = 0;
  }
  text += '|';
  for (int level = 0; level < trace.depth; ++level) text += "    |";
  text += "->";
  if (trace.depth + 1 >= MAX_DEPTH) fail("Maximum thread depth reached");
  trace.lineOpen[++trace.depth] = 1;
  return text;
}

std::string progressBreak() {
  trace.firstHere[trace.depth] = 1;
  trace.lineOpen[trace.depth] = 0;
  return "\n";
}

std::string progressLeave(bool closing) {
  const bool first = trace.firstHere[trace.depth] != 0;
  std::string text = "\n";
  if (trace.lineOpen[trace.depth]) {
    trace.lineOpen[trace.depth] = 0;
  } else {
    text.clear();
  }
  if (trace.depth != 0) {
    trace.firstHere[trace.depth] = 0;
    --trace.depth;
  }
  if (closing && first) text.clear();
  return text;
}

std::string progressReset() {
  trace = Trace();
  return "\n";
}

int progressDepth() {
  return trace.depth;
}

void setProgressDepth(int depth) {
  trace.depth = depth;
}

Mute::Mute() {
  ++mutes;
}
Mute::~Mute() {
  --mutes;
}

ProgressScope::ProgressScope(bool active, const std::string& text)
    : active_(active && !muted()), exceptions_(std::uncaught_exceptions()) {
  if (!active_) return;
  std::cout << progressEnter() << ' ' << text;
  std::cout << progressBreak() << std::flush;
}

ProgressScope::~ProgressScope() {
  if (!active_ || std::uncaught_exceptions() > exceptions_) return;
  std::cout << progressLeave(true) << std::flush;
}

void progressLine(bool active, const std::string& text) {
  if (!active || muted()) return;
  std::cout << progressEnter() << ' ' << text;
  std::cout << progressLeave(false) << std::flush;
}

}  // namespace latbox
