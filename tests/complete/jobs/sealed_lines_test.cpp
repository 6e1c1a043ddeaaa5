#include "complete/jobs/sealed_lines.h"

#include <gtest/gtest.h>

#include "complete/files/digest.h"
#include "complete/files/words.h"

namespace latbox::complete::jobs {
namespace {

TEST(SealedLines, AreThoseBehindTheFirst) {
  std::ostringstream out;
  out << "numbers 1\n";
  writeLine(out, "one", std::vector<long>{1, -2});
  writeLine(out, "none", std::vector<long>());
  writeLines(out, "row", std::vector<std::vector<long>>{{3}, {4, 5}});
  std::istringstream lines = linesBehind("numbers 1", sealed(out.str()));
  std::string all;
  for (std::string line; std::getline(lines, line);) all += line + "|";
  EXPECT_EQ(all, "one 1 -2|none|row 3|row 4 5|");
}

TEST(SealedLines, OfAnotherTextAreNone) {
  const std::string text = sealed("numbers 1\none 1\n");
  EXPECT_THROW(linesBehind("numbers 2", text), BadWords);
  EXPECT_THROW(linesBehind("numbers 1", text.substr(0, text.size() - 1)), BadWords);
  EXPECT_THROW(linesBehind("numbers 1", "numbers 1\none 1\n"), BadWords);
  EXPECT_THROW(linesBehind("numbers 1", sealed("")), BadWords);
}

}  // namespace
}  // namespace latbox::complete::jobs
