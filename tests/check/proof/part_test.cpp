#include "check/proof/part.h"

#include <gtest/gtest.h>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

const Origin ORIGIN{digestOf("proof"), digestOf("program")};

const Proof& twoSearches() {
  static const Proof proof = [] {
    Proof result;
    result.searches.resize(2);
    result.searches[0].goal = Goal::BETTER;
    result.searches[1].goal = Goal::EQUAL;
    return result;
  }();
  return proof;
}

std::string part(std::uint64_t number, std::uint64_t of, const Origin& origin = ORIGIN) {
  return partLine(origin, {1, number, of, false}, twoSearches(), {{100 * number, 0}, {number, 1}}) + "\n";
}

std::string sum(const std::string& text) {
  try {
    std::string shown;
    for (const Counts& counts : joined(text, ORIGIN, twoSearches()))
      shown += std::to_string(counts.nodes) + " " + std::to_string(counts.points) + ", ";
    return shown;
  } catch (const Refused& refused) {
    return std::string("refused: ") + refused.what();
  } catch (const Unreadable& unreadable) {
    return std::string("unreadable: ") + unreadable.what();
  }
}

TEST(ProofPart, the_digest_is_that_of_its_inventors) {
  EXPECT_EQ(digestOf(""), "cbf29ce484222325");
  EXPECT_EQ(digestOf("a"), "af63dc4c8601ec8c");
  EXPECT_EQ(digestOf("foobar"), "85944171f73967e8");
}

TEST(ProofPart, a_line) {
  const std::string line = "latbox-check-part 1 2/3 proof " + ORIGIN.proof + " program " + ORIGIN.program +
                           " better 200 0 equal 2 1";
  EXPECT_EQ(part(2, 3), line + " sum " + digestOf(line) + "\n");
}

TEST(ProofPart, the_sum_in_any_order) {
  EXPECT_EQ(sum(part(2, 3) + part(3, 3) + part(1, 3)), "600 0, 6 3, ");
  EXPECT_EQ(sum(part(1, 1)), "100 0, 1 1, ");
}

TEST(ProofPart, what_does_not_make_a_whole) {
  EXPECT_EQ(sum(part(3, 3) + part(1, 3)), "refused: line 3: part 2/3 is missing");
  EXPECT_EQ(sum(part(1, 3) + part(2, 3) + part(1, 3)), "refused: line 3: part 1/3 stands in line 1 too");
  EXPECT_EQ(sum(part(1, 2) + part(2, 3)), "refused: line 2: part 2/2 stands there as one of 3");
  EXPECT_EQ(sum(part(1, 2) + part(2, 2, {digestOf("x"), ORIGIN.program})),
            "refused: line 2: part 2/2 is of another proof");
  EXPECT_EQ(sum(part(1, 2, {ORIGIN.proof, digestOf("x")})),
            "refused: line 1: part 1/2 is for another program");
  EXPECT_EQ(sum(part(1, 1000000000000)), "refused: line 2: part 2/1000000000000 is missing");
}

TEST(ProofPart, every_damage_is_found) {
  const std::string fault = "unreadable: 2: no line of a part, or damaged";
  EXPECT_EQ(sum(""), "unreadable: 1: no line of a part, or damaged");
  EXPECT_EQ(sum(part(1, 2) + "\n" + part(2, 2)), fault);
  EXPECT_EQ(sum(part(1, 2) + "proof: all 3\n"), fault);
  const std::string line = part(2, 2);
  for (std::size_t i = 0; i + 1 < line.size(); ++i) {
    std::string changed = line;
    changed[i] = changed[i] == '1' ? '2' : '1';
    EXPECT_EQ(sum(part(1, 2) + changed), fault) << changed;
    EXPECT_EQ(sum(part(1, 2) + line.substr(0, i)).substr(0, 8), i == 0 ? "refused:" : "unreadab") << i;
  }
}

TEST(ProofPart, a_right_sum_makes_no_line) {
  const std::string line = part(1, 1);
  const std::string body = line.substr(0, line.find(" sum "));
  const auto summed = [](const std::string& text) { return sum(text + " sum " + digestOf(text) + "\n"); };
  const std::string fault = "unreadable: 1: no line of a part, or damaged";
  EXPECT_EQ(summed(body), "100 0, 1 1, ");
  EXPECT_EQ(summed(body + " 1"), fault);
  EXPECT_EQ(summed(body.substr(0, body.rfind(' '))), fault);
  EXPECT_EQ(summed(testing::replaced(body, "equal", "slack")), fault);
  EXPECT_EQ(summed(testing::replaced(body, "1/1", "0/1")), fault);
  EXPECT_EQ(summed(testing::replaced(body, "1/1", "2/1")), fault);
}

}  // namespace
}  // namespace latbox::check::proof
