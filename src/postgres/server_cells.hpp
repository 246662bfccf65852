// The values the server sends, in text form, as the objects read them: the
// stored values SQLite would have (integers, reals, text, bytes), and the
// field type of a column's declared type.
#pragma once

#include <libpq-fe.h>

#include <cstdint>
#include <string_view>

#include "korvex/sqlite.hpp"

namespace korvex::ds {

// Server type numbers of the parameters bound with a type of their own.
inline constexpr Oid kServerInt8 = 20;
inline constexpr Oid kServerFloat8 = 701;
inline constexpr Oid kServerBytea = 17;

/// A value of the server's type `type` as sent in text form: booleans and
/// whole numbers (a whole numeric too, as SQLite's sums of integers are)
/// as integers, other numbers as reals, bytea as bytes, the rest as text.
SqlCell cellOf(Oid type, std::string_view text);

/// The field type of a column's declared type as the server writes it
/// (format_type: "character varying(10)", "public.korvex_money", ...).
std::int32_t typeOfServerDeclared(std::string_view declared);

}  // namespace korvex::ds
