// What latbox-check does with --proof.
#pragma once

#include <ostream>

#include "check/judging/exit_status.h"
#include "check/proof/walk.h"

namespace latbox::check::proof {

struct Settings {
  std::string proof;
  std::string program;
  // Empty: none. The points that latbox-all has listed, and the lines of all parts.
  std::string points;
  std::string join;
  // Only a part, as the plan says.
  bool isPart = false;
  bool quiet = false;
  Plan plan;
};

// "4", and "2/4".
// Throws: Unreadable.
void takeThreads(std::string_view value, Settings& settings);
void takePart(std::string_view value, Settings& settings);

// Throws: Unreadable.
ExitStatus runProof(const Settings& settings, std::ostream& out);

}  // namespace latbox::check::proof
