// The list of a folder's pieces: what is searched for, in a head that never changes, and a line a piece.
//
// Lines are added at the end and never renumbered, so that whoever has the head and one line has all that a
// job needs. A line ends with a digest of itself and the head: a result that names it belongs to this piece
// of this folder and to no other.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

// What a run is asked for, beside the program.
struct Wanted {
  bool all = false;
  bool ties = false;
  bool count = false;
  bool proof = false;

  friend bool operator==(const Wanted&, const Wanted&) = default;
};

struct Head {
  Wanted wanted;
  // Digests of the texts.
  std::string program;
  std::string lattice;
  std::string proof;
  // Of the lattice: no prefix is longer.
  unsigned long rank = 0;

  std::string text() const;
  // Names the folder's pieces wherever a result goes.
  std::string digest() const;
};

// Of the walk of a proof: its parts are dealt out in turn, and this is each one of them whose number leaves
// `rest` when it is divided by `count`.
struct Share {
  unsigned long rest = 0;
  unsigned long count = 1;
};

// A line.
struct Entry {
  unsigned long number = 0;
  // 0: none. What of the parent it is a part of: empty, all of it; else what its result has left undone, by a
  // digest.
  unsigned long parent = 0;
  std::string source;
  // Candidates, estimated.
  double nodes = 0;
  // One of both.
  std::vector<Piece> pieces;
  std::optional<Share> share;
  std::string digest;
};

class Manifest {
 public:
  explicit Manifest(Head head) : head_(std::move(head)) {}

  const Head& head() const { return head_; }
  // In order of their numbers. Of a job's own manifest not all need be there.
  const std::vector<Entry>& entries() const { return entries_; }
  // Null: it is not there.
  const Entry* find(unsigned long number) const;
  // In order of their numbers. They stay where they are until another entry comes.
  std::vector<const Entry*> childrenOf(unsigned long number, const std::string& source) const;
  // Gives it the next number, and its digest.
  void append(Entry entry);
  // Behind the others, as it was read. Throws BadWords if its number is not greater than theirs, or it goes
  // deeper than the lattice.
  void add(Entry entry);

 private:
  void take(Entry entry);

  Head head_;
  std::vector<Entry> entries_;
  // Their places, by the number of the parent.
  std::unordered_map<unsigned long, std::vector<std::size_t>> children_;
};

std::string textOf(const Manifest& manifest);
// Throws BadWords.
Manifest parseManifest(std::string_view text);

}  // namespace latbox::complete::jobs
