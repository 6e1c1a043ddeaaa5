// Time in whole seconds.
#pragma once

namespace latbox {

// Seconds since the epoch.
long now();

// Lets a test stand in for the clock; null puts the system's back.
void setClock(long (*clock)());

// Sleeps for the given number of seconds, or until a signal has been handled.
void sleepSeconds(unsigned seconds);

}  // namespace latbox
