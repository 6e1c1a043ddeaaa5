#include "complete/program/window.h"

namespace latbox::complete {

void Window::raise(const Integer& least) {
  if (!least_ || *least_ < least) least_ = least;
}

Integer Window::limit() const {
  const Integer open = least_ ? Integer(*best_ - *least_) : Integer(0);
  return *best_ - (open > static_cast<long>(PARTS) ? Integer(open / PARTS) : Integer(1));
}

}  // namespace latbox::complete
