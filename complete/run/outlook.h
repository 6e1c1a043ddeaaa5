// What is told of a search before it begins and while it runs.
#pragma once

#include <string>

namespace latbox::complete {

struct Outlook {
  // Estimates; points below 0: not known. Bytes of a line of the points file, 0 where there is none.
  double nodes = 0;
  double points = -1;
  double lineBytes = 0;
  // Candidates a second, by all threads.
  double speed = 1;
};

// "estimate: ..." in one line, and where nobody will see the end of it, plain words in another.
std::string textOf(const Outlook& outlook);

// "3 s", "12 min", "5 h", "40 days", "2e+06 years".
std::string duration(double seconds);
// "12 bytes", "3 KB", "4.5 GB".
std::string size(double bytes);

}  // namespace latbox::complete
