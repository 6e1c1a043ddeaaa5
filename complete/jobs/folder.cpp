#include "complete/jobs/folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/files/write_failure.h"
#include "complete/jobs/cover.h"
#include "complete/program/opt_reader.h"
#include "complete/run/run.h"

namespace latbox::complete::jobs {
namespace {

// A text of the folder, whose digest the manifest knows.
std::string partOf(const std::string& path, const std::string& digest) {
  std::string text;
  try {
    text = readFile(path);
  } catch (const BadInput& e) {
    throw BadFolder(e.what());
  }
  if (digestOf(text) != digest) throw BadFolder(path + ": is not the one that the manifest was written for");
  return text;
}

Manifest manifestIn(const std::string& path) {
  if (!std::filesystem::exists(path)) throw BadInput(path + ": there is no such folder of pieces");
  try {
    return parseManifest(readFile(path));
  } catch (const BadWords& e) {
    throw BadFolder(path + ": " + e.what());
  }
}

}  // namespace

std::string pathIn(const std::string& folder, const std::string& name) {
  return (std::filesystem::path(folder) / name).string();
}

bool isPart(const std::string& folder, const std::string& path) {
  static const std::set<std::string> names = {"program.opt", "lattice", "manifest", "proof", "best"};
  static const std::set<std::string> kinds = {".result", ".checkpoint", ".points", ".start", ".lock"};
  std::error_code error;
  const auto whole = std::filesystem::weakly_canonical(std::filesystem::absolute(path), error);
  return whole.parent_path() == std::filesystem::weakly_canonical(std::filesystem::absolute(folder), error) &&
         (names.contains(whole.filename()) || kinds.contains(whole.extension()));
}

Folder::Folder(std::string path)
    : path_(std::move(path)),
      manifest_(manifestIn(pathOf("manifest"))),
      program_(readProgram(partOf(pathOf("program.opt"), manifest_.head().program), pathOf("program.opt"))) {}

std::string Folder::pathOf(const std::string& name) const {
  return pathIn(path_, name);
}

std::string Folder::pathOf(const Entry& entry, const std::string& kind) const {
  return pathOf(std::to_string(entry.number) + kind);
}

const Entry& Folder::entry(unsigned long number) const {
  const Entry* entry = manifest_.find(number);
  if (!entry)
    throw BadInput("--job=" + std::to_string(number) + ": " + pathOf("manifest") + " has no such piece");
  return *entry;
}

PieceLattice Folder::lattice() const {
  const std::string path = pathOf("lattice");
  try {
    PieceLattice lattice = parseLattice(partOf(path, manifest_.head().lattice));
    if (lattice.box.rank() != manifest_.head().rank) throw BadWords("its rank is not that of the manifest");
    if (lattice.box.fixed.size() != program_.variables())
      throw BadWords("it is one of another number of variables");
    return lattice;
  } catch (const BadWords& e) {
    throw BadFolder(path + ": " + e.what());
  }
}

std::string Folder::proofText() const {
  return partOf(pathOf("proof"), manifest_.head().proof);
}

Result Folder::resultIn(const std::string& path, const Entry& entry) const {
  Result result;
  try {
    result = parseResult(readFile(path));
    if (result.bound) parseRational(*result.bound);
  } catch (const BadInput& e) {
    throw BadWords(e.what());
  } catch (const BadWords& e) {
    throw BadWords(path + ": " + e.what());
  } catch (const BadNumber& e) {
    throw BadWords(path + ": its bound " + e.what());
  }
  if (result.number != entry.number || result.entry != entry.digest)
    throw BadWords(path + ": is no result of piece " + std::to_string(entry.number) + " of this manifest");
  if (depthOf(result.open) > manifest_.head().rank) throw BadWords(path + ": goes deeper than the lattice");
  return result;
}

bool Folder::hasResult(const Entry& entry) const {
  return std::filesystem::is_regular_file(resultPath(entry.number));
}

void Folder::append(std::vector<Entry> entries) {
  for (Entry& entry : entries) manifest_.append(std::move(entry));
  replaceFile(pathOf("manifest"), textOf(manifest_), true);
}

FolderLock::FolderLock(const std::string& path)
    : file_(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (file_ < 0) throw BadInput("--jobs=" + path + ": " + std::strerror(errno));
  while (::flock(file_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

FolderLock::~FolderLock() {
  ::close(file_);
}

}  // namespace latbox::complete::jobs
