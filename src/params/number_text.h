// Whether the extractor of exact numbers would end the run on a text. The console asks first: it never ends
// one.
#pragma once

#include <string>

namespace latbox {

// True if extracting an exact number from `text` fails: the number is malformed or too long, or a comment in
// front has no end. A text without a number token is not refused: it leaves 0. Refused as well: more
// separators than anyone types, since this look-ahead descends once for each.
bool exactNumberRefuses(const std::string& text);

}  // namespace latbox
