#include "complete/files/checkpoint.h"

#include <filesystem>
#include <fstream>

#include "complete/files/write_failure.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::vectorOf;

Digest digestWith(std::string_view text) {
  Digest digest;
  digest.add(text);
  return digest;
}

Checkpoint example() {
  Checkpoint checkpoint;
  checkpoint.identity = digestOf("a program");
  checkpoint.seconds = 1.0 / 3;
  checkpoint.nodes = 1ul << 60;
  checkpoint.file = {5, 12345678901, digestWith("points")};
  checkpoint.searches.push_back({"a", SearchEnd::EMPTY, std::nullopt});
  checkpoint.searches.push_back({"b", SearchEnd::STOPPED, vectorOf({3, -4, 0})});
  checkpoint.searches.push_back({"b", SearchEnd::COMPLETE, IntegerVector()});
  OpenSearch open;
  open.key = "c";
  open.lattice = "d";
  open.begin = {2, 77, digestWith("a few")};
  open.basis = {vectorOf({1, 0, -1}), {Integer("123456789012345678901234567890"), 2, 3}};
  open.frontier.share = 0.1;
  open.frontier.pieces = {{{7, 8, -9, false, true}, {0, 1, Integer("-98765432109876543210"), true, false}},
                          {}};
  checkpoint.open = open;
  return checkpoint;
}

std::string sealed(const std::string& body) {
  return body + "end " + digestOf(body) + "\n";
}

const std::string HEAD = "latbox-all checkpoint 2\n";

TEST(Checkpoint, SaysTheSameWhenReadAgain) {
  const Checkpoint before = example();
  const Checkpoint after = parseCheckpoint(textOf(before));
  EXPECT_EQ(textOf(after), textOf(before));
  EXPECT_EQ(after.seconds, before.seconds);
  EXPECT_EQ(after.nodes, before.nodes);
  EXPECT_EQ(after.file.bytes, before.file.bytes);
  EXPECT_EQ(after.file.digest, digestWith("points"));
  ASSERT_EQ(after.searches.size(), 3u);
  EXPECT_EQ(after.searches[0].point, std::nullopt);
  EXPECT_EQ(after.searches[1].point, before.searches[1].point);
  EXPECT_EQ(after.searches[2].point, IntegerVector());
  ASSERT_TRUE(after.open);
  EXPECT_EQ(after.open->basis, before.open->basis);
  EXPECT_EQ(after.open->begin.bytes, 77u);
  EXPECT_EQ(after.open->begin.digest, digestWith("a few"));
  EXPECT_EQ(after.open->frontier.pieces, before.open->frontier.pieces);
  EXPECT_EQ(after.open->frontier.share, 0.1);
  EXPECT_EQ(after.verdict, "");
}

TEST(Checkpoint, KeepsAVerdictOfSeveralWords) {
  Checkpoint ended = example();
  ended.open.reset();
  ended.verdict = "optimum 3:1/2 4";
  ended.status = 10;
  const Checkpoint after = parseCheckpoint(textOf(ended));
  EXPECT_EQ(after.verdict, ended.verdict);
  EXPECT_EQ(after.status, 10);
  EXPECT_FALSE(after.open);
}

TEST(Checkpoint, ATornOneIsRefusedWhereverItEnds) {
  const std::string text = textOf(example());
  for (std::size_t size = 0; size < text.size(); ++size)
    EXPECT_THROW(parseCheckpoint(text.substr(0, size)), BadCheckpoint) << size;
}

TEST(Checkpoint, AChangedByteIsRefused) {
  const std::string text = textOf(example());
  for (std::size_t i = 0; i < text.size(); ++i)
    for (const char other : {'1', ' ', '\n'}) {
      std::string changed = text;
      changed[i] = other;
      if (changed == text) continue;
      EXPECT_THROW(parseCheckpoint(changed), BadCheckpoint) << i;
    }
}

TEST(Checkpoint, ADamagedLineIsRefusedThoughItsDigestIsRight) {
  const std::string digest = digestOf("points");
  const std::string open = "open c d 0 0 " + digest + " 1\n";
  ASSERT_NO_THROW(parseCheckpoint(sealed(HEAD + open)));
  for (const std::string& body : {
           std::string("latbox-all checkpoint 1\n"),
           HEAD + "\n",
           HEAD + "unknown 1\n",
           HEAD + "identity\n",
           HEAD + "identity a b\n",
           HEAD + "time 1\n",
           HEAD + "time one 1\n",
           HEAD + "time nan 1\n",
           HEAD + "points 1\n",
           HEAD + "points 1 2\n",
           HEAD + "points 1 2 " + digest.substr(1) + "\n",
           HEAD + "points 1 2 x" + digest.substr(1) + "\n",
           HEAD + "points 1 2 " + digest + " 3\n",
           HEAD + "search a\n",
           HEAD + "search a ended -\n",
           HEAD + "search a empty\n",
           HEAD + "search a empty - 1\n",
           HEAD + "search a stopped 2 1\n",
           HEAD + "search a stopped 1 1 1\n",
           HEAD + "search a stopped x 1\n",
           HEAD + "search a stopped 1 x\n",
           HEAD + "search a stopped -1\n",
           HEAD + "open c d 0 0 " + digest + "\n",
           HEAD + "open c d 0 0 " + digest + " 1 1\n",
           HEAD + "row 1 2\n",
           HEAD + "piece 0\n",
           HEAD + open + "row 1 x 2\n",
           HEAD + open + "piece 1\n",
           HEAD + open + "piece 1 0 1 -1 0\n",
           HEAD + open + "piece 1 0 1 -1 0 2\n",
           HEAD + open + "piece 1 0 1 -1 0 0 0\n",
           HEAD + open + "piece 2 0 1 -1 0 0\n",
           HEAD + open + "piece 99999999999999999999 0 1 -1 0 0\n",
           HEAD + open + "piece -1 0 1 -1 0 0\n",
           HEAD + "verdict all 3\n",
       })
    EXPECT_THROW(parseCheckpoint(sealed(body)), BadCheckpoint) << body;
}

class CheckpointFile : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = ::testing::TempDir() + "checkpointXXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path() const { return folder_ + "/p.resume"; }
  void put(const std::string& text) const { std::ofstream(path(), std::ios::binary) << text; }

  std::string folder_;
};

TEST_F(CheckpointFile, IsReadAsItWasWritten) {
  EXPECT_FALSE(readCheckpoint(path()));
  for (const bool surely : {false, true}) {
    writeCheckpoint(path(), example(), surely);
    const auto read = readCheckpoint(path());
    ASSERT_TRUE(read);
    EXPECT_EQ(textOf(*read), textOf(example()));
    EXPECT_FALSE(std::filesystem::exists(path() + ".tmp"));
  }
}

TEST_F(CheckpointFile, WhatCannotBeReadIsNone) {
  for (const std::string& text : {std::string(), std::string("garbage"), std::string(3, '\0'),
                                  textOf(example()).substr(0, 200), textOf(example()) + "end\n"}) {
    put(text);
    EXPECT_FALSE(readCheckpoint(path())) << text;
  }
}

TEST_F(CheckpointFile, TheOldOneStandsWhenTheNewOneCannotBeWritten) {
  Checkpoint old;
  old.identity = "old";
  writeCheckpoint(path(), old, false);
  std::filesystem::create_directory(path() + ".tmp");
  EXPECT_THROW(writeCheckpoint(path(), example(), true), WriteFailure);
  const auto read = readCheckpoint(path());
  ASSERT_TRUE(read);
  EXPECT_EQ(textOf(*read), textOf(old));
}

}  // namespace
}  // namespace latbox::complete
