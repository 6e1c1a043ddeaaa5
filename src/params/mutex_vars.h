// The table of values that the threads of a run share.
#pragma once

#include <string>

#include "lib/os/mutex_type.h"
#include "numbers/map.h"

namespace latbox {

enum class MainMutexVariable : int {
  inputRequested = 0,  // path of the input without extension, as the operator asked for it
  inputLoaded = 1,     // the value of inputRequested whose files are loaded
  runState = 2,        // "waiting", "running" or "stopped"
  reserved3 = 3,
  reserved4 = 4,
  reportText = 5,  // last report of an iteration while the console serves another program
  reserved6 = 6,
  reserved7 = 7,
};

// No lock guards the table itself: its entries are all made at construction, and only a missing key lets it
// grow. So a copy goes value by value into the entries that are there, under the feet of readers.
template <class K>
class MutexVars : public Map<K, MutexType<std::string>> {
 public:
  MutexVars() {
    for (const int key : {0, 1, 3, 5, 6, 7}) (*this)[static_cast<K>(key)];
    (*this)[static_cast<K>(4)].set("0");
    (*this)[static_cast<K>(2)].set("waiting");
  }
  MutexVars(const MutexVars& other) : MutexVars() { *this = other; }
  MutexVars& operator=(const MutexVars& other) {
    if (this == &other) return *this;
    for (long i = 1; i <= other.MN; ++i) copyEntry(other.data[i].right, (*this)[other.data[i].left]);
    return *this;
  }

  // The entry of `key`; a key that is missing is added with the empty string.
  MutexType<std::string>& operator[](K key) {
    long i = this->position(key);
    if (i == 0) {
      this->add(key, MutexType<std::string>());
      i = this->MN;
    }
    return this->data[i].right;
  }

 private:
  // A value that another thread sets on both sides, on the source first, is not undone: if it was set after
  // the source had been read here, the source is read again.
  static void copyEntry(const MutexType<std::string>& source, MutexType<std::string>& target) {
    std::string value;
    do {
      value = source.get();
      target.set(value);
    } while (source.get() != value);
  }
};

using MainMutexVars = MutexVars<MainMutexVariable>;

}  // namespace latbox
