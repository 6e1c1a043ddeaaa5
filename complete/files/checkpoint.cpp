#include "complete/files/checkpoint.h"

#include <fstream>
#include <sstream>

#include "complete/files/words.h"
#include "complete/files/write_failure.h"

namespace latbox::complete {
namespace {

constexpr const char* HEAD = "latbox-all checkpoint 2";

void write(std::ostream& out, const std::optional<IntegerVector>& point) {
  if (!point) {
    out << " -\n";
    return;
  }
  out << ' ' << point->size();
  for (const Integer& value : *point) out << ' ' << value;
  out << '\n';
}

std::ostream& operator<<(std::ostream& out, const FileState& file) {
  return out << file.count << ' ' << file.bytes << ' ' << file.digest.text();
}

void write(std::ostream& out, const OpenSearch& open) {
  out << "open " << open.key << ' ' << open.lattice << ' ' << open.begin << ' ' << open.frontier.share
      << '\n';
  for (const IntegerVector& row : open.basis) {
    out << "row";
    for (const Integer& value : row) out << ' ' << value;
    out << '\n';
  }
  for (const Piece& piece : open.frontier.pieces) {
    out << "piece " << piece.size();
    for (const Choice& choice : piece)
      out << ' ' << choice.chosen << ' ' << choice.up << ' ' << choice.down << ' ' << choice.closedUp << ' '
          << choice.closedDown;
    out << '\n';
  }
}

std::optional<IntegerVector> pointOf(Words& words) {
  const auto word = words.next<std::string>();
  if (word == "-") return std::nullopt;
  const IntegerVector values = words.all<Integer>();
  if (std::to_string(values.size()) != word) throw BadCheckpoint("a point of another number of variables");
  return values;
}

SearchEnd endOf(const std::string& word) {
  if (word == "empty") return SearchEnd::EMPTY;
  if (word == "complete") return SearchEnd::COMPLETE;
  if (word == "stopped") return SearchEnd::STOPPED;
  throw BadCheckpoint("a search that ends as '" + word + "'");
}

const char* wordOf(SearchEnd end) {
  if (end == SearchEnd::EMPTY) return "empty";
  return end == SearchEnd::COMPLETE ? "complete" : "stopped";
}

Piece pieceOf(Words& words) {
  const auto size = words.next<std::size_t>();
  Piece piece;
  while (!words.isAtEnd()) {
    Choice& choice = piece.emplace_back();
    choice.chosen = words.next<Integer>();
    choice.up = words.next<Integer>();
    choice.down = words.next<Integer>();
    choice.closedUp = words.next<bool>();
    choice.closedDown = words.next<bool>();
  }
  if (piece.size() != size) throw BadCheckpoint("a piece of another number of levels");
  return piece;
}

FileState fileStateOf(Words& words) {
  FileState file;
  file.count = words.next<unsigned long>();
  file.bytes = words.next<unsigned long>();
  const auto digest = Digest::parse(words.next<std::string>());
  if (!digest) throw BadCheckpoint("a digest that is none");
  file.digest = *digest;
  return file;
}

OpenSearch openOf(Words& words) {
  OpenSearch open;
  open.key = words.next<std::string>();
  open.lattice = words.next<std::string>();
  open.begin = fileStateOf(words);
  open.frontier.share = words.next<double>();
  return open;
}

void takeLine(const std::string& line, Checkpoint& checkpoint) {
  Words words(line);
  const auto name = words.next<std::string>();
  if (name == "identity") {
    checkpoint.identity = words.next<std::string>();
  } else if (name == "time") {
    checkpoint.seconds = words.next<double>();
    checkpoint.nodes = words.next<unsigned long>();
  } else if (name == "points") {
    checkpoint.file = fileStateOf(words);
  } else if (name == "search") {
    SearchRecord record;
    record.key = words.next<std::string>();
    record.end = endOf(words.next<std::string>());
    record.point = pointOf(words);
    checkpoint.searches.push_back(std::move(record));
  } else if (name == "open") {
    checkpoint.open = openOf(words);
  } else if (name == "row" && checkpoint.open) {
    checkpoint.open->basis.push_back(words.all<Integer>());
  } else if (name == "piece" && checkpoint.open) {
    checkpoint.open->frontier.pieces.push_back(pieceOf(words));
  } else if (name == "verdict") {
    checkpoint.status = words.next<int>();
    checkpoint.verdict = words.rest();
  } else {
    throw BadCheckpoint("a line that begins with '" + name + "'");
  }
  if (!words.isAtEnd()) throw BadCheckpoint("more than belongs to '" + name + "'");
}

}  // namespace

std::string textOf(const Checkpoint& checkpoint) {
  std::ostringstream out;
  out.precision(17);
  out << HEAD << '\n' << "identity " << checkpoint.identity << '\n';
  out << "time " << checkpoint.seconds << ' ' << checkpoint.nodes << '\n';
  out << "points " << checkpoint.file << '\n';
  for (const SearchRecord& record : checkpoint.searches) {
    out << "search " << record.key << ' ' << wordOf(record.end);
    write(out, record.point);
  }
  if (checkpoint.open) write(out, *checkpoint.open);
  if (!checkpoint.verdict.empty())
    out << "verdict " << checkpoint.status << ' ' << checkpoint.verdict << '\n';
  return sealed(out.str());
}

Checkpoint parseCheckpoint(std::string_view text) {
  const auto body = unsealed(text);
  if (!body) throw BadCheckpoint("its last line is missing, or its digest is another one");
  std::istringstream lines{std::string(*body)};
  std::string line;
  if (!std::getline(lines, line) || line != HEAD) throw BadCheckpoint("its first line is another one");
  Checkpoint checkpoint;
  try {
    while (std::getline(lines, line)) takeLine(line, checkpoint);
  } catch (const BadWords& e) {
    throw BadCheckpoint(e.what());
  }
  return checkpoint;
}

void writeCheckpoint(const std::string& path, const Checkpoint& checkpoint, bool surely) {
  replaceFile(path, textOf(checkpoint), surely);
}

std::optional<Checkpoint> readCheckpoint(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) return std::nullopt;
  std::ostringstream text;
  text << file.rdbuf();
  try {
    return parseCheckpoint(text.str());
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace latbox::complete
