// The SQL texts of the wage-domain functions and the argument handling
// they share.
//
// The texts go to the host's payroll database exactly as its formulas have
// always sent them: blanks, quotes and even the few malformed variants are
// part of the contract, so every builder is a plain concatenation and the
// argument values are inserted unchanged (quotes inside are not doubled).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "functions/protocol.hpp"

namespace korvex::fn::wage {

/// A reporting period: a calendar month, or a range of days (both ends
/// included).
struct Period {
  bool byMonth = true;
  std::int16_t year = 0;
  std::int16_t month = 0;
  double start = 0;  // date serials of the range form
  double end = 0;
};

/// Reads the period from arguments `first` and `first`+1: both numeric is a
/// year and month, both dates a range. Returns 0, or the type error 4.
std::int32_t readPeriod(const fn::Call& call, std::size_t first, Period& period);
/// Argument i as text when it is a String, else the type error 4. An
/// argument beyond the count reads as "".
std::int32_t readText(const fn::Call& call, std::size_t i, std::u16string& text);

/// Runs the text on the host's connection and reads `field` of the first
/// row as a Double; 0 at EOF or for Null. A database failure ends the run.
double queryTotal(const fn::Call& call, std::u16string_view sql, std::u16string_view field);

/// A date serial written "mm/dd/yyyy".
std::u16string monthDayYear(double serial);
/// The reference's sample period, March 2025, as a script writes it (the
/// month, or the range of its days) and as the builders take it.
struct SamplePeriod {
  std::u16string_view arguments;
  Period period;
};
/// Both forms: the month first, then the range.
std::vector<SamplePeriod> samplePeriods();
/// One example per sample period: name(period arguments + rest) and the
/// text `build` makes for that period.
template <class Build>
std::vector<SqlExample> periodExamples(std::u16string_view name, std::u16string_view rest,
                                       Build build) {
  std::vector<SqlExample> out;
  for (const SamplePeriod& p : samplePeriods()) {
    out.push_back(
        {std::u16string(name) + u"(" + std::u16string(p.arguments) + std::u16string(rest) + u")",
         build(p.period)});
  }
  return out;
}

/// A whole number as decimal text.
std::u16string decimal(long long n);
/// "工资表" + year + "年" + two-digit month + "月".
std::u16string wageTableName(std::int16_t year, std::int16_t month);

// Job-data aggregates.
std::u16string departmentWageSql(bool average, std::u16string_view item, std::u16string_view table,
                                 std::u16string_view dept);
std::u16string pieceWageSql(const Period& p, std::u16string_view code);
std::u16string departmentPieceWageSql(const Period& p, std::u16string_view dept);
std::u16string processPieceWageSql(const Period& p, std::u16string_view product,
                                   std::u16string_view process, std::u16string_view code);
std::u16string outputValueSql(const Period& p, std::u16string_view product);

// Assessment and substitute shifts.
std::u16string assessmentSql(std::u16string_view item, double start, double end,
                             std::u16string_view code);
std::u16string substituteWageSql(double start, double end, std::u16string_view code);

// Properties.
std::u16string wageItemSql(std::int16_t year, std::int16_t month, std::u16string_view code,
                           std::u16string_view item);
std::u16string employeePropertySql(std::u16string_view code);
std::u16string employeeCountSql(std::u16string_view dept, bool countStopped, bool countLeft);
std::u16string productPropertySql(std::u16string_view product, bool byCode, std::int16_t year,
                                  std::int16_t month);
inline constexpr std::u16string_view kProductColumnsSql =
    u"SELECT * From WA_WorkClass Where (0 = 1)";

// Output at the last step of a product's process (the process index is
// empty for the whole product).
std::u16string turnoutSql(const Period& p, std::u16string_view product,
                          std::u16string_view process);

}  // namespace korvex::fn::wage
