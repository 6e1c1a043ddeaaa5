// Standard output.
//
// The state of a stream that failed once would swallow everything behind it, and the lock of the library's
// own buffer is let go at the end of the process. So std::cout gets a buffer of this system's own: what can't
// be written (a full disk, a pipe whose reader has gone, a terminal that was closed) is dropped with one
// warning, and the next output is tried again. A run is worth more than its report.
#pragma once

#include <sys/uio.h>

namespace latbox {

// From now on std::cout writes through that buffer, for the life of the process; a second call does nothing.
// Several threads may print: an insertion is never torn, and nothing is written before a flush or a full
// buffer.
void installOutput();

// For the end of the process: waits for a write that is under way, writes what is pending and keeps every
// other thread out from then on. The calling thread may not be within a print.
void closeOutput();

// Writes all pieces past the buffer, in one call where the system allows it, so that nothing else comes
// between them. Waits where the descriptor would have to be waited for. Changes the pieces; allocates
// nothing.
void writeOutputPieces(iovec* pieces, int number);

}  // namespace latbox
