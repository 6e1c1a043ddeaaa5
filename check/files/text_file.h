// Whole files as texts, and the file's name before what is wrong with it.
#pragma once

#include <string>

#include "check/files/scanner.h"

namespace latbox::check {

// Throws: Unreadable, without the file's name.
std::string readFile(const std::string& path);

// Does what reads the file; its name stands before what is wrong with it.
// Throws: Unreadable.
template <class Reading>
auto named(const std::string& path, Reading reading) {
  try {
    return reading();
  } catch (const Unreadable& unreadable) {
    throw Unreadable(path + ": " + unreadable.what());
  }
}

}  // namespace latbox::check
