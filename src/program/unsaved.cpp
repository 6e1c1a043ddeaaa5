#include "program/unsaved.h"

#include <cstdlib>
#include <iostream>
#include <utility>

#include "lib/immortal.h"
#include "lib/os/file.h"
#include "lib/os/signals.h"

namespace latbox {
namespace {

struct Unsaved {
  std::string path;
  std::string text;
};

Unsaved& unsaved() {
  static Immortal<Unsaved> content;
  return *content;
}

}  // namespace

void keepUnsaved(const std::string& path, const std::string& text) {
  [[maybe_unused]] static const bool registered = std::atexit([] { rescueUnsaved(); }) == 0;
  const SignalHold hold;
  unsaved() = {path, text};
}

void forgetUnsaved() {
  const SignalHold hold;
  unsaved() = {};
}

bool rescueUnsaved() {
  const SignalHold hold;
  const auto [path, text] = std::exchange(unsaved(), {});
  std::string reason;
  if (text.empty() || writeFile(path, text, reason)) return true;
  std::cerr << "\nSolutions that could not be written to " << path << ":\n" << text << std::flush;
  return false;
}

}  // namespace latbox
