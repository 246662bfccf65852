#include "batch_report.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

#include "json.hpp"
#include "output.hpp"

namespace korvex::cli {

namespace {

constexpr std::size_t kBarWidth = 30;

double rowsPerSecond(std::size_t rows, double seconds) {
  return seconds > 0 ? std::round(static_cast<double>(rows) / seconds) : 0;
}

std::string fixed(double x, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, x);
  return buffer;
}

std::string duration(double seconds) {
  const auto s = static_cast<long long>(std::ceil(seconds));
  char buffer[64];
  if (s >= 3600) {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld:%02lld", s / 3600, s / 60 % 60, s % 60);
  } else {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld", s / 60, s % 60);
  }
  return buffer;
}

}  // namespace

std::string summaryJson(const BatchSummary& s) {
  auto count = [](std::size_t n) { return std::to_string(n); };
  auto flag = [](bool b) { return std::string(b ? "true" : "false"); };
  std::string out =
      "{\"rows\": " + count(s.rows) + ", \"done\": " + count(s.done) +
      ", \"succeeded\": " + count(s.done - s.failed) + ", \"failed\": " + count(s.failed) +
      ", \"changedRows\": " + count(s.changedRows) +
      ", \"changedFields\": " + count(s.changedFields) + ", \"dryRun\": " + flag(s.dryRun) +
      ", \"committed\": " + flag(s.committed) + ", \"interrupted\": " + flag(s.interrupted) +
      ", \"error\": " + jsonString(s.error) +
      ", \"seconds\": " + jsonNumber(std::round(s.seconds * 1000) / 1000) +
      ", \"rowsPerSecond\": " + jsonNumber(rowsPerSecond(s.done, s.seconds));
  if (s.sharedRows) out += ", \"sharedRows\": " + count(*s.sharedRows);
  if (s.statements) {
    out += ", \"statements\": " + std::to_string(s.statements->sent) +
           ", \"reused\": " + std::to_string(s.statements->reused);
  }
  out += ", \"failures\": [";
  for (std::size_t i = 0; i < s.failures.size(); ++i) {
    const RowFailure& f = s.failures[i];
    if (i > 0) out += ", ";
    out += "{\"row\": " + count(f.row) + ", \"key\": " + jsonString(f.key) +
           ", \"errNum\": " + std::to_string(f.errNum) +
           (f.file.empty() ? "" : ", \"file\": " + jsonString(fromUtf8(f.file))) +
           ", \"line\": " + std::to_string(f.line) + ", \"message\": " + jsonString(f.message) +
           "}";
  }
  out += "]";
  if (s.dryRun) {
    out += ", \"computed\": [";
    for (std::size_t i = 0; i < s.computed.size(); ++i) {
      const RowFields& r = s.computed[i];
      out += std::string(i > 0 ? ", " : "") + "{\"row\": " + count(r.row) +
             ", \"key\": " + jsonString(r.key) + ", \"fields\": {";
      for (std::size_t j = 0; j < r.fields.size(); ++j) {
        out += std::string(j > 0 ? ", " : "") + jsonString(r.fields[j].first) + ": " +
               valueJson(r.fields[j].second);
      }
      out += "}}";
    }
    out += "]";
  }
  return out + "}";
}

namespace {

// Rows that failed alike (same line, error and message), in the order of
// their first row: a mistake in the formula fails every row the same way.
struct FailureGroup {
  const RowFailure* first;
  std::vector<const RowFailure*> rows;
};

std::vector<FailureGroup> grouped(const std::vector<RowFailure>& failures) {
  std::vector<FailureGroup> groups;
  for (const RowFailure& f : failures) {
    const auto same = std::find_if(groups.begin(), groups.end(), [&f](const FailureGroup& g) {
      return g.first->line == f.line && g.first->file == f.file && g.first->errNum == f.errNum &&
             g.first->message == f.message;
    });
    if (same != groups.end()) {
      same->rows.push_back(&f);
    } else {
      groups.push_back({&f, {&f}});
    }
  }
  return groups;
}

constexpr std::size_t kRowsNamed = 5;

}  // namespace

std::string summaryText(const BatchSummary& s) {
  // The failures first, each kind once, so that the summary ends the output.
  std::string out;
  if (!s.failures.empty()) out += "失败的行:\n";
  for (const FailureGroup& g : grouped(s.failures)) {
    const RowFailure& f = *g.first;
    const std::string where =
        f.file.empty() ? "行号 " + std::to_string(f.line) : f.file + ":" + std::to_string(f.line);
    out += "  " + (f.line > 0 ? where : std::string("写回")) + ", 错误 " +
           std::to_string(f.errNum) + ": " + printable(f.message) + "\n    " +
           std::to_string(g.rows.size()) + " 行:";
    for (std::size_t i = 0; i < g.rows.size() && i < kRowsNamed; ++i) {
      out += std::string(i > 0 ? "," : "") + " 第 " + std::to_string(g.rows[i]->row) + " 行 [" +
             printable(g.rows[i]->key) + "]";
    }
    out += g.rows.size() > kRowsNamed ? " …\n" : "\n";
  }
  if (s.interrupted && s.sharedRows) {
    out += "批处理已中断: 本进程已提交 " + std::to_string(s.done) +
           " 行, 正在计算的一组已撤销, 留给其他进程或重新运行\n";
    return out;
  }
  if (s.interrupted) {
    out += "批处理已中断: 已运行 " + std::to_string(s.done) + "/" + std::to_string(s.rows) +
           " 行, 数据库未改动\n";
    return out;
  }
  out += std::string(s.dryRun ? "试运行完成: " : "批处理完成: ") + std::to_string(s.rows) +
         " 行, 成功 " + std::to_string(s.done - s.failed) + " 行, 失败 " +
         std::to_string(s.failed) + " 行; " + (s.dryRun ? "应改动 " : "改动 ") +
         std::to_string(s.changedRows) + " 行共 " + std::to_string(s.changedFields) + " 个字段 (" +
         fixed(s.seconds, 2) + " 秒, " + fixed(rowsPerSecond(s.done, s.seconds), 0) + " 行/秒)\n";
  if (s.sharedRows) {
    out += "与其他进程分担本月 " + std::to_string(*s.sharedRows) + " 行, 本进程完成其中 " +
           std::to_string(s.rows) + " 行\n";
  }
  if (s.statements) {
    out += "SQL 语句 " + std::to_string(s.statements->sent) + " 条, 其中 " +
           std::to_string(s.statements->reused) + " 条用已读的结果作答\n";
  }
  if (s.dryRun) out += "试运行: 没有写入数据库\n";
  if (!s.dryRun && !s.committed && s.sharedRows) {
    out += "提交失败: 本进程已提交的 " + std::to_string(s.done) +
           " 行保留, 未提交的一组已撤销, 留给其他进程或重新运行: " + printable(s.error) + "\n";
  } else if (!s.dryRun && !s.committed) {
    out += "提交失败, 数据库未改动: " + printable(s.error) + "\n";
  }
  return out;
}

ProgressBar::ProgressBar(std::ostream& out, bool enabled)
    : out_(out),
      enabled_(enabled),
      started_(std::chrono::steady_clock::now()),
      lastDrawn_(started_) {}

void ProgressBar::update(std::size_t done, std::size_t total) {
  if (!enabled_ || total == 0) return;
  const auto now = std::chrono::steady_clock::now();
  // The first rows say little about the speed: the bar waits a moment.
  if (done < total && now - lastDrawn_ < std::chrono::milliseconds(100)) return;
  lastDrawn_ = now;
  shown_ = true;
  const double elapsed = std::chrono::duration<double>(now - started_).count();
  const double rate = elapsed > 0 ? static_cast<double>(done) / elapsed : 0;
  const std::size_t filled = done * kBarWidth / total;
  std::string line = "\r[" + std::string(filled, '#') + std::string(kBarWidth - filled, '-') +
                     "] " + std::to_string(done) + "/" + std::to_string(total) + " 行  " +
                     fixed(rate, 0) + " 行/秒  剩余 ";
  line += rate > 0 ? duration(static_cast<double>(total - done) / rate) : std::string("?");
  out_ << line << "   " << std::flush;
}

void ProgressBar::finish() {
  if (!shown_) return;
  out_ << "\r\x1b[K" << std::flush;
  shown_ = false;
}

}  // namespace korvex::cli
