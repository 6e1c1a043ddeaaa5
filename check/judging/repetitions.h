// Which solutions say the same as an earlier one of their file: the same x and the same target values.
//
// Each solution leaves a digest of 64 bits and the offset of its line. A digest is made of the numbers and
// not of the text, so solutions that say the same have the same one, and different digests prove them
// different. The same digest proves nothing: such solutions are read again and compared number by number.
//
// It costs 16 bytes a solution, a sort, and the second reading of lines whose digest occurs twice: the
// repeated ones, and among five million different lines one in a million files. Twice the bits would save
// that reading, and need half as much memory again for a verdict that rests on chance; a sort of the lines
// themselves needs as much disk as the file. A file that was made to have many solutions of one digest costs
// time, and memory for these.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>

#include "check/files/solution.h"

namespace latbox::check {

using Digest = std::uint64_t;

// The digest of a sequence with one more element.
Digest chained(Digest before, std::uint64_t next);
// A function of x and the target values.
Digest digestOf(const Solution& solution);
bool sayTheSame(const Solution& a, const Solution& b);

// The digests of a file. They and the offsets stand in pieces of memory, so that growing copies nothing.
class Digests {
 public:
  // Requires: ascending offsets.
  void add(Digest digest, std::uint64_t offset) { entries_.push_back({digest, offset}); }

 private:
  friend class Repetitions;

  struct Entry {
    Digest digest;
    std::uint64_t offset;
  };
  std::deque<Entry> entries_;
};

class Repetitions {
 public:
  // Reads the solution at an offset.
  using Reader = std::function<Solution(std::uint64_t offset)>;

  // Throws: what `read` throws.
  Repetitions(Digests digests, const Reader& read);

  // The number of the earliest solution that says the same as this one, 0 if none does.
  // Requires: called for each solution of the file in its order; numbers are at least 1.
  std::size_t earlier(std::uint64_t offset, std::size_t number);

 private:
  using Entry = Digests::Entry;
  struct Repeated {
    std::uint64_t offset;
    std::uint64_t first;
  };
  struct First {
    std::uint64_t offset;
    std::size_t number;
  };

  void settleLastDigest(std::deque<Entry>& entries, const Reader& read);

  // Both by offset, and where the next call of earlier() goes on in them.
  std::deque<Repeated> repeated_;
  std::deque<First> firsts_;
  std::size_t nextRepeated_ = 0;
  std::size_t nextFirst_ = 0;
};

}  // namespace latbox::check
