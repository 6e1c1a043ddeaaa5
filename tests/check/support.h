// What the tests of the checker share.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "check/scanner.h"

namespace latbox::check::testing {

// What an Unreadable thrown by `statement` says; "" if none is thrown.
template <class Statement>
std::string refusal(Statement statement) {
  try {
    statement();
  } catch (const Unreadable& unreadable) {
    return unreadable.what();
  }
  return "";
}

// `text` with the one place where `old` stands replaced.
inline std::string replaced(std::string text, const std::string& old, const std::string& with) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return at == std::string::npos ? text : text.replace(at, old.size(), with);
}

// Numbers of a vector, as the files show them.
inline std::string toText(const Vector& vector) {
  std::string text;
  for (const Number& number : vector) text += (text.empty() ? "" : " ") + latbox::check::toText(number);
  return text;
}

}  // namespace latbox::check::testing
