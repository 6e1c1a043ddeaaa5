#include "complete/files/digest.h"

#include "support.h"

namespace latbox::complete {
namespace {

TEST(Digest, DiffersWithTheText) {
  EXPECT_EQ(digestOf("").size(), 32u);
  std::set<std::string> digests;
  for (int i = 0; i < 1000; ++i) digests.insert(digestOf(std::to_string(i)));
  EXPECT_EQ(digests.size(), 1000u);
}

TEST(Digest, OfPartsIsThatOfTheWhole) {
  Digest digest;
  for (const char* part : {"one", "", " line\n", "and another"}) digest.add(part);
  EXPECT_EQ(digest.text(), digestOf("one line\nand another"));
}

TEST(Digest, GoesOnFromItsText) {
  Digest digest;
  digest.add("one line\n");
  auto later = Digest::parse(digest.text());
  ASSERT_TRUE(later);
  EXPECT_EQ(*later, digest);
  later->add("and another");
  EXPECT_EQ(later->text(), digestOf("one line\nand another"));
}

TEST(Digest, RefusesATextThatIsNone) {
  const std::string well = digestOf("");
  ASSERT_TRUE(Digest::parse(well));
  for (const std::string& text : {std::string(), well + "0", well.substr(1), "x" + well.substr(1),
                                  well.substr(0, 31) + " ", "-" + well.substr(1)})
    EXPECT_FALSE(Digest::parse(text)) << text;
}

TEST(Sealed, TellsWhetherAllIsThere) {
  const std::string text = sealed("one\ntwo\n");
  ASSERT_TRUE(unsealed(text));
  EXPECT_EQ(*unsealed(text), "one\ntwo\n");
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_FALSE(unsealed(text.substr(0, size))) << size;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] ^= 1;
    EXPECT_FALSE(unsealed(other)) << i;
  }
}

}  // namespace
}  // namespace latbox::complete
