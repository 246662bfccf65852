#include "sqlite/sqlite_functions.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "sqlite/field_types.hpp"

namespace korvex::ds {

namespace {

enum class Part { Year, Month, Day };

std::string_view textOf(sqlite3_value* v) {
  const auto* p = reinterpret_cast<const char*>(sqlite3_value_text(v));
  return p == nullptr ? std::string_view{} : std::string_view(p, sqlite3_value_bytes(v));
}

// Byte offset of character `n` (UTF-8 code points counted from 0).
std::size_t charOffset(std::string_view s, std::int64_t n) {
  std::size_t i = 0;
  for (std::int64_t k = 0; k < n && i < s.size(); ++k) {
    ++i;
    while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) ++i;
  }
  return i;
}

std::int64_t charCount(std::string_view s) {
  std::int64_t n = 0;
  for (char c : s) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
}

void datePart(sqlite3_context* ctx, int, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) return sqlite3_result_null(ctx);
  const auto parts = parseDateUtf8(textOf(argv[0]));
  if (!parts) {
    return sqlite3_result_error(ctx, "Conversion failed when converting date from text.", -1);
  }
  switch (*static_cast<const Part*>(sqlite3_user_data(ctx))) {
    case Part::Year:
      return sqlite3_result_int(ctx, parts->year);
    case Part::Month:
      return sqlite3_result_int(ctx, parts->month);
    case Part::Day:
      return sqlite3_result_int(ctx, parts->day);
  }
}

// LEFT(text, n) and RIGHT(text, n), counted in characters.
void leftRight(sqlite3_context* ctx, int, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
    return sqlite3_result_null(ctx);
  }
  const std::int64_t n = sqlite3_value_int64(argv[1]);
  if (n < 0) {
    return sqlite3_result_error(ctx, "Invalid length parameter passed to the function.", -1);
  }
  const std::string_view s = textOf(argv[0]);
  const bool left = sqlite3_user_data(ctx) == nullptr;
  const std::int64_t total = charCount(s);
  const std::string_view piece =
      left ? s.substr(0, charOffset(s, n)) : s.substr(charOffset(s, total > n ? total - n : 0));
  sqlite3_result_text(ctx, piece.data(), static_cast<int>(piece.size()), SQLITE_TRANSIENT);
}

// LEN counts characters without the trailing blanks.
void len(sqlite3_context* ctx, int, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) return sqlite3_result_null(ctx);
  std::string_view s = textOf(argv[0]);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  sqlite3_result_int64(ctx, charCount(s));
}

void isNull(sqlite3_context* ctx, int, sqlite3_value** argv) {
  sqlite3_result_value(ctx, sqlite3_value_type(argv[0]) == SQLITE_NULL ? argv[1] : argv[0]);
}

void getDate(sqlite3_context* ctx, int, sqlite3_value**) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  const std::size_t n = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  sqlite3_result_text(ctx, text, static_cast<int>(n), SQLITE_TRANSIENT);
}

constexpr Part kYear = Part::Year, kMonth = Part::Month, kDay = Part::Day;
int kRight = 1;

struct Registration {
  const char* name;
  int args;
  void* data;
  void (*fn)(sqlite3_context*, int, sqlite3_value**);
  bool deterministic;
};

}  // namespace

bool registerPayrollFunctions(sqlite3* db) {
  const Registration all[] = {
      {"YEAR", 1, const_cast<Part*>(&kYear), datePart, true},
      {"MONTH", 1, const_cast<Part*>(&kMonth), datePart, true},
      {"DAY", 1, const_cast<Part*>(&kDay), datePart, true},
      {"KORVEX_LEFT", 2, nullptr, leftRight, true},
      {"KORVEX_RIGHT", 2, &kRight, leftRight, true},
      {"LEN", 1, nullptr, len, true},
      {"KORVEX_ISNULL", 2, nullptr, isNull, true},
      {"GETDATE", 0, nullptr, getDate, false},
  };
  for (const Registration& r : all) {
    const int flags = SQLITE_UTF8 | (r.deterministic ? SQLITE_DETERMINISTIC : 0);
    if (sqlite3_create_function(db, r.name, r.args, flags, r.data, r.fn, nullptr, nullptr) !=
        SQLITE_OK) {
      return false;
    }
  }
  return true;
}

}  // namespace korvex::ds
