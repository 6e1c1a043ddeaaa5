// A run of a journal and a visitor that has enough with one point.
#pragma once

#include "complete/solving/journal.h"
#include "support.h"

namespace latbox::complete::testing {

class Finder : public Visitor {
 public:
  Next visit(const IntegerVector& z) override {
    point = z;
    ++visits;
    return Next::STOP;
  }
  std::optional<IntegerVector> held() const override { return point; }

  std::optional<IntegerVector> point;
  int visits = 0;
};

// A run of a journal, and what it has asked of its keeper. A checkpoint is read from its text.
struct JournalRun {
  explicit JournalRun(const Checkpoint& past = {}) : journal(control, keeping(), past) {}

  Journal::Keeping keeping() {
    return {[this](Checkpoint checkpoint) {
              checkpoint.identity = "program";
              saved = parseCheckpoint(textOf(checkpoint));
            },
            [this] { return file; },
            [this](const FileState& state) {
              file = state;
              ++rewinds;
            },
            [this] { ++lives; }};
  }

  SearchControl control;
  FileState file;
  Checkpoint saved;
  int rewinds = 0;
  int lives = 0;
  Journal journal;
};

}  // namespace latbox::complete::testing
