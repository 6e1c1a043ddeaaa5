#include "complete/jobs/result.h"

#include <algorithm>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/prefix_text.h"

namespace latbox::complete::jobs {
namespace {

constexpr const char* HEAD = "latbox-all result 1";
constexpr const char* LAST = "points";

void takeLine(const std::string& name, Words& words, Result& result) {
  if (name == "piece") {
    result.number = words.next<unsigned long>();
    result.entry = words.next<std::string>();
  } else if (name == "nodes") {
    result.nodes = words.next<unsigned long>();
  } else if (name == "met") {
    result.met = words.next<unsigned long>();
  } else if (name == "open") {
    const auto word = words.next<std::string>();
    if (word == "share")
      result.isOpenShare = true;
    else
      result.open.push_back(parsePiece(word));
  } else if (name == "bound") {
    result.bound = words.next<std::string>();
  } else if (name == LAST) {
    result.points = words.next<unsigned long>();
  } else {
    throw BadWords("a line that begins with '" + name + "'");
  }
  if (!words.isAtEnd()) throw BadWords("more than belongs to '" + name + "'");
}

}  // namespace

std::string textOf(const Result& result) {
  std::string text = std::string(HEAD) + "\npiece " + std::to_string(result.number) + " " + result.entry +
                     "\nnodes " + std::to_string(result.nodes) + "\n";
  for (const Piece& piece : result.open) text += "open " + textOf(piece) + "\n";
  if (result.isOpenShare) text += "open share\n";
  if (result.met > 0) text += "met " + std::to_string(result.met) + "\n";
  if (result.bound) text += "bound " + *result.bound + "\n";
  text += std::string(LAST) + " " + std::to_string(result.points) + "\n";
  text += result.lines;
  return sealed(std::move(text));
}

Result parseResult(std::string text) {
  const auto body = unsealed(text);
  if (!body) throw BadWords("its end is missing, or it was changed");
  std::size_t place = 0;
  const auto next = [&] {
    const std::size_t end = body->find('\n', place);
    if (end == std::string_view::npos) throw BadWords("its head is not all there");
    std::string line(body->substr(place, end - place));
    place = end + 1;
    return line;
  };
  if (next() != HEAD) throw BadWords("its first line is another one");
  Result result;
  for (std::string name; name != LAST;) {
    Words words(next());
    name = words.next<std::string>();
    takeLine(name, words, result);
  }
  result.seal = text.substr(body->size());
  text.resize(body->size());
  text.erase(0, place);
  result.lines = std::move(text);
  return result;
}

}  // namespace latbox::complete::jobs
