// The input of an arithmetic target as a sequence of operations and operands. A tape that has run out gives
// zeros.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace latbox::fuzzing {

class Tape {
 public:
  Tape(const std::uint8_t* bytes, std::size_t size) : next_(bytes), end_(bytes + size) {}

  bool atEnd() const { return next_ == end_; }
  unsigned byte() { return atEnd() ? 0U : *next_++; }
  unsigned below(unsigned n) { return byte() % n; }

  // Decimal digits with an optional "-", at most `maxGroups` groups: mostly of nines and zeros, which carry
  // and borrow, at times of other digits. Never empty, and without a zero in front but for the zero itself.
  std::string integer(unsigned maxGroups) {
    const unsigned head = byte();
    std::string digits;
    for (unsigned groups = 1 + (head >> 1) % maxGroups; groups > 0; --groups) appendGroup(digits);
    digits.erase(0, digits.find_first_not_of('0'));
    if (digits.empty()) return "0";
    return ((head & 1U) != 0 ? "-" : "") + digits;
  }

 private:
  void appendGroup(std::string& digits) {
    const unsigned kind = byte();
    const std::size_t length = 1 + (kind >> 2) % 27;
    switch (kind % 4) {
      case 0:
        digits.append(length, '0');
        break;
      case 1:
        digits.append(length, '9');
        break;
      case 2:
        digits += std::to_string(byte());
        break;
      default:
        for (std::size_t i = 0; i < length && !atEnd(); ++i) digits += std::to_string(byte());
    }
  }

  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

}  // namespace latbox::fuzzing
