// What the manual says about each option beyond its help text.
#pragma once

#include <span>

namespace latbox {

// Texts are plain sentences; `code` stands between backquotes, and nothing else is marked up.
struct OptionNote {
  const char* key;
  const char* values;       // what may be given, and what it means
  const char* suggestions;  // values for the completion, separated by blanks; empty: any number
  const char* text;         // what it does and when it pays
  const char* console;      // what SET does while the solver runs
};

// One for each key of the option table, in its order.
std::span<const OptionNote> optionNotes();

}  // namespace latbox
