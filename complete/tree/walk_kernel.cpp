// The hot loop in double, for one kind of processor: the build compiles this file once for each, with WALK_ON
// as the name that the loop has there.
#include "complete/tree/walk_steps.h"

namespace latbox::complete {

WalkPause WALK_ON(WalkData<double, float>& data);

WalkPause WALK_ON(WalkData<double, float>& data) {
  return walkOn(data);
}

}  // namespace latbox::complete
