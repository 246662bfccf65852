// Rewriting of payroll SQL texts for a database with another dialect.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvex::ds {

/// A function the database knows under another name (a name that is a
/// keyword there, such as LEFT).
struct FunctionRename {
  std::u16string_view from;  // upper case
  std::u16string_view to;
};

/// The text with
/// - every quoted literal that holds a date in one of the payroll forms
///   ('03/01/2005', '2005-3-1', '2005/03/01', with or without a time)
///   written as ISO text ('2005-03-01', '2005-03-01 08:30:00'), so that it
///   compares as a date with the stored ISO dates;
/// - every call of a renamed function (the name followed by "(") renamed.
/// Quoted names, comments and all other text are kept as written.
std::u16string adaptSql(std::u16string_view sql, std::span<const FunctionRename> renames);

}  // namespace korvex::ds
