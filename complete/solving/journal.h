// The searches of a run, one after the other: searched, or taken from what an earlier run has written down
// (checkpoint.h says why that is the same).
#pragma once

#include "complete/files/checkpoint.h"
#include "complete/tree/search.h"

namespace latbox::complete {

class Journal {
 public:
  // How the journal is kept. Called by the thread that runs the searches.
  struct Keeping {
    // Writes the present state, which takes what the journal knows and adds the rest.
    std::function<void(Checkpoint)> save;
    // The points file as it is now, and as it shall be again.
    std::function<FileState()> fileState;
    std::function<void(const FileState&)> rewind;
    // What was written down has all been taken.
    std::function<void()> goLive;
  };

  // Nothing is kept.
  explicit Journal(SearchControl& control);
  // Goes on from `past`, whose identity is this run's. Both outlive the journal.
  Journal(SearchControl& control, Keeping keeping, Checkpoint past = {});

  // Makes the lattice of a search, with this basis if it is one of it; an empty one is none.
  using Prepare = std::function<std::optional<BoxLattice>(const IntegerMatrix& basis)>;

  // Searches the lattice that `prepare` makes, if any: `key` says what it is, whatever names it. Nothing:
  // there is no lattice. Else as search().
  std::optional<bool> searchThrough(const std::string& key, const Prepare& prepare, Visitor& visitor,
                                    SearchSettings settings = {});

  // Makes the numbered parts of a search, from this one on; tells now and then, by the calling thread, that
  // all below another number are made. Whether all are.
  using MakeParts = std::function<bool(unsigned long begin, const std::function<void(unsigned long)>& tell)>;

  // As searchThrough(), of a search in parts that the key determines: those that a run has made, one that
  // goes on from it does not make again.
  bool makeParts(const std::string& key, const MakeParts& make, Visitor& visitor);

  SearchControl& control() { return control_; }
  // With what is known of the present search, or what was of a past one that this run has not come to.
  void save() const;

 private:
  const SearchRecord* recorded(const std::string& key);
  std::optional<bool> searchLive(OpenSearch open, BoxLattice& lattice, Visitor& visitor,
                                 SearchSettings settings);
  std::vector<Piece> takeOpen(OpenSearch& open);
  void begin(OpenSearch open);
  bool end(bool complete, const std::optional<IntegerVector>& before, const Visitor& visitor, bool isTrial);
  void leavePast();
  void record(const std::string& key, SearchEnd end, const Visitor& visitor);
  void beLive();

  SearchControl& control_;
  Keeping keeping_;
  // Searches that are done, and how many of them this run has come to.
  std::vector<SearchRecord> searches_;
  std::size_t taken_ = 0;
  // Of the past: the search that was not done. And of the present.
  std::optional<OpenSearch> past_;
  std::optional<OpenSearch> open_;
  bool live_ = false;
  bool saved_ = false;
};

// What a program is, as the key of its search.
std::string keyOf(const IntegerProgram& program);

}  // namespace latbox::complete
