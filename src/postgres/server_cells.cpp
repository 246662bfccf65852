#include "postgres/server_cells.hpp"

#include <charconv>
#include <optional>
#include <string>

#include "sqlite/field_types.hpp"

namespace korvex::ds {

namespace {

enum : Oid {
  kBool = 16,
  kInt2 = 21,
  kInt4 = 23,
  kOid = 26,
  kFloat4 = 700,
  kNumeric = 1700,
};

int fromHex(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 0;
}

std::optional<long long> wholeNumber(std::string_view text) {
  long long n = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (ec != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return n;
}

}  // namespace

SqlCell cellOf(Oid type, std::string_view text) {
  switch (type) {
    case kBool:
      return static_cast<long long>(text == "t" ? 1 : 0);
    case kInt2:
    case kInt4:
    case kServerInt8:
    case kOid:
    case kNumeric:
      if (const auto n = wholeNumber(text)) return *n;
      [[fallthrough]];
    case kFloat4:
    case kServerFloat8: {
      // Not strtod: a host program that set a locale writing decimal commas
      // would have it read 1234.56 as 1234.
      double d = 0;
      std::from_chars(text.data(), text.data() + text.size(), d);
      return d;
    }
    case kServerBytea: {
      SqlBlob blob;
      if (text.starts_with("\\x")) {
        for (std::size_t i = 2; i + 1 < text.size(); i += 2) {
          blob.bytes += static_cast<char>(fromHex(text[i]) * 16 + fromHex(text[i + 1]));
        }
      }
      return blob;
    }
    default:
      return std::string(text);
  }
}

std::int32_t typeOfServerDeclared(std::string_view declared) {
  if (declared == "bytea") return kTypeBinary;
  return typeOfDeclared(declared);
}

}  // namespace korvex::ds
