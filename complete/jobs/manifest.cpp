#include "complete/jobs/manifest.h"

#include <algorithm>
#include <cstdio>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/cover.h"
#include "complete/jobs/prefix_text.h"
#include "complete/run/exit_status.h"

namespace latbox::complete::jobs {
namespace {

constexpr const char* FIRST = "latbox-all pieces 1";
constexpr const char* PROOF = "proof:";

// What is not known is written as a number, too.
std::string estimateOf(double nodes) {
  constexpr double MOST = 1e100;
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", nodes < MOST ? nodes : MOST);
  return text;
}

// Without the digest.
std::string bodyOf(const Entry& entry) {
  std::string text = "piece " + std::to_string(entry.number) + " " +
                     (entry.parent == 0 ? "-" : std::to_string(entry.parent)) +
                     (entry.source.empty() ? "" : "/" + entry.source) + " " + estimateOf(entry.nodes);
  if (entry.share)
    text += " " + (PROOF + std::to_string(entry.share->rest)) + "/" + std::to_string(entry.share->count);
  for (const Piece& piece : entry.pieces) text += " " + textOf(piece);
  return text;
}

void takeContent(const std::string& word, Entry& entry) {
  if (!word.starts_with(PROOF)) {
    entry.pieces.push_back(parsePiece(word));
    return;
  }
  std::string numbers = word.substr(std::string(PROOF).size());
  std::replace(numbers.begin(), numbers.end(), '/', ' ');
  Words words(numbers);
  entry.share = Share{words.next<unsigned long>(), words.next<unsigned long>()};
  if (!words.isAtEnd() || entry.share->rest >= entry.share->count) throw BadWords("a share that is none");
}

void takeParent(const std::string& word, Entry& entry) {
  if (word == "-") return;
  const std::size_t sign = word.find('/');
  entry.parent = Words(word.substr(0, sign)).next<unsigned long>();
  if (sign != std::string::npos) entry.source = word.substr(sign + 1);
}

Entry entryOf(const std::string& line, const std::string& head) {
  Words words(line);
  if (words.next<std::string>() != "piece") throw BadWords("a line that is no piece");
  Entry entry;
  entry.number = words.next<unsigned long>();
  takeParent(words.next<std::string>(), entry);
  entry.nodes = words.next<double>();
  std::vector<std::string> content = words.all<std::string>();
  if (content.size() < 2) throw BadWords("a piece without prefixes");
  entry.digest = content.back();
  if (digestOf(head + line.substr(0, line.rfind(' '))) != entry.digest)
    throw BadWords("piece " + std::to_string(entry.number) + " is not as it was written");
  content.pop_back();
  for (const std::string& word : content) takeContent(word, entry);
  return entry;
}

bool switchOf(Words& words, const std::string& name) {
  const auto word = words.next<std::string>();
  if (word != name + "=0" && word != name + "=1") throw BadWords("an option that is none");
  return word.ends_with('1');
}

}  // namespace

std::string Head::text() const {
  const auto option = [](const char* name, bool value) {
    return std::string(" ") + name + (value ? "=1" : "=0");
  };
  return std::string(FIRST) + "\nversion " + VERSION + "\noptions" + option("all", wanted.all) +
         option("ties", wanted.ties) + option("count", wanted.count) + option("proof", wanted.proof) +
         "\nprogram " + program + "\nlattice " + lattice + "\nproof " + proof + "\nrank " +
         std::to_string(rank) + "\n";
}

std::string Head::digest() const {
  return digestOf(text());
}

const Entry* Manifest::find(unsigned long number) const {
  const auto found = std::lower_bound(entries_.begin(), entries_.end(), number,
                                      [](const Entry& entry, unsigned long n) { return entry.number < n; });
  return found != entries_.end() && found->number == number ? &*found : nullptr;
}

std::vector<const Entry*> Manifest::childrenOf(unsigned long number, const std::string& source) const {
  std::vector<const Entry*> found;
  const auto all = children_.find(number);
  if (all == children_.end()) return found;
  for (const std::size_t place : all->second)
    if (entries_[place].source == source) found.push_back(&entries_[place]);
  return found;
}

void Manifest::append(Entry entry) {
  entry.number = entries_.empty() ? 1 : entries_.back().number + 1;
  entry.digest = digestOf(head_.digest() + bodyOf(entry));
  take(std::move(entry));
}

void Manifest::add(Entry entry) {
  if (!entries_.empty() && entries_.back().number >= entry.number)
    throw BadWords("its pieces are out of order");
  if (depthOf(entry.pieces) > head_.rank)
    throw BadWords("piece " + std::to_string(entry.number) + " goes deeper than the lattice");
  take(std::move(entry));
}

void Manifest::take(Entry entry) {
  children_[entry.parent].push_back(entries_.size());
  entries_.push_back(std::move(entry));
}

std::string textOf(const Manifest& manifest) {
  std::string text = manifest.head().text() + "head " + manifest.head().digest() + "\n";
  for (const Entry& entry : manifest.entries()) text += bodyOf(entry) + " " + entry.digest + "\n";
  return text;
}

Manifest parseManifest(std::string_view text) {
  if (text.empty() || text.back() != '\n') throw BadWords("its last line is torn");
  std::istringstream lines{std::string(text)};
  std::string line;
  std::string first;
  const auto next = [&](const char* name) {
    if (!std::getline(lines, line)) throw BadWords("its head is not all there");
    Words words(line);
    if (words.next<std::string>() != name) throw BadWords("its head is another one");
    return words.rest();
  };
  std::getline(lines, first);
  if (first != FIRST) throw BadWords("its first line is another one");
  if (next("version") != VERSION) throw BadWords("it was made by another version of latbox-all");
  Words options(next("options"));
  Head head;
  head.wanted.all = switchOf(options, "all");
  head.wanted.ties = switchOf(options, "ties");
  head.wanted.count = switchOf(options, "count");
  head.wanted.proof = switchOf(options, "proof");
  head.program = next("program");
  head.lattice = next("lattice");
  head.proof = next("proof");
  head.rank = Words(next("rank")).next<unsigned long>();
  const std::string digest = head.digest();
  if (next("head") != digest) throw BadWords("its head is not as it was written");
  Manifest manifest(std::move(head));
  while (std::getline(lines, line)) manifest.add(entryOf(line, digest));
  return manifest;
}

}  // namespace latbox::complete::jobs
