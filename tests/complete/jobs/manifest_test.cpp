#include "complete/jobs/manifest.h"

#include <gtest/gtest.h>

#include "complete/files/words.h"
#include "complete/jobs/prefix_text.h"

namespace latbox::complete::jobs {
namespace {

Entry entryOf(std::initializer_list<const char*> pieces, unsigned long parent = 0,
              const std::string& source = "") {
  Entry entry;
  entry.parent = parent;
  entry.source = source;
  entry.nodes = 1234567;
  for (const char* piece : pieces) entry.pieces.push_back(parsePiece(piece));
  return entry;
}

Manifest manifestOf() {
  Manifest manifest({{false, true, false, true}, "p", "l", "-", 2});
  manifest.append(entryOf({"0,*>1<0", "*>2<-1"}));
  manifest.append(entryOf({"1,*>1<0"}));
  manifest.append(entryOf({"1,*>1"}, 2));
  manifest.append(entryOf({"1,*<0"}, 2, "abcd"));
  Entry share;
  share.share = Share{2, 5};
  manifest.append(share);
  return manifest;
}

TEST(Manifest, GoesThereAndBack) {
  const Manifest manifest = manifestOf();
  const Manifest read = parseManifest(textOf(manifest));
  EXPECT_EQ(textOf(read), textOf(manifest));
  EXPECT_EQ(read.head().wanted, manifest.head().wanted);
  ASSERT_EQ(read.entries().size(), 5u);
  EXPECT_EQ(read.entries()[4].share->count, 5u);
  EXPECT_EQ(read.childrenOf(2, "").size(), 1u);
  EXPECT_EQ(read.childrenOf(2, "abcd").front()->number, 4u);
  EXPECT_EQ(read.childrenOf(0, "").size(), 3u);
  EXPECT_EQ(read.find(6), nullptr);
}

TEST(Manifest, OfAJobHasOneLine) {
  std::string text = textOf(manifestOf());
  text.erase(text.find("piece 1 "), text.find("piece 3 ") - text.find("piece 1 "));
  const Manifest read = parseManifest(text);
  EXPECT_EQ(read.find(1), nullptr);
  ASSERT_NE(read.find(3), nullptr);
  EXPECT_EQ(read.find(3)->digest, manifestOf().find(3)->digest);
}

TEST(Manifest, KeepsItsLinesWhenOthersAreAdded) {
  Manifest manifest = manifestOf();
  const std::string before = textOf(manifest);
  manifest.append(entryOf({"7,*>1<0"}, 1));
  EXPECT_TRUE(textOf(manifest).starts_with(before));
}

// Whoever has written it: a search would know nothing of the levels below its lattice's last one.
TEST(Manifest, GoesNoDeeperThanTheLattice) {
  Manifest manifest = manifestOf();
  manifest.append(entryOf({"*>9", "1,2,*>1<0"}));
  EXPECT_THROW(parseManifest(textOf(manifest)), BadWords);
  Head head = manifest.head();
  head.rank = 3;
  Manifest other(head);
  for (const Entry& entry : manifest.entries()) other.add(entry);
  EXPECT_THROW(parseManifest(textOf(other)), BadWords) << "the lines are those of another head";
}

TEST(Manifest, KeepsItsOrder) {
  Manifest manifest = manifestOf();
  for (const unsigned long number : {1ul, 5ul}) {
    Entry entry = entryOf({"0,*>1<0"}, 4);
    entry.number = number;
    EXPECT_THROW(manifest.add(entry), BadWords) << number;
  }
  EXPECT_EQ(textOf(manifest), textOf(manifestOf()));
  EXPECT_TRUE(manifest.childrenOf(4, "").empty());
  Entry entry = entryOf({"0,*>1<0"}, 4);
  entry.number = 9;
  manifest.add(entry);
  EXPECT_EQ(manifest.childrenOf(4, ""), std::vector<const Entry*>{manifest.find(9)});
}

TEST(Manifest, NoticesEveryChange) {
  const std::string text = textOf(manifestOf());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] ^= 1;
    EXPECT_THROW(parseManifest(other), BadWords) << i << " in\n" << other;
  }
  EXPECT_THROW(parseManifest(text.substr(0, text.size() - 1)), BadWords);
  EXPECT_THROW(parseManifest(""), BadWords);
}

}  // namespace
}  // namespace latbox::complete::jobs
