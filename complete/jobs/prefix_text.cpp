#include "complete/jobs/prefix_text.h"

#include "complete/files/words.h"

namespace latbox::complete::jobs {
namespace {

constexpr const char* WHOLE = ".";

// A whole number from this place on, which moves behind it.
Integer numberAt(const std::string& word, std::size_t& place) {
  const std::size_t begin = place;
  if (place < word.size() && word[place] == '-') ++place;
  while (place < word.size() && word[place] >= '0' && word[place] <= '9') ++place;
  Integer value;
  if (place == begin || value.set_str(word.substr(begin, place - begin), 10) != 0)
    throw BadWords("a prefix with a coefficient that is none");
  return value;
}

bool takeSign(const std::string& word, std::size_t& place, char sign) {
  if (place >= word.size() || word[place] != sign) return false;
  ++place;
  return true;
}

Choice choiceAt(const std::string& word, std::size_t& place, bool& isLowest) {
  Choice choice{0, 0, 0, true, true};
  isLowest = takeSign(word, place, '*');
  if (!isLowest) choice.chosen = numberAt(word, place);
  if (takeSign(word, place, '>')) {
    choice.up = numberAt(word, place);
    choice.closedUp = false;
  }
  if (takeSign(word, place, '<')) {
    choice.down = numberAt(word, place);
    choice.closedDown = false;
  }
  return choice;
}

}  // namespace

std::string textOf(const Piece& piece) {
  if (piece.empty()) return WHOLE;
  std::string text;
  for (std::size_t i = 0; i < piece.size(); ++i) {
    const Choice& choice = piece[i];
    text += (i > 0 ? "," : "") + (i + 1 < piece.size() ? choice.chosen.get_str() : "*");
    if (!choice.closedUp) text += ">" + choice.up.get_str();
    if (!choice.closedDown) text += "<" + choice.down.get_str();
  }
  return text;
}

Piece parsePiece(const std::string& word) {
  Piece piece;
  if (word == WHOLE) return piece;
  bool isLowest = false;
  for (std::size_t place = 0; !isLowest;) {
    piece.push_back(choiceAt(word, place, isLowest));
    if (isLowest != (place == word.size()) || (!isLowest && !takeSign(word, place, ',')))
      throw BadWords("a prefix that ends where it should not");
  }
  return piece;
}

}  // namespace latbox::complete::jobs
