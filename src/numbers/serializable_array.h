// An array whose text form is "[", elements separated by delimiters, "]".
#pragma once

#include <sstream>
#include <string>

#include "lib/array.h"
#include "lib/scanner.h"
#include "lib/serializable.h"
#include "numbers/element_text.h"

namespace latbox {

template <class T>
class SerializableArray : public ConversionArray<T>, public Serializable {
 public:
  explicit SerializableArray(std::string separators = " ", bool skipRuns = true, bool extraFlag = false)
      : Serializable(std::move(separators), skipRuns, extraFlag) {}
  explicit SerializableArray(long n) : ConversionArray<T>(n) {}

  // Delimiters inside an element's text are escaped by a backslash. The separator is a line end if the
  // delimiters contain one, otherwise a blank.
  void write(std::ostream& out) const override {
    const char separator = delimiters.find('\n') == std::string::npos ? ' ' : '\n';
    out << '[' << separator;
    for (long i = 1; i <= this->MN; ++i) out << escaped(textOf(this->data[i], out)) << separator;
    out << ']';
  }

  // Fails with "SerializableArray: no start found" unless a "[" comes next, and with
  // "SerializableArray: bad input" at the end of the file inside the list.
  void read(std::istream& in) override {
    skipSpace(in);
    if (nextCharacter(in) != '[') fail("SerializableArray: no start found");
    this->clear();
    takeCharacter(in);
    bool first = true;
    for (bool more = true; more; first = false) {
      std::string text;
      more = takeElementText(in, text);
      if (text.empty() && (first || !more)) continue;
      T element{};
      elementFromText(text, element);
      this->reserve(this->MN + 1);
      this->append(std::move(element));
    }
  }

 private:
  // The element as `out` would write it: its format flags and precision hold.
  static std::string textOf(const T& element, const std::ostream& out) {
    std::ostringstream text;
    text.copyfmt(out);
    text.width(0);
    text << element;
    return text.str();
  }

  std::string escaped(const std::string& text) const {
    std::string result;
    for (const char ch : text) {
      if (delimiters.find(ch) != std::string::npos) result += '\\';
      result += ch;
    }
    return result;
  }

  // Collects one element's text without its escapes; false when "]" ended it, which is taken.
  bool takeElementText(std::istream& in, std::string& text) const {
    for (;;) {
      const int ch = takeCharacter(in);
      if (ch == std::char_traits<char>::eof()) fail("SerializableArray: bad input");
      if (ch == ']') return false;
      if (ch == '\\') {
        const int literal = takeCharacter(in);
        if (literal != std::char_traits<char>::eof()) text += static_cast<char>(literal);
      } else if (delimiters.find(static_cast<char>(ch)) != std::string::npos) {
        if (skipAll) skipDelimiters(in);
        return true;
      } else {
        text += static_cast<char>(ch);
      }
    }
  }

  void skipDelimiters(std::istream& in) const {
    do {
      skipSpaceAndComments(in);
    } while (isDelimiter(nextCharacter(in)) && takeCharacter(in));
  }
  bool isDelimiter(int ch) const {
    return ch != std::char_traits<char>::eof() && delimiters.find(static_cast<char>(ch)) != std::string::npos;
  }
};

}  // namespace latbox
