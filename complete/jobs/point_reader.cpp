#include "complete/jobs/point_reader.h"

#include <charconv>

#include "complete/words.h"

namespace latbox::complete::jobs {
namespace {

constexpr unsigned long MOST_DIGITS = 9;

}  // namespace

PointReader::PointReader(const Program& program, const PieceLattice& lattice, bool isListing)
    : program_(program), isListing_(isListing), verification_(program), coefficients_(lattice) {
  for (const unsigned long digits : program.digits)
    steps_.push_back(digits <= MOST_DIGITS ? powerOfTen(digits).get_si() : 0);
}

// A line begins with "[ x1 ... xn ]".
IntegerVector PointReader::wholeOf(std::string_view line) const {
  IntegerVector z(program_.variables());
  std::size_t place = 0;
  const auto next = [&] {
    while (place < line.size() && line[place] == ' ') ++place;
    const std::size_t begin = place;
    while (place < line.size() && line[place] != ' ') ++place;
    return line.substr(begin, place - begin);
  };
  if (next() != "[") throw BadWords("no point");
  for (std::size_t j = 0; j < z.size(); ++j) {
    const std::string_view word = next();
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error == std::errc() && end == word.data() + word.size() && steps_[j] != 0) {
      z[j] = value;
      z[j] *= steps_[j];
      continue;
    }
    try {
      const Rational whole = parseRational(word) * powerOfTen(program_.digits[j]);
      if (whole.get_den() != 1) throw BadWords("a value between two steps");
      z[j] = whole.get_num();
    } catch (const BadNumber&) {
      throw BadWords("a value that is none");
    }
  }
  if (next() != "]") throw BadWords("a point of another number of variables");
  return z;
}

void PointReader::read(const Result& result, const Entry& entry,
                       const std::function<void(const Point&)>& take) const {
  Point x;
  unsigned long number = 0;
  const std::string_view lines = result.lines;
  try {
    for (std::size_t place = 0; place < lines.size();) {
      ++number;
      const std::size_t end = std::min(lines.find('\n', place), lines.size());
      const IntegerVector z = wholeOf(lines.substr(place, end - place));
      verification_.takePoint(x, z);
      if (isListing_ && (!coefficients_.isIn(entry.pieces, z) || coefficients_.isIn(result.open, z)))
        throw BadWords("a point of another piece");
      take(x);
      place = end + 1;
    }
  } catch (const std::exception& e) {
    throw BadWords("point " + std::to_string(number) + ": " + e.what());
  }
  if (number != result.points)
    throw BadWords(std::to_string(number) + " points, not " + std::to_string(result.points));
}

}  // namespace latbox::complete::jobs
