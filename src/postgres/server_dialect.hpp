// The payroll SQL on the database server: the texts the scripts send are
// written for the payroll database ([bracketed] names, YEAR, LEFT, ISNULL,
// money and bit columns, '03/01/2005' dates, ":p0" and "?1" placeholders);
// this turns them into the server's SQL without changing what they mean.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex::ds {

struct ServerText {
  std::u16string sql;
  /// It declares columns of the payroll types the server has as domains
  /// of ours (money, bit): those must exist before it runs.
  bool usesDomains = false;
};

/// Whether `database` names a server rather than a file: a postgresql://
/// (or postgres://) address, or key=value settings naming a host, a
/// database or a service.
bool namesServer(std::string_view database);

/// The text with
/// - dates in the payroll forms written as ISO text, which the server reads
///   as the same date whatever its DateStyle;
/// - YEAR, MONTH, DAY, LEFT, RIGHT, LEN and GETDATE calls going to the
///   session's functions of those names, ISNULL to COALESCE;
/// - [name], `name` and "name" as quoted names in lower case: the payroll
///   database ignores the case of names, the server folds bare ones;
/// - ":p0" and "?1" placeholders as "$1" (a bare "?" takes the next number);
/// - in CREATE and ALTER statements, the payroll column types as the
///   server's (money, bit, datetime, nvarchar, image, ...).
/// Quoted literals, comments and everything else are kept as written.
ServerText adaptForServer(std::u16string_view sql);

/// The statements of a text, cut at each ";" outside quotes and comments;
/// pieces holding only blanks, comments and ";" are left out.
std::vector<std::string_view> serverStatements(std::string_view sql);

/// What a statement does to the transaction: BEGIN (or START TRANSACTION),
/// COMMIT (or END), ROLLBACK without TO, each with WORK, TRANSACTION or
/// TRAN; Ends for the other statements that end it (ABORT, AND CHAIN, a
/// two-phase PREPARE or COMMIT PREPARED); None for anything else.
enum class TransactionWord { None, Begin, Commit, Rollback, Ends };
TransactionWord transactionWord(std::string_view statement);

/// The statement's first word in upper case ("SELECT", "CREATE", ...).
std::string firstWord(std::string_view statement);

/// Which placeholders "$N" the statement uses: element N-1 is true for
/// "$N"; as long as the highest number used.
std::vector<bool> placeholdersUsed(std::string_view statement);

/// Whether a statement (as the server gets it) gives the same rows
/// whenever the data are the same: a SELECT that locks nothing, writes
/// nothing and calls only functions whose answer depends on their
/// arguments and the data (sums, trims, the session's date functions, ...),
/// not the clock, random numbers, sequences or functions of the site's own.
bool steadyQuery(std::string_view statement);

}  // namespace korvex::ds
