// A variable that has another value for the length of a scope.
#pragma once

#include <utility>

namespace latbox {

// Sets the variable and puts its former value back, on an exception too.
template <class T>
class ScopeValue {
 public:
  ScopeValue(T& variable, T value)
      : variable_(variable), before_(std::exchange(variable, std::move(value))) {}
  ~ScopeValue() { variable_ = std::move(before_); }
  ScopeValue(const ScopeValue&) = delete;
  ScopeValue& operator=(const ScopeValue&) = delete;

 private:
  T& variable_;
  T before_;
};

}  // namespace latbox
