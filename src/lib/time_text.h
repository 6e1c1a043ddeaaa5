// The form in which times are shown.
#pragma once

#include <iosfwd>

#include "lib/fixed_text.h"

namespace latbox {

// A time in whole seconds: "59 sec(s)", "1:00 min(s):sec(s) == 60 secs",
// "1:01:01 hour(s):min(s):sec(s) == 3661 secs"; -1, which stands for an unknown time, as "-1 sec(s)".
void timeText(FixedText& text, long long seconds);
void timeText(std::ostream& stream, long seconds);

}  // namespace latbox
