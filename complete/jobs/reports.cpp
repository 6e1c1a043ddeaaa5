#include "complete/jobs/reports.h"

#include "complete/files/words.h"
#include "complete/tree/parts.h"

namespace latbox::complete::jobs {
namespace {

void readInto(Report& report, const Folder& folder, const Entry& entry,
              const std::function<void(const Entry&, const Result&)>& judge) {
  if (!folder.hasResult(entry)) return;
  try {
    report.result = folder.resultIn(folder.resultPath(entry.number), entry);
  } catch (const BadWords& e) {
    report.damage = e.what();
    return;
  }
  try {
    judge(entry, *report.result);
  } catch (const BadWords& e) {
    report.untruth = e.what();
  }
  report.result->lines = std::string();
}

}  // namespace

std::optional<Reports> readReports(const Folder& folder, const SearchControl& control,
                                   const std::function<void(const Entry&, const Result&)>& judge) {
  const std::vector<Entry>& entries = folder.manifest().entries();
  Reports reports;
  for (const Entry& entry : entries) reports[entry.number];
  Parts parts;
  parts.end = entries.size();
  parts.make = [&](unsigned long i) {
    readInto(reports.at(entries[i].number), folder, entries[i], judge);
    return true;
  };
  parts.tell = [](unsigned long) {};
  if (!goThrough(parts, control)) return std::nullopt;
  return reports;
}

}  // namespace latbox::complete::jobs
