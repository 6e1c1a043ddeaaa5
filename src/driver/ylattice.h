// The pair of precisions in which a run exists.
#pragma once

#include <atomic>
#include <memory>

#include "driver/events.h"
#include "lattice/lattice.h"
#include "params/statistics.h"

namespace latbox {

// One object for the process, on the stack of main. Shared by all threads without a lock of its own.
template <class D>
class YLattice {
 public:
  Lattice<D, D> standard;        // live while extendedActive is false
  Lattice<D, D> standardBackup;  // copy of `standard` before each step in standard precision
  Lattice<QQ, D> extended;       // live while extendedActive is true; receives every .opt file
  std::atomic<bool> extendedActive{false};

  // What the run has put out; the three lattices share it.
  std::shared_ptr<RunOutput> output = std::make_shared<RunOutput>();

  YLattice() {
    standard.output = standardBackup.output = extended.output = output;
    standard.events = standardBackup.events = &runEvents<D>();
    extended.events = &runEvents<QQ>();
  }
  YLattice(const YLattice&) = delete;
  YLattice& operator=(const YLattice&) = delete;
  virtual ~YLattice() = default;

  // Calls f with the live lattice; f is generic over the number type and returns the same type for both.
  template <class Function>
  decltype(auto) live(Function&& f) {
    return extendedActive ? f(extended) : f(standard);
  }
  // Of the live side.
  long verb() {
    return live([](auto& lattice) { return lattice.verb(); });
  }
  Statistics& statistics() { return extendedActive ? statisticsExtended() : statisticsStandard(); }
};

}  // namespace latbox
