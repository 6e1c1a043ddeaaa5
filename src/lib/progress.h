// The nested progress trace on standard output: one depth for the process, opened and closed by the solver
// thread alone. Each call returns the text to print; the caller prints it.
#pragma once

#include <string>

namespace latbox {

// Opens a level: the prefix "|", "    |" once per level of depth, "->", after a line end if the current level
// still has a line open. Fails with "Maximum thread depth reached" at depth 128.
std::string progressEnter();

// Ends the line of the current level, which stays open as a level: returns the line end.
std::string progressBreak();

// Closes the current level: a line end where its line is still open, nothing where it has been broken. With
// `closing` a level that has broken its line adds nothing at all.
std::string progressLeave(bool closing);

// Back to depth 0 with nothing open; returns a line end.
std::string progressReset();

// The depth, which the driver saves and puts back around a step that may be abandoned.
int progressDepth();
void setProgressDepth(int depth);

// Nothing is told of what runs within this scope: no ProgressScope and no progressLine prints, whatever the
// verbosity. Scopes nest. One count for the process; for the solver thread, which alone opens levels.
class Mute {
 public:
  Mute();
  ~Mute();
  Mute(const Mute&) = delete;
  Mute& operator=(const Mute&) = delete;
};

// A level for as long as a routine runs, printed and closed on every normal way out, early returns included.
// It remembers whether it opened a line, so a change of the verbosity, or the beginning or end of a Mute, in
// between does no harm. When an exception passes it prints and closes nothing: whoever catches puts the depth
// back.
class ProgressScope {
 public:
  // Prints the prefix, a blank, `text` and the line end if `active` and not muted.
  ProgressScope(bool active, const std::string& text);
  ~ProgressScope();
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

 private:
  bool active_;
  int exceptions_;
};

// One line of its own below the current level, which is left as it was: prefix, blank, `text`, line end; if
// `active` and not muted.
void progressLine(bool active, const std::string& text);

}  // namespace latbox
