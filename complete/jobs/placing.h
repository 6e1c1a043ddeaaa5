// What all kinds of jobs share: how they end.
//
// A job that is complete, or whose time is over, places a result; one that was stopped before leaves a
// checkpoint, and nothing else. Whatever it leaves names its piece, so that nobody takes it for another's.
#pragma once

#include "complete/files/checkpoint.h"
#include "complete/jobs/folder.h"
#include "complete/run/options.h"
#include "complete/run/results.h"

namespace latbox::complete::jobs {

// One, unless more are asked for: machines are filled by many jobs.
unsigned threadsOf(const Options& options);

// The ending of the job of one piece. What it is made of must outlive it, and is never changed by it.
class Ending {
 public:
  Ending(const Options& options, const Folder& folder, const Entry& entry, const Results& results,
         const SearchControl& control);

  // It is complete, or its time is over; else it was stopped, and its status is UNKNOWN.
  bool hasResult(bool isComplete) const { return isComplete || isOver(); }
  // On the watch's thread, when the job does not answer: one that was stopped ends here.
  void leaveStopped() const;

  // Named by the piece, with the candidates that were looked at; the rest is the job's.
  Result result() const;
  // Named by the piece, with what it took so far.
  void sign(Checkpoint& checkpoint) const;
  // The result appears by one rename; then the checkpoint goes, and the result's line is printed. Throws
  // WriteFailure.
  void place(const Result& result) const;

 private:
  // Never where no time was given to the job.
  bool isOver() const;

  double rtime_;
  const Folder& folder_;
  const Entry& entry_;
  const Results& results_;
  const SearchControl& control_;
};

// "piece 3: done, 12 points, 3456 nodes", and where the best is wanted that, as far as it is known.
std::string lineOf(const Folder& folder, const Entry& entry, const Result& result);

}  // namespace latbox::complete::jobs
