// One option: key, help text, default, and its value in two forms.
//
// The text is guarded, so that the console can replace it while the solver prints it. The typed value is what
// the solver reads, without a lock: plain types through std::atomic_ref, relaxed; exact numbers and long doubles,
// which no machine stores at once, as an immutable object behind an atomic pointer. The text is master when text
// comes in (setText); the typed value is master when the program itself sets one (set).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "lib/array.h"
#include "lib/map.h"
#include "lib/os/mutex_type.h"
#include "lib/serializable.h"

namespace latbox {

class ParamInfo : public Serializable {
 public:
  std::string key;          // without dashes; empty for an unregistered parameter
  std::string help;
  std::string defaultText;  // what the usage shows
  MutexType<std::string> value;

  // "--", key, "=", value; nothing while the value is empty.
  void write(std::ostream& out) const override;
  // One token "--key=value": replaces the key, stores the value and parses it. Fails with
  // "Malformed parameter: " and the token if it has no "=".
  void read(std::istream& in) override;

  virtual bool isBool() const { return false; }
  // Takes the typed value from the text.
  virtual void parse() {}
  // What command line and console do: stores the text, then parses it. No listener hears of it.
  void setText(const std::string& text) {
    value.set(text);
    parse();
  }
  // Typed value and text of another parameter of the same class, without parsing; the listener stays.
  virtual void assignFrom(const ParamInfo& other) { value.set(other.value.get()); }
};

// How a typed value is held and read from other threads; see param.cpp.
template <class T>
class PlainCell {
 public:
  T load() const { return std::atomic_ref<T>(typed).load(std::memory_order_relaxed); }
  void store(T v) { std::atomic_ref<T>(typed).store(v, std::memory_order_relaxed); }

 private:
  alignas(std::atomic_ref<T>::required_alignment) mutable T typed{};
};

// Values that were published stay alive until the cell dies, for a reader may still look at them; the console
// changes a handful in a run.
template <class T>
class PublishedCell {
 public:
  PublishedCell() { store(T()); }
  PublishedCell(const PublishedCell& other) { store(other.load()); }
  PublishedCell& operator=(const PublishedCell& other) {
    if (this != &other) store(other.load());
    return *this;
  }
  T load() const { return *current_.load(std::memory_order_acquire); }
  void store(const T& v) {
    if (!published_.empty() && same(*published_.back(), v)) return;
    published_.push_back(std::make_unique<const T>(v));
    current_.store(published_.back().get(), std::memory_order_release);
  }

 private:
  static bool same(const T& a, const T& b) { return a == b; }
  std::vector<std::unique_ptr<const T>> published_;
  std::atomic<const T*> current_{nullptr};
};

}  // namespace latbox
