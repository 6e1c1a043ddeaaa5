// latbox_all_pages TEMPLATE PAGE: the same for latbox-all, whose options are those of its own usage. Marks:
// @VERSION@,
// @OPTIONS_AS_MANUAL@, @OPTION_KEYS@, @OPTION_SWITCHES@.
#include "complete/run/exit_status.h"
#include "complete/run/options.h"
#include "page.h"

namespace latbox {
namespace {

using complete::OptionHelp;

bool isSwitch(const OptionHelp& option) {
  return option.value == std::string("0") || option.value == std::string("1");
}

std::string manualParagraph(const OptionHelp& option) {
  const std::string name = manualText(option.name);
  const std::string head =
      *option.value == '\0' ? ".B \\-\\-" + name : ".BI \\-\\-" + name + "= " + option.value;
  return ".TP\n" + head + '\n' + manualText(option.text) + '\n';
}

// Separated by `between`.
template <class Pick, class Show>
std::string listOf(const char* between, Pick&& pick, Show&& show) {
  std::string text;
  for (const OptionHelp& option : complete::optionHelp())
    if (pick(option)) text += (text.empty() ? "" : between) + show(option);
  return text;
}

// As they are typed: with "=" where a value is wanted.
std::string keyOf(const OptionHelp& option) {
  return std::string(option.name) + (*option.value == '\0' ? "" : "=");
}

std::string fill(std::string text) {
  const auto every = [](const OptionHelp&) { return true; };
  const auto form = [](const OptionHelp& option) { return std::string("--") + option.name; };
  replaceAll(text, "@VERSION@", complete::VERSION);
  replaceAll(text, "@OPTIONS_AS_MANUAL@\n", listOf("", every, manualParagraph));
  replaceAll(text, "@OPTION_KEYS@", listOf(" ", every, keyOf));
  replaceAll(text, "@OPTION_SWITCHES@", listOf(" | ", isSwitch, form));
  return text;
}

}  // namespace
}  // namespace latbox

int main(int argc, char** argv) {
  return latbox::makePage(argc, argv, latbox::fill);
}
