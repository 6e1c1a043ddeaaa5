// Texts as a whole; lib/scanner.h reads from streams.
#pragma once

#include <string>

namespace latbox {

// What the readers of files take for blanks.
inline constexpr const char* BLANKS = " \t\r\n";

// `text` without the run of characters of `blanks` at either end.
std::string trimmed(const std::string& text, const char* blanks);

}  // namespace latbox
