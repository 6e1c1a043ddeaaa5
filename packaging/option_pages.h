// The option table as it stands in documents: in Markdown, in a manual page, in the completion.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "option_notes.h"

namespace latbox {

struct DescribedOption {
  std::string key;
  std::string type;  // in words
  bool isSwitch;
  std::string defaultText;
  std::string help;
  OptionNote note;
};

// Every registered option, in the order of the table. Throws std::invalid_argument if an option has no note
// among `notes`, or a note no option.
std::vector<DescribedOption> describeOptions(std::span<const OptionNote> notes = optionNotes());

std::string optionsAsMarkdown(const std::vector<DescribedOption>& options);
// Tagged paragraphs of the man macros.
std::string optionsAsManual(const std::vector<DescribedOption>& options);
// The keys, separated by blanks.
std::string optionKeys(const std::vector<DescribedOption>& options);
// Branches of a shell's case: key) the values to suggest.
std::string optionValues(const std::vector<DescribedOption>& options);

// The template with its marks replaced: @VERSION@, @OPTIONS_AS_MARKDOWN@, @OPTIONS_AS_MANUAL@, @OPTION_KEYS@,
// @OPTION_VALUES@.
std::string fillTemplate(std::string text, const std::vector<DescribedOption>& options);

}  // namespace latbox
