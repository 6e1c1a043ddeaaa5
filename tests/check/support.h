// What the tests of the checker share.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "check/files/scanner.h"

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

// Each test has a folder of its own.
class FolderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "latbox-check-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  // Returns the file's path.
  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name)) << text;
    return path(name);
  }
  void append(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::app) << text;
  }

  std::filesystem::path folder_;
};

}  // namespace latbox::check::testing
