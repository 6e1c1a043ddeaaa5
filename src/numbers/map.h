// Small tables of key and value: arrays of pairs in order of insertion, searched from the first entry on.
#pragma once

#include <string>
#include <type_traits>

#include "lib/array.h"
#include "numbers/pair.h"

namespace latbox {

template <class K, class V>
class Map : public ConversionArray<Pair<K, V>> {
 public:
  // Position of the first entry with this key, 0 if there is none.
  long position(const K& key) const {
    for (long i = 1; i <= this->MN; ++i)
      if (this->data[i].left == key) return i;
    return 0;
  }

  // Appends an entry without looking for its key.
  void add(const K& key, const V& value) { this->append(Pair<K, V>(key, value)); }
};

// A map with string keys whose values are pointers; not a hash table. A table that grows holds null pointers
// in its new entries, never stale ones.
template <class V>
class Hash : public Map<std::string, V> {
  static_assert(std::is_pointer_v<V>);

 public:
  void resize(long n, bool spare) override {
    const long before = this->MN;
    Map<std::string, V>::resize(n, spare);
    for (long i = before + 1; i <= n; ++i) this->data[i].right = nullptr;
  }

  // The value of `key`, null if it is unknown.
  V find(const std::string& key) const {
    const long i = this->position(key);
    return i == 0 ? nullptr : this->data[i].right;
  }
};

}  // namespace latbox
