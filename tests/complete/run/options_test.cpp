#include "complete/run/options.h"

#include "support.h"

namespace latbox::complete {
namespace {

TEST(ParseOptions, TakesEveryKey) {
  const Options options = parseOptions({"--all=1", "--count=1", "--limit=7", "--rtime=0.25", "--threads=2",
                                        "--seed=5", "--quiet=1", "--resume=0", "--out=points", "p.opt"});
  EXPECT_TRUE(options.all && options.count && options.quiet);
  EXPECT_FALSE(options.first || options.ties);
  EXPECT_EQ(options.limit, 7u);
  EXPECT_EQ(options.rtime, 0.25);
  EXPECT_EQ(options.out, "points");
  EXPECT_EQ(options.file, "p.opt");
  EXPECT_EQ(options.proof, "");
  EXPECT_EQ(parseOptions({"--proof=q", "--ties=1", "p.opt"}).proof, "q");
}

TEST(ParseOptions, KeepsItsTextWithinAField) {
  const Options options = parseOptions({"--out=a|b\n|c\rd", "--seed=1", "p.opt"});
  EXPECT_EQ(options.out, "a|b\n|c\rd");
  EXPECT_EQ(options.text, "--out=a b  c d --seed=1");
}

TEST(ParseOptions, TakesQuestionsWithoutAFile) {
  for (const char* form : {"--help", "--help=1"}) EXPECT_TRUE(parseOptions({form}).help);
  for (const char* form : {"--version", "--version=1"}) EXPECT_TRUE(parseOptions({form}).version);
}

TEST(ParseOptions, RefusesByName) {
  for (const char* argument :
       {"--nothing=1", "--all", "--all=2", "--all=", "--limit=x", "--limit=-1", "--limit=1.5", "--rtime=abc",
        "--rtime=", "--rtime=.", "--rtime=1.2.3", "--rtime=-1", "--rtime=inf",
        "--out=", "--proof=", "--proof", "--resume=2", "--checkpoint=x", "-v"}) {
    const std::string text = testing::refusal([&] { parseOptions({argument, "p.opt"}); });
    EXPECT_EQ(text.rfind(std::string(argument), 0), 0u) << argument << ": " << text;
  }
  EXPECT_NE(testing::refusal([] { parseOptions({"--seed=1", "--seed=2", "p.opt"}); }), "");
}

TEST(ParseOptions, RefusesWhatExcludesEachOther) {
  const std::vector<std::string> pairs[] = {{"--first=1", "--ties=1"},  {"--first=1", "--limit=2"},
                                            {"--first=1", "--count=1"}, {"--all=1", "--ties=1"},
                                            {"--proof=q", "--first=1"}, {"--proof=q", "--limit=2"}};
  for (std::vector<std::string> pair : pairs) {
    pair.emplace_back("p.opt");
    EXPECT_NE(testing::refusal([&] { parseOptions(pair); }).find("exclude each other"), std::string::npos)
        << pair[1];
  }
  EXPECT_EQ(testing::refusal([] { parseOptions({"--first=1", "--limit=0", "--ties=0", "p.opt"}); }), "");
}

TEST(ParseOptions, TakesWhatIsDoneWithPieces) {
  const Options begin = parseOptions({"--split=20", "--jobs=d", "--proof=1", "--ties=1", "p.opt"});
  EXPECT_EQ(begin.split, 20u);
  EXPECT_EQ(begin.jobs, "d");
  const Options job = parseOptions({"--job=3", "--jobs=d", "--job-rtime=2.5", "--threads=2"});
  EXPECT_EQ(job.job, 3u);
  EXPECT_EQ(job.jobRtime, 2.5);
  EXPECT_EQ(parseOptions({"--take=r", "--job=3", "--jobs=d"}).take, "r");
  EXPECT_TRUE(parseOptions({"--join=1", "--jobs=d", "--out=o", "--proof=q"}).join);
  EXPECT_TRUE(parseOptions({"--pieces=1", "--jobs=d"}).pieces);
}

TEST(ParseOptions, RefusesWhatIsNotDoneWithPieces) {
  const std::vector<std::string> lists[] = {{"--split=2", "p.opt"},
                                            {"--job=1"},
                                            {"--join=1"},
                                            {"--pieces=1"},
                                            {"--jobs=d"},
                                            {"--jobs=d", "p.opt"},
                                            {"--job-rtime=1", "p.opt"},
                                            {"--take=r", "--jobs=d"},
                                            {"--split=2", "--jobs=d"},
                                            {"--split=2", "--job=1", "--jobs=d", "p.opt"},
                                            {"--split=2", "--jobs=d", "--proof=q", "p.opt"},
                                            {"--job=1", "--jobs=d", "--first=1"},
                                            {"--join=1", "--jobs=d", "--ties=1"},
                                            {"--job=0", "--jobs=d"}};
  for (const std::vector<std::string>& list : lists)
    EXPECT_NE(testing::refusal([&] { parseOptions(list); }), "") << list.front() << " and " << list.back();
}

}  // namespace
}  // namespace latbox::complete
