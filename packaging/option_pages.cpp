#include "option_pages.h"

#include <algorithm>
#include <stdexcept>

#include "lib/constants.h"
#include "page.h"
#include "params/params.h"

namespace latbox {
namespace {

std::string typeInWords(const ParamInfo& param) {
  if (param.isBool()) return "switch";
  if (dynamic_cast<const Param<QQ>*>(&param) != nullptr) return "exact number";
  if (dynamic_cast<const Param<float>*>(&param) != nullptr) return "number";
  return "whole number";
}

const OptionNote& noteOf(const std::string& key, std::span<const OptionNote> notes) {
  const auto found =
      std::find_if(notes.begin(), notes.end(), [&](const OptionNote& n) { return key == n.key; });
  if (found == notes.end()) throw std::invalid_argument("option without a note: " + key);
  return *found;
}

void requireOption(const Params& params, const char* key) {
  if (params.lookUp(key) == nullptr)
    throw std::invalid_argument("note without an option: " + std::string(key));
}

std::string valueName(const DescribedOption& option) {
  return option.isSwitch ? "0|1" : "N";
}

std::string markdownSection(const DescribedOption& option) {
  return "\n## " + option.key + "\n\n`--" + option.key + "=" + option.defaultText +
         "` is the default. Values: " + option.note.values + ".\n\n> " + option.help + "\n\n" +
         option.note.text + "\n\n`SET " + option.key + "=...`: " + option.note.console + '\n';
}

std::string manualParagraph(const DescribedOption& option) {
  return ".TP\n.BI \\-\\-" + option.key + "= " + valueName(option) + "\n" + manualText(option.help) +
         "\n.br\n" + manualText(option.note.text) + "\n.br\nValues: " + manualText(option.note.values) +
         ". Default: \\fB" + manualText(option.defaultText) +
         "\\fR.\n.br\nSET: " + manualText(option.note.console) + '\n';
}

}  // namespace

// The exact parameters: with them the norms are registered too.
std::vector<DescribedOption> describeOptions(std::span<const OptionNote> notes) {
  const ExtendedParams<QQ> params;
  std::vector<DescribedOption> options;
  for (long i = 1; i <= params.hash.MN; ++i) {
    const ParamInfo& param = *params.hash.data[i].right;
    options.push_back({param.key, typeInWords(param), param.isBool(), param.defaultText, param.help,
                       noteOf(param.key, notes)});
  }
  for (const OptionNote& note : notes) requireOption(params, note.key);
  return options;
}

std::string optionsAsMarkdown(const std::vector<DescribedOption>& options) {
  std::string text = "| Option | Type | Default | Values |\n|---|---|---|---|\n";
  for (const DescribedOption& option : options)
    text += "| [`" + option.key + "`](#" +
            [&] {
              std::string anchor = option.key;
              std::transform(anchor.begin(), anchor.end(), anchor.begin(), [](char ch) {
                return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
              });
              return anchor;
            }() +
            ") | " + option.type + " | `" + option.defaultText + "` | " + option.note.values + " |\n";
  for (const DescribedOption& option : options) text += markdownSection(option);
  return text;
}

std::string optionsAsManual(const std::vector<DescribedOption>& options) {
  std::string text;
  for (const DescribedOption& option : options) text += manualParagraph(option);
  return text;
}

std::string optionKeys(const std::vector<DescribedOption>& options) {
  std::string text;
  for (const DescribedOption& option : options) text += (text.empty() ? "" : " ") + option.key;
  return text;
}

std::string optionValues(const std::vector<DescribedOption>& options) {
  std::string text;
  for (const DescribedOption& option : options)
    if (*option.note.suggestions != '\0')
      text += "    " + option.key + ") printf '%s' '" + option.note.suggestions + "' ;;\n";
  return text;
}

std::string fillTemplate(std::string text, const std::vector<DescribedOption>& options) {
  replaceAll(text, "@VERSION@", VERSION);
  replaceAll(text, "@OPTIONS_AS_MARKDOWN@\n", optionsAsMarkdown(options));
  replaceAll(text, "@OPTIONS_AS_MANUAL@\n", optionsAsManual(options));
  replaceAll(text, "@OPTION_KEYS@", optionKeys(options));
  replaceAll(text, "@OPTION_VALUES@\n", optionValues(options));
  return text;
}

}  // namespace latbox
