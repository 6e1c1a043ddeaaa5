// Whether a points file is the one that a checkpoint was written beside.
//
// Its user may have edited it, or put another one in its place, and to go on with that would tell points that
// are none, or lose somebody's file. What the checkpoint knows of is held against its digest. Behind that a
// run that was killed may have written more lines; one of them is looked at, which is enough to tell them
// from another file.
#pragma once

#include "complete/files/checkpoint.h"
#include "complete/program/program.h"

namespace latbox::complete {

// A run that keeps a `single` point may have put a later one in its place, so that all of the file is behind
// what the checkpoint knows of. Reads that part of the file once.
bool isFileOf(const Checkpoint& past, const std::string& path, bool single, const Program& program);

}  // namespace latbox::complete
