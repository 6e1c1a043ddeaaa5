// What the results in a folder say, each of them read once, by several threads.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "complete/jobs/folder.h"
#include "complete/tree/search.h"

namespace latbox::complete::jobs {

struct Report {
  // Without its lines; nothing: there is no file, or a damaged one.
  std::optional<Result> result;
  // Why there is none, though there is a file.
  std::string damage;
  // What a judge has against it; empty: nothing.
  std::string untruth;
};

// By the number of the piece.
using Reports = std::map<unsigned long, Report>;

// Of all pieces of the manifest. `judge` sees each result with its lines, and throws BadWords; several
// threads call it at once. Nothing: the control stopped it.
std::optional<Reports> readReports(const Folder& folder, const SearchControl& control,
                                   const std::function<void(const Entry&, const Result&)>& judge);

}  // namespace latbox::complete::jobs
