// Index-friendly forms of two filters the payroll texts use on every query:
// a function around a column keeps SQLite from using the column's indexes,
// so that each such query reads the whole table.
//
//   YEAR(d) = 2025 AND MONTH(d) = 3  ->  (d >= '2025-03-01' AND d < '2025-04-01')
//   YEAR(d) = 2025                   ->  (d >= '2025-01-01' AND d < '2026-01-01')
//   rtrim(c) = 'X'                   ->  (c = 'X' AND rtrim(c) = 'X')
//
// Each form gives the same rows only for some stored values (dates as ISO
// text; codes without trailing blanks): the caller says for which columns
// that holds. The text of the statement is rewritten on its tokens, never
// inside a literal, a quoted name or a comment.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::ds {

enum class ColumnKind {
  IsoDates,          // every value that is not Null is text "YYYY-MM-DD[ HH:MM:SS]", a valid date
  NoTrailingBlanks,  // every value that is not Null is text that does not end in a blank
};

/// Whether a column of a table (both as the statement names them, without
/// quotes) holds only values of the kind; false when it is no column of
/// that table.
using ColumnTest =
    std::function<bool(std::string_view table, std::string_view column, ColumnKind kind)>;

/// The statement (one, UTF-8) with every filter of the forms above that
/// `holds` allows rewritten; nullopt when nothing is. A filter is rewritten
/// only in the WHERE of a SELECT or DELETE that reads one table (FROM t, FROM
/// t AS a), whose column it names, and where the filter is a whole operand
/// of AND or OR (EXPLAIN of such a statement too). A statement with WITH is
/// left alone (its names may be another table's).
std::optional<std::string> rewriteFilters(std::string_view statement, const ColumnTest& holds);

}  // namespace korvex::ds
