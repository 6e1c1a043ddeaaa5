// Doubly linked sets with a bound. Nodes are owned by the set; popFront hands one over.
#pragma once

#include <memory>
#include <utility>

#include "lib/failure.h"

namespace latbox {

template <class T>
class Set {
 public:
  struct Node {
    T value;
    Node* prev = nullptr;
    Node* next = nullptr;
    explicit Node(const T& v) : value(v) {}
  };

  Node* head = nullptr;
  Node* tail = nullptr;
  long limit = 0;  // greatest allowed element count; 0 means no limit
  long count = 0;

  Set() = default;
  Set(const Set& other) { copyFrom(other); }
  Set(Set&& other) noexcept { exchangeWith(other); }
  Set& operator=(const Set& other) {
    if (this != &other) assign(other);
    return *this;
  }
  Set& operator=(Set&& other) noexcept {
    exchangeWith(other);
    return *this;
  }
  virtual ~Set() { clear(); }

  // Appends a copy at the tail; false when the set is full or holds an equal element.
  virtual bool insert(const T& element) {
    if (limit != 0 && count == limit) return false;
    for (const Node* node = head; node != nullptr; node = node->next)
      if (node->value == element) return false;
    append(element);
    return true;
  }

  // Unlinks the head, which the caller then owns; null on an empty set. The only way in which elements leave.
  std::unique_ptr<Node> popFront() {
    if (head == nullptr) return nullptr;
    std::unique_ptr<Node> node(head);
    head = node->next;
    (head == nullptr ? tail : head->prev) = nullptr;
    node->next = nullptr;
    --count;
    return node;
  }

  void clear() {
    while (popFront() != nullptr) {
    }
  }

  // Appends a copy at the tail with no comparison and no look at the limit.
  void append(const T& element) {
    Node* node = new Node(element);
    node->prev = tail;
    (tail == nullptr ? head : tail->next) = node;
    tail = node;
    ++count;
  }

 protected:
  void copyFrom(const Set& other) {
    limit = other.limit;
    // A copy that throws half-way must not leak what it has copied: no destructor runs for us then.
    try {
      for (const Node* node = other.head; node != nullptr; node = node->next) append(node->value);
    } catch (...) {
      clear();
      throw;
    }
  }
  // From head to tail with no comparison, into the nodes that are there: the collections are copied before
  // each step, and their vectors keep their storage.
  void assign(const Set& other) {
    limit = other.limit;
    while (count > other.count) popFront();
    const Node* from = other.head;
    for (Node* node = head; node != nullptr; node = node->next, from = from->next) node->value = from->value;
    for (; from != nullptr; from = from->next) append(from->value);
  }
  void exchangeWith(Set& other) noexcept {
    std::swap(head, other.head);
    std::swap(tail, other.tail);
    std::swap(limit, other.limit);
    std::swap(count, other.count);
  }

  // Links `node` directly in front of `place`.
  void linkBefore(Node* node, Node* place) {
    if (place->prev == nullptr && place != head) fail("Set: before_element is not in the given set!");
    node->prev = place->prev;
    node->next = place;
    (place->prev == nullptr ? head : place->prev->next) = node;
    place->prev = node;
    ++count;
  }
};

// Worst element at the head, best at the tail. T needs `==` (tolerant) and `bool better(const T& other)
// const`.
template <class T>
class SortedSet : public Set<T> {
 public:
  using typename Set<T>::Node;

  // Inserts in front of the first element that is better; a full set then drops its worst. False when an
  // equal element is met on the way, or when the dropped element is the new one. An equal element behind a
  // better one is not looked for: equal vectors have equal measures, so they stand side by side.
  bool insert(const T& element) override {
    Node* better = this->head;
    for (; better != nullptr; better = better->next) {
      if (better->value == element) return false;
      if (better->value.better(element)) break;
    }
    Node* node = link(element, better);
    // The first element stays, whatever the limit says.
    if (this->limit == 0 || this->count <= this->limit || this->count == 1) return true;
    return this->popFront().get() != node;
  }

 private:
  Node* link(const T& element, Node* better) {
    if (better == nullptr) {
      this->append(element);
      return this->tail;
    }
    auto node = std::make_unique<Node>(element);
    this->linkBefore(node.get(), better);
    return node.release();
  }
};

}  // namespace latbox
