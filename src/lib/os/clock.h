// Time in whole seconds.
#pragma once

namespace latbox {

// Seconds since the epoch, by the system's time when the process first asked and by a steady clock from then
// on, which counts while the machine sleeps: setting the system's time in either direction changes no
// duration. Never less than a call before has returned, whatever clock a test puts in.
long now();

// Lets a test stand in for the clock; null puts the system's back.
void setClock(long (*clock)());

// Sleeps for the given number of seconds, or until a signal has been handled.
void sleepSeconds(unsigned seconds);

}  // namespace latbox
