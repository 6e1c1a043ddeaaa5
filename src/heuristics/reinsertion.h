// The turn of the solutions that are re-inserted.
#pragma once

namespace latbox {

// The solution that was re-inserted last, 0 before the first. One for the process and number type: a change
// of precision neither resets nor shares it.
template <class T>
long& reinsertIndex();

}  // namespace latbox
