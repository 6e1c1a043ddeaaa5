// Text of bounded length in fixed storage, for code that may not allocate: the final report is written by a
// signal handler, which may have interrupted anything.
#pragma once

#include <cstddef>

namespace latbox {

class FixedText {
 public:
  const char* data() const { return text_; }
  std::size_t size() const { return size_; }

  // What does not fit is cut off.
  FixedText& operator<<(const char* text) {
    while (*text != '\0' && size_ < CAPACITY) text_[size_++] = *text++;
    return *this;
  }
  FixedText& operator<<(char ch) {
    if (size_ < CAPACITY) text_[size_++] = ch;
    return *this;
  }
  FixedText& operator<<(long long number) {
    char digits[20];
    int count = 0;
    unsigned long long rest = static_cast<unsigned long long>(number);
    if (number < 0) {
      *this << '-';
      rest = 0 - rest;
    }
    do digits[count++] = static_cast<char>('0' + rest % 10);
    while ((rest /= 10) != 0);
    while (count > 0) *this << digits[--count];
    return *this;
  }

 private:
  static constexpr std::size_t CAPACITY = 1024;
  char text_[CAPACITY] = {};
  std::size_t size_ = 0;
};

}  // namespace latbox
