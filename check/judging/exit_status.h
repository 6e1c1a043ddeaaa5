// How a run of latbox-check ends.
#pragma once

namespace latbox::check {

enum ExitStatus { ALL_WELL = 0, SOMETHING_WRONG = 1, UNREADABLE = 2 };

}  // namespace latbox::check
