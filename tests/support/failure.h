// What a test of the failure path looks for: the exact text on standard error and exit status 1.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace latbox::testing {

// `text` as a regular expression that matches it literally.
inline std::string literal(const std::string& text) {
  std::string escaped;
  for (const char ch : text) {
    if (std::string("\\^$.|?*+()[]{}").find(ch) != std::string::npos) escaped += '\\';
    escaped += ch;
  }
  return escaped;
}

}  // namespace latbox::testing

// The statement ends the process by the failure path with exactly `message`.
#define EXPECT_FAILURE(statement, message)             \
  EXPECT_EXIT(statement, ::testing::ExitedWithCode(1), \
              "\n\\*\\*\\* FAIL: " + ::latbox::testing::literal(message) + "\n")
