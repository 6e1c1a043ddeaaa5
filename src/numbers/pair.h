// Pairs: plain, with a text form, and ordered by the right member.
#pragma once

#include <string>
#include <utility>

#include "lib/scanner.h"
#include "lib/serializable.h"
#include "numbers/element_text.h"

namespace latbox {

template <class A, class B>
class Pair {
 public:
  A left{};
  B right{};

  Pair() = default;
  Pair(A l, B r) : left(std::move(l)), right(std::move(r)) {}
  Pair(const Pair&) = default;
  Pair(Pair&&) = default;
  Pair& operator=(const Pair&) = default;
  Pair& operator=(Pair&&) = default;
  virtual ~Pair() = default;

  bool operator==(const Pair& other) const { return left == other.left; }
  bool operator<(const Pair& other) const { return left < other.left; }
  bool operator>(const Pair& other) const { return other.left < left; }
};

// Text form "(left, right)".
template <class A, class B>
class SerializablePair : public Pair<A, B>, public Serializable {
 public:
  SerializablePair() = default;
  SerializablePair(A l, B r) : Pair<A, B>(std::move(l), std::move(r)) {}

  void write(std::ostream& out) const override { out << '(' << this->left << ", " << this->right << ')'; }
  // White space before "(" is skipped; the members end at "," and ")" and may be infinite. Anything else
  // leaves the stream failed.
  void read(std::istream& in) override {
    skipSpace(in);
    std::string left, right;
    if (takeCharacter(in) != '(' || !takeMember(in, ',', left) || !takeMember(in, ')', right)) {
      in.setstate(std::ios::failbit);
      return;
    }
    elementFromText(left, this->left);
    elementFromText(right, this->right);
  }

 private:
  // The text up to `end`, which is taken, without the white space around it; false if it is empty or missing.
  static bool takeMember(std::istream& in, char end, std::string& text) {
    skipSpace(in);
    for (;;) {
      const int ch = takeCharacter(in);
      if (ch == end) break;
      if (ch == std::char_traits<char>::eof() || ch == '\n') return false;
      text += static_cast<char>(ch);
    }
    text.erase(text.find_last_not_of(" \t\r") + 1);
    return !text.empty();
  }
};

// The same members, ordered by the right one.
template <class A, class B>
class RightOrderPair : public SerializablePair<A, B> {
 public:
  using SerializablePair<A, B>::SerializablePair;

  bool operator==(const RightOrderPair& other) const { return this->right == other.right; }
  bool operator<(const RightOrderPair& other) const { return this->right < other.right; }
  bool operator>(const RightOrderPair& other) const { return other.right < this->right; }
};

}  // namespace latbox
