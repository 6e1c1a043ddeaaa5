// The beginning and the end of the process.
#pragma once

namespace latbox {

// Puts the null device in the place of a standard descriptor that was closed when the process started: the
// first file that is opened would get its number, and be read as the console or written as the report.
//
// Ignores the signals by which a closed pipe and a limit on the size of files end a process without a word.
// The write that would have raised them reports the error instead.
void settleProcess();

// Ends the process at once: no destructor runs, and what is buffered is lost. Async-signal-safe.
[[noreturn]] void endProcess(int status);

// For a thread that has nothing left to do while another one ends the process.
[[noreturn]] void waitForTheEnd();

}  // namespace latbox
