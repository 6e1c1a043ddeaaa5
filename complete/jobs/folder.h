// A folder of pieces: the program, the lattice, the manifest, and what jobs have brought.
//
//   program.opt   a copy of the program
//   lattice       coordinates, point and basis, which whoever joins the results proves
//   manifest      what is searched for, and the pieces
//   proof         lattice and cuts of the proof, where one is wanted
//   best          with an objective, the best point that is known
//   K.result      of piece K, when it is done, or its time was over
//   K.checkpoint, K.points   of a job that is under way
#pragma once

#include <stdexcept>

#include "complete/jobs/lattice_text.h"
#include "complete/jobs/manifest.h"
#include "complete/jobs/result.h"
#include "complete/program/program.h"

namespace latbox::complete::jobs {

// Something in a folder is missing or not as it was written; what() names it. The run ends with status 1.
class BadFolder : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Folder {
 public:
  // Reads manifest and program. Throws BadInput where there is no manifest, BadFolder.
  explicit Folder(std::string path);

  const Program& program() const { return program_; }
  const Manifest& manifest() const { return manifest_; }
  const Wanted& wanted() const { return manifest_.head().wanted; }
  // All points are wanted, not the best.
  bool isListing() const { return wanted().all || program_.targets.empty(); }
  // Throws BadInput if there is no such piece.
  const Entry& entry(unsigned long number) const;
  // Throws BadFolder.
  PieceLattice lattice() const;
  std::string proofText() const;

  std::string pathOf(const std::string& name) const;
  // Of a file of a piece, as "12.lock".
  std::string pathOf(const Entry& entry, const std::string& kind) const;
  std::string resultPath(unsigned long number) const { return pathOf(std::to_string(number) + ".result"); }

  // The result of this piece in a file: it is one of this manifest, and all there. Throws BadWords.
  Result resultIn(const std::string& path, const Entry& entry) const;
  bool hasResult(const Entry& entry) const;

  // Adds lines, and writes the manifest. Requires the folder to be locked, and read after that.
  void append(std::vector<Entry> entries);

 private:
  std::string path_;
  Manifest manifest_;
  Program program_;
};

// Where a folder keeps its parts; "" is the folder itself.
std::string pathIn(const std::string& folder, const std::string& name);

// Whether this is one of them, or where one may come to be: nothing else is written over it.
bool isPart(const std::string& folder, const std::string& path);

// Nobody else changes the manifest, or puts results in their place, while this is there.
class FolderLock {
 public:
  // Throws BadInput if there is no such folder.
  explicit FolderLock(const std::string& path);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int file_;
};

}  // namespace latbox::complete::jobs
