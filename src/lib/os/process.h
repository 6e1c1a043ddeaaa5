// What a process settles before anything else.
#pragma once

namespace latbox {

// Puts the null device in the place of a standard descriptor that was closed when the process started: the
// first file that is opened would get its number, and be read as the console or written as the report.
//
// Ignores the signals by which a closed pipe and a limit on the size of files end a process without a word.
// The write that would have raised them reports the error instead.
void settleProcess();

}  // namespace latbox
