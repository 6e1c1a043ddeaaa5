#include "driver/signals.h"

#include <array>
#include <atomic>
#include <csignal>
#include <functional>

#include "driver/report.h"
#include "driver/run_state.h"
#include "lib/immortal.h"
#include "lib/os/clock.h"
#include "lib/os/file.h"
#include "lib/os/output.h"
#include "lib/os/process.h"
#include "lib/os/signals.h"
#include "lib/time_text.h"
#include "program/unsaved.h"

namespace latbox {
namespace {

constexpr int SIGNAL_NUMBERS = 65;

// A plain handler can't carry the lattices, so it finds its function by the signal's number; one table per
// signal.
template <int SIGNAL>
std::array<std::function<void(int)>, SIGNAL_NUMBERS>& handlerTable() {
  static Immortal<std::array<std::function<void(int)>, SIGNAL_NUMBERS>> table;
  return *table;
}

template <int SIGNAL>
void dispatch(int signal) {
  const auto& handler = handlerTable<SIGNAL>()[static_cast<std::size_t>(signal)];
  if (handler) handler(signal);
}

template <int SIGNAL>
void (*install(YLattice<dbl_t>& y))(int) {
  handlerTable<SIGNAL>()[SIGNAL] = [&y](int signal) { signalReport(y, signal); };
  return std::signal(SIGNAL, &dispatch<SIGNAL>);
}

std::atomic_flag reported = ATOMIC_FLAG_INIT;

// Looked up before a signal can arrive.
struct SignalNames {
  const char* interrupt = "Interrupt";
  const char* terminate = "Terminated";
};
constinit SignalNames signalNames;
constinit std::atomic<long> processStart{0};

void prepareReport() {
  signalNames.interrupt = keptSignalName(SIGINT);
  signalNames.terminate = keptSignalName(SIGTERM);
  processStart = statisticsStandard().startTime.get();
}

iovec piece(const char* text, std::size_t size) {
  return {const_cast<char*>(text), size};
}

void writeReport(int signal, bool saved, long long iterations) {
  FixedText head, results, tail;
  head << "\nGot signal: " << (signal == SIGINT ? signalNames.interrupt : signalNames.terminate)
       << "\n\n************************** Terminated **************************\n";
  const PublishedSummary& summary = publishedSummary();
  const bool named = saved && !summary.text.empty() && canBeOpened(summary.solFile);
  if (named) results << "\nThe following file contains the results: \n\n\t";
  tail << (named ? "\n\n" : "\n") << "Total iterations: " << iterations << "\nTotal running time: ";
  timeText(tail, static_cast<long long>(now() - processStart.load()));
  tail << " -- Program end\n";
  iovec pieces[] = {piece(head.data(), head.size()), piece(summary.text.data(), summary.text.size()),
                    piece(results.data(), results.size()),
                    piece(summary.solFile.data(), named ? summary.solFile.size() : 0),
                    piece(tail.data(), tail.size())};
  writeOutputPieces(pieces, static_cast<int>(std::size(pieces)));
}

}  // namespace

void signalReport(YLattice<dbl_t>& y, int signal) {
  if (reported.test_and_set()) return;
  setRunState(y, RUN_STOPPED);
  closeSignalHolds();
  const bool saved = rescueUnsaved();
  // The report must be the last that is printed: a solver that waits in the middle of a write, since nobody
  // reads the pipe, would go on behind it.
  closeOutput();
  writeReport(signal, saved, y.statistics().iterations);
  endProcess(0);
}

SignalHandlers::SignalHandlers(YLattice<dbl_t>& y) {
  prepareReport();
  previousInt_ = install<SIGINT>(y);
  previousTerm_ = install<SIGTERM>(y);
}

SignalHandlers::~SignalHandlers() {
  std::signal(SIGTERM, previousTerm_);
  std::signal(SIGINT, previousInt_);
}

}  // namespace latbox
