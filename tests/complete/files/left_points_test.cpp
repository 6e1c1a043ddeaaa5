#include "complete/files/left_points.h"

#include <filesystem>
#include <fstream>

#include "complete/files/points_file.h"
#include "support.h"

namespace latbox::complete {
namespace {

const std::string FIRST = "[ 3 1 ] | 0 | [ ] | 0 | 0 | -\n";
const std::string SECOND = "[ 0 0 ] | 0 | [ ] | 0 | 0 | -\n";

// x - 3 y = 0 over 0..9, and what a run of it has left.
class LeftPoints : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = ::testing::TempDir() + "pointsXXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  // Whether the checkpoint of these lines goes with a file of that content.
  bool isFile(const std::string& lines, const std::string& content, bool single = false) {
    std::ofstream(path(), std::ios::binary | std::ios::trunc) << content;
    return isFileOf(checkpointOf(lines), path(), single, program_);
  }
  bool isFileOfEnded(const std::string& lines, const std::string& content, bool single) {
    std::ofstream(path(), std::ios::binary | std::ios::trunc) << content;
    Checkpoint past = checkpointOf(lines);
    past.verdict = "all";
    return isFileOf(past, path(), single, program_);
  }

  static Checkpoint checkpointOf(const std::string& lines) {
    Checkpoint past;
    past.file.count = static_cast<unsigned long>(std::count(lines.begin(), lines.end(), '\n'));
    past.file.bytes = lines.size();
    past.file.digest.add(lines);
    return past;
  }

  std::string path() const { return folder_ + "/p.all"; }

  Program program_ = readProgram("[ ] [ ] [ [ 1 -3 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 9 9 ]", "p.opt");
  std::string folder_;
};

TEST_F(LeftPoints, AsTheyWere) {
  for (const std::string& lines : {std::string(), FIRST, FIRST + SECOND}) {
    EXPECT_TRUE(isFile(lines, lines));
    EXPECT_TRUE(isFileOfEnded(lines, lines, false));
  }
}

TEST_F(LeftPoints, WithLinesOfLater) {
  EXPECT_TRUE(isFile("", FIRST));
  EXPECT_TRUE(isFile(FIRST, FIRST + SECOND));
  for (std::size_t size = 1; size < SECOND.size(); ++size)
    EXPECT_TRUE(isFile(FIRST, FIRST + SECOND.substr(0, size))) << size;
  EXPECT_FALSE(isFileOfEnded(FIRST, FIRST + SECOND, false));
}

TEST_F(LeftPoints, WithOthersBehindThem) {
  for (const std::string other : {"somebody\'s\n", "somebody\'s", "\n", "[ 3 2 ] | 0\n", "[ 3 1 0 ] | 0\n",
                                  "[ 3 x ] | 0\n", "[ 3 1\n", "[ 3 1 ]\n"}) {
    EXPECT_FALSE(isFile(FIRST, FIRST + other)) << other;
    EXPECT_FALSE(isFile("", other)) << other;
  }
}

TEST_F(LeftPoints, Edited) {
  EXPECT_FALSE(isFile(FIRST + SECOND, SECOND + FIRST));
  for (std::size_t i = 0; i < FIRST.size(); ++i) {
    std::string edited = FIRST;
    edited[i] = edited[i] == '7' ? '8' : '7';
    EXPECT_FALSE(isFile(FIRST, edited)) << i;
    EXPECT_FALSE(isFileOfEnded(FIRST, edited, true)) << i;
  }
}

TEST_F(LeftPoints, ShortenedOrGone) {
  EXPECT_FALSE(isFile(FIRST, FIRST.substr(1)));
  EXPECT_FALSE(isFile(FIRST, FIRST.substr(0, FIRST.size() - 1)));
  EXPECT_FALSE(isFile(FIRST, ""));
  EXPECT_FALSE(isFile(FIRST, "", true));
  std::filesystem::remove(path());
  EXPECT_FALSE(isFileOf(checkpointOf(FIRST), path(), false, program_));
  EXPECT_FALSE(isFileOf(checkpointOf(""), path(), false, program_));
}

// The run was killed when it had put another point in the place of the one that it had written down.
TEST_F(LeftPoints, ASingleOneInTheirPlace) {
  EXPECT_TRUE(isFile(FIRST, SECOND, true));
  EXPECT_FALSE(isFile(FIRST, SECOND, false));
  EXPECT_FALSE(isFile(FIRST, "somebody\'s\n", true));
  EXPECT_FALSE(isFileOfEnded(FIRST, SECOND, true));
}

// Longer than what is read at once.
TEST_F(LeftPoints, OfALongFile) {
  std::string lines;
  while (lines.size() < 200'000) lines += FIRST;
  EXPECT_TRUE(isFile(lines, lines));
  lines[150'000] ^= 1;
  std::string edited = lines;
  edited[190'000] ^= 1;
  EXPECT_FALSE(isFile(lines, edited));
}

TEST_F(LeftPoints, AFileThatGoesOnHasItsDigest) {
  {
    PointsFile file(path());
    file.append(FIRST);
    file.append(SECOND);
    EXPECT_EQ(file.digest().text(), digestOf(FIRST + SECOND));
    file.replace(SECOND);
    EXPECT_EQ(file.digest().text(), digestOf(SECOND));
    file.append(FIRST);
  }
  const auto begin = digestOfFile(path(), SECOND.size());
  ASSERT_TRUE(begin);
  PointsFile file(path(), SECOND.size(), *begin);
  file.append(SECOND);
  file.flush();
  EXPECT_EQ(file.digest().text(), digestOf(SECOND + SECOND));
  EXPECT_EQ(digestOfFile(path(), file.bytes()), file.digest());
}

}  // namespace
}  // namespace latbox::complete
