// What `korvex batch` shows: the progress bar on a terminal while rows run,
// and the summary at the end, as text or as one JSON line.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

#include "korvex/batch.hpp"

namespace korvex::cli {

/// The summary as one JSON object on one line (no trailing newline).
std::string summaryJson(const BatchSummary& summary);

/// The summary for people: a totals line, then one line per failed row.
std::string summaryText(const BatchSummary& summary);

/// Rows done, rows per second and the time left, redrawn in place on one
/// line at most ten times a second. Shows nothing when not enabled.
class ProgressBar {
 public:
  ProgressBar(std::ostream& out, bool enabled);
  void update(std::size_t done, std::size_t total);
  /// Clears the bar's line.
  void finish();

 private:
  std::ostream& out_;
  bool enabled_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point started_;
  std::chrono::steady_clock::time_point lastDrawn_;
};

}  // namespace korvex::cli
