// What a run writes down so that the same command can go on from it: which searches are done and what they
// brought, what is left of the present one, and how much of the points file belongs to it.
//
// A run is a sequence of searches, each of which follows from the program and from what those before have
// brought. So to go on, a run begins at the beginning, takes what is written instead of searching again, and
// walks through the pieces that were left.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "complete/files/digest.h"
#include "complete/tree/piece.h"

namespace latbox::complete {

// A text that is no checkpoint, or a torn one.
class BadCheckpoint : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class SearchEnd {
  // There is no lattice: nothing had to be searched.
  EMPTY,
  COMPLETE,
  // Its visitor had enough.
  STOPPED
};

// Points are of all variables of the whole program.
struct SearchRecord {
  // What was searched, as a digest.
  std::string key;
  SearchEnd end = SearchEnd::EMPTY;
  // What the visitor held then.
  std::optional<IntegerVector> point;
};

struct FileState {
  // Points listed, or counted; bytes of the file, 0 if there is none, and what they are.
  unsigned long count = 0;
  unsigned long bytes = 0;
  Digest digest = {};
};

struct OpenSearch {
  std::string key;
  // Of the lattice that the pieces belong to, and its basis, which may have taken long to make.
  std::string lattice;
  IntegerMatrix basis;
  FileState begin;
  Frontier frontier;
};

struct Checkpoint {
  // The program and the options that may not change.
  std::string identity;
  double seconds = 0;
  unsigned long nodes = 0;
  FileState file;
  std::vector<SearchRecord> searches;
  std::optional<OpenSearch> open;
  // Of a run that has ended; else empty, and the exit status means nothing.
  std::string verdict;
  int status = 0;
};

std::string textOf(const Checkpoint& checkpoint);
// Throws BadCheckpoint.
Checkpoint parseCheckpoint(std::string_view text);

// By a rename: the file is the old one or the new. With `surely`, it is on the disk when this returns. Throws
// WriteFailure.
void writeCheckpoint(const std::string& path, const Checkpoint& checkpoint, bool surely);
// Nothing if there is none that can be read.
std::optional<Checkpoint> readCheckpoint(const std::string& path);

}  // namespace latbox::complete
