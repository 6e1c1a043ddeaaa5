// One option: key, help text, default, and its value in two forms.
//
// The text is guarded, so that the console can replace it while the solver prints it. The typed value is what
// the solver reads, without a lock: plain types through std::atomic_ref, relaxed; exact numbers and long
// doubles, which no machine stores at once, as an immutable object behind an atomic pointer. The text is
// master when text comes in (setText); the typed value is master when the program itself sets one (set).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "lib/array.h"
#include "lib/constants.h"
#include "lib/os/mutex_type.h"
#include "lib/serializable.h"
#include "numbers/map.h"
#include "numbers/qq.h"

namespace latbox {

class ParamInfo : public Serializable {
 public:
  std::string key;          // without dashes; empty for an unregistered parameter
  std::string help;         // help text
  std::string defaultText;  // what the usage shows
  MutexType<std::string> value;

  // "--", key, "=", value; nothing while the value is empty.
  void write(std::ostream& out) const override;
  // One token "--key=value": replaces the key, stores the value and parses it. Fails with "Malformed
  // parameter: " and the token if it has no "=".
  void read(std::istream& in) override;

  virtual bool isBool() const { return false; }
  // Takes the typed value from the text: "inf", "-inf", or what the stream's extractor for the type makes of
  // it; 0 or false from text that does not parse. An exact number fails where its parser does.
  virtual void parse() {}

  // What command line and files do: stores the text, then parses it. No listener hears of it.
  void setText(const std::string& text);
  // What the console does, which never ends a run: the same, but a number that the parser refuses gives 0.
  void setTextOrZero(const std::string& text);

 protected:
  // Whether parse would end by the failure path on this text, and the typed value that stands in then.
  virtual bool refuses(const std::string&) const { return false; }
  virtual void clearTyped() {}
};

// How typed values are held. A plain value: no lock, and no torn read.
template <class T>
class PlainCell {
 public:
  using Value = T;
  T load() const { return std::atomic_ref<T>(typed_).load(std::memory_order_relaxed); }
  void store(T v) { std::atomic_ref<T>(typed_).store(v, std::memory_order_relaxed); }

 private:
  mutable T typed_{};
};

// A published value stays alive until the cell dies, for a reader may still look at it; a run changes a
// handful.
template <class T>
class PublishedCell {
 public:
  using Value = T;
  PublishedCell() { store(T()); }
  PublishedCell(const PublishedCell&) = delete;
  PublishedCell& operator=(const PublishedCell&) = delete;
  const T& load() const { return *current_.load(std::memory_order_acquire); }
  void store(const T& v) {
    const SemaphoreLock guard(writers_);
    if (!published_.empty() && *published_.back() == v) return;
    published_.push_back(std::make_unique<const T>(v));
    current_.store(published_.back().get(), std::memory_order_release);
  }

 private:
  Semaphore writers_;  // the console and a copy of the lattice may meet
  std::vector<std::unique_ptr<const T>> published_;
  std::atomic<const T*> current_{nullptr};
};

// A value that a third thread reads: behind its own lock.
class LockedCell {
 public:
  using Value = long;
  long load() const { return typed_.get(); }
  void store(long v) { typed_.set(v); }

 private:
  MutexType<long> typed_;
};

template <class T>
struct CellOf {
  using Type = PlainCell<T>;
};
template <>
struct CellOf<dbl_t> {
  using Type = PublishedCell<dbl_t>;
};
template <>
struct CellOf<QQ> {
  using Type = PublishedCell<QQ>;
};
template <>
struct CellOf<MutexType<long>> {
  using Type = LockedCell;
};

// Instantiated for bool, long, float, dbl_t, QQ and MutexType<long>.
template <class T>
class Param : public ParamInfo {
 public:
  using Value = typename CellOf<T>::Type::Value;
  using Listener = std::function<void(const std::string&)>;

  Value defaultValue{};

  Param();  // with the empty listener
  // All but the listener: a copy has the empty one, an assignment leaves the target's own. The typed value
  // crosses as it is, its text is copied and not parsed again.
  Param(const Param& other);
  Param& operator=(const Param& other);

  // Sets help, key and default, appends the key to `keys` and the parameter to `hash`, installs the empty
  // listener.
  void init(const std::string& name, const std::string& helpText, const Value& defaultTo,
            Array<std::string>& keys, Hash<ParamInfo*>& hash);

  // The typed value, for any thread.
  Value get() const { return typed_.load(); }

  // The program's own path: stores the text of `v`, parses it, calls the listener with the text. Throws
  // std::bad_function_call if an empty function has been installed.
  void set(const Value& v);
  // The typed value and the text as they come, as on the way from one number type to the other.
  void assign(const Value& v, const std::string& text);

  void parse() override;
  bool isBool() const override;
  virtual void setListener(Listener listener) { listener_ = std::move(listener); }

 protected:
  bool refuses(const std::string& text) const override;
  void clearTyped() override { typed_.store(Value{}); }

 private:
  typename CellOf<T>::Type typed_;
  Listener listener_;
};

// A parameter whose typed value is guarded.
template <class T>
class MutexParam : public Param<MutexType<T>> {};

}  // namespace latbox
