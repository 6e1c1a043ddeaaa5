// From the text of one element to its value, for readers that collect the text first.
#pragma once

#include <sstream>
#include <string>

#include "lib/constants.h"

namespace latbox {

class QQ;

// Extracts `element` from `text` through a string stream. Numbers go through the one parser of numbers, so
// that either number type reads what the other wrote: fractions, mixed numbers, exponents and infinities. An
// empty text leaves the element as it is.
template <class T>
void elementFromText(const std::string& text, T& element) {
  std::istringstream in(text);
  in >> element;
}
template <>
void elementFromText<dbl_t>(const std::string& text, dbl_t& element);
template <>
void elementFromText<QQ>(const std::string& text, QQ& element);

// Whether a number's text has no exponent or a whole one of at most four digits, the range of dbl_t. Text
// from a file is held to that: "1e999999999" would build a number of a gigabyte.
bool exponentIsBounded(const std::string& text);

}  // namespace latbox
