// What the long texts of a folder share: a first line that tells what the text is, lines of a name and its
// numbers, and a seal behind them.
#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace latbox::complete::jobs {

// "point 1 0 2".
template <class T>
void writeLine(std::ostream& out, const std::string& name, const std::vector<T>& values) {
  out << name;
  for (const T& value : values) out << ' ' << value;
  out << '\n';
}

// A line for each.
template <class T>
void writeLines(std::ostream& out, const std::string& name, const std::vector<std::vector<T>>& rows) {
  for (const std::vector<T>& row : rows) writeLine(out, name, row);
}

// The lines of a sealed text behind its first one, which must be `head`. Throws BadWords.
std::istringstream linesBehind(const std::string& head, std::string_view text);

}  // namespace latbox::complete::jobs
