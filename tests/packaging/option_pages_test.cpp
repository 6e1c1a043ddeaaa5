// The pages on options follow the option table: nothing is missing, nothing is stale, nothing is typed twice.
#include "option_pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "lib/constants.h"
#include "params/option_table.h"
#include "params/params.h"

namespace latbox {
namespace {

std::vector<OptionNote> allNotes() {
  const auto notes = optionNotes();
  return {notes.begin(), notes.end()};
}

std::string messageFor(const std::vector<OptionNote>& notes) {
  try {
    describeOptions(notes);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

long count(const std::string& text, const std::string& part) {
  long n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST(OptionNotes, EachOptionHasOneInTheOrderOfTheTable) {
  const ExtendedParams<dbl_t> params;
  const auto notes = optionNotes();
  ASSERT_EQ(static_cast<long>(notes.size()), params.keys.MN);
  for (long i = 1; i <= params.keys.MN; ++i)
    EXPECT_EQ(notes[static_cast<std::size_t>(i - 1)].key, params.keys[i]);
}

TEST(OptionNotes, AMissingNoteIsAnError) {
  auto notes = allNotes();
  notes.erase(notes.begin() + 4);
  EXPECT_EQ(messageFor(notes), "option without a note: beta");
}

TEST(OptionNotes, AStaleNoteIsAnError) {
  auto notes = allNotes();
  notes.push_back({"gui", "", "", "", ""});
  EXPECT_EQ(messageFor(notes), "note without an option: gui");
}

TEST(OptionNotes, NoTextIsEmptyAndBackquotesPair) {
  for (const OptionNote& note : optionNotes())
    for (const std::string text : {note.values, note.text, note.console}) {
      EXPECT_FALSE(text.empty()) << note.key;
      EXPECT_EQ(count(text, "`") % 2, 0) << text;
    }
}

TEST(OptionNotes, SwitchesSuggestTheirTwoValues) {
  for (const DescribedOption& option : describeOptions()) {
    if (option.isSwitch) {
      EXPECT_STREQ(option.note.suggestions, "0 1") << option.key;
    }
  }
}

TEST(DescribeOptions, TypesAndDefaultsAreThoseOfTheTable) {
  const auto options = describeOptions();
  const auto find = [&](const std::string& key) {
    return *std::find_if(options.begin(), options.end(),
                         [&](const auto& option) { return option.key == key; });
  };
  EXPECT_EQ(find("deep").type, "switch");
  EXPECT_EQ(find("beta").type, "whole number");
  EXPECT_EQ(find("rtime").type, "whole number");
  EXPECT_EQ(find("bench").type, "number");
  EXPECT_EQ(find("snorm").type, "exact number");
  EXPECT_EQ(find("tnorm").defaultText, "-inf");
  EXPECT_EQ(find("iters").defaultText, "-1");
  EXPECT_EQ(find("snorm").help, SNORM_HELP);
}

TEST(Pages, EveryPageHoldsEveryOption) {
  const auto options = describeOptions();
  const std::string markdown = optionsAsMarkdown(options), manual = optionsAsManual(options);
  for (const DescribedOption& option : options) {
    EXPECT_EQ(count(markdown, "\n## " + option.key + "\n"), 1);
    EXPECT_EQ(count(markdown, "\n> " + option.help + "\n"), 1) << option.key;
    EXPECT_EQ(count(manual, ".BI \\-\\-" + option.key + "= "), 1);
  }
}

TEST(Pages, TheManualHasNoBareHyphensBackslashesOrRequests) {
  DescribedOption option{"k", "switch", true, "-1", "-a \\ b", {"k", "`-1`", "", "`x` or `y-z`", "c"}};
  EXPECT_EQ(optionsAsManual({option}),
            ".TP\n.BI \\-\\-k= 0|1\n\\-a \\e b\n.br\n\\fBx\\fR or \\fBy\\-z\\fR\n.br\n"
            "Values: \\fB\\-1\\fR. Default: \\fB\\-1\\fR.\n.br\nSET: c\n");
  std::istringstream lines(optionsAsManual(describeOptions()));
  for (std::string line; std::getline(lines, line);) {
    EXPECT_NE(line.substr(0, 1), "'") << line;
    if (line.starts_with('.')) {
      EXPECT_TRUE(line == ".TP" || line == ".br" || line.starts_with(".BI ")) << line;
    }
  }
}

TEST(Pages, KeysAndValuesOfTheCompletion) {
  const auto options = describeOptions();
  EXPECT_TRUE(optionKeys(options).starts_with("help verb consistency "));
  EXPECT_TRUE(optionKeys(options).ends_with(" bench snorm tnorm"));
  EXPECT_EQ(count(optionValues(options), "    eprune) printf '%s' '0 1 2 3' ;;\n"), 1);
  EXPECT_EQ(count(optionValues(options), "beta)"), 0);
}

TEST(Pages, ATemplateKeepsWhatIsNoMark) {
  EXPECT_EQ(fillTemplate("a @VERSION@ @b@\n@VERSION@", {}), std::string("a ") + VERSION + " @b@\n" + VERSION);
  EXPECT_EQ(fillTemplate("x\n@OPTIONS_AS_MANUAL@\ny\n", {}), "x\ny\n");
}

}  // namespace
}  // namespace latbox
