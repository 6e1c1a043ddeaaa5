// Heapsort over positions 1 to n (J. W. J. Williams, "Algorithm 232: Heapsort", 1964), in place. The caller
// compares and exchanges by position, so that parallel arrays move together.
#pragma once

namespace latbox {

// Moves position `root` down in the heap 1..end; the greater child goes up, the left one of equal children.
template <class Less, class Swap>
void heapSift(long root, long end, Less& less, Swap& swap) {
  for (long child = 2 * root; child <= end; root = child, child = 2 * root) {
    if (child < end && less(child, child + 1)) ++child;
    if (!less(root, child)) return;
    swap(root, child);
  }
}

// Sorts positions 1..n ascending by `less(i, j)`; `swap(i, j)` exchanges two positions, i != j.
template <class Less, class Swap>
void heapsort(long n, Less less, Swap swap) {
  for (long root = n / 2; root >= 1; --root) heapSift(root, n, less, swap);
  for (long end = n; end >= 2; --end) {
    swap(1L, end);
    heapSift(1L, end - 1, less, swap);
  }
}

}  // namespace latbox
