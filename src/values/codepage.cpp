// The ANSI code page, 936 (GBK): Asc/Chr codes and GBK text.
//
// The mapping is read once from the platform's converter (the C library's
// iconv, or the code page API on Windows) into two lookup tables, so the
// per-character questions (is this a double-byte character?) cost an array
// access.
#ifdef _WIN32
#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <iconv.h>
#endif

#include <array>
#include <memory>

#include "values/ops.hpp"

namespace korvex::vb {

namespace {

constexpr char16_t kEuro = u'\u20AC';  // the one single-byte code above 0x7F
constexpr std::uint16_t kEuroCode = 0x80;

struct GbkTables {
  std::array<std::uint16_t, 0x10000> toCode{};  // UTF-16 unit -> code; 0 = none
  std::array<char16_t, 0x10000> toUnicode{};    // two-byte code -> unit; 0 = none
};

// One two-byte code through the platform's converter: its UTF-16 unit, or 0
// when the code is invalid or maps outside the BMP.
#ifdef _WIN32
class PairDecoder {
 public:
  bool ok() const noexcept { return true; }
  char16_t operator()(unsigned lead, unsigned trail) const {
    const char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
    wchar_t out[4] = {};
    const int n = MultiByteToWideChar(936, MB_ERR_INVALID_CHARS, in, 2, out, 4);
    if (n != 1) return 0;
    // Windows maps the code page's user-defined areas into the private use
    // area, which the C library's converter leaves unmapped: without them
    // both builds read and write the same codes.
    if (out[0] >= 0xE000 && out[0] <= 0xF8FF) return 0;
    return static_cast<char16_t>(out[0]);
  }
};
#else
class PairDecoder {
 public:
  PairDecoder() : cd_(iconv_open("UTF-16LE", "CP936")) {}
  ~PairDecoder() {
    if (ok()) iconv_close(cd_);
  }
  PairDecoder(const PairDecoder&) = delete;
  PairDecoder& operator=(const PairDecoder&) = delete;
  bool ok() const noexcept { return cd_ != reinterpret_cast<iconv_t>(-1); }
  char16_t operator()(unsigned lead, unsigned trail) const {
    char in[2] = {static_cast<char>(lead), static_cast<char>(trail)};
    unsigned char out[8] = {};
    char* inp = in;
    char* outp = reinterpret_cast<char*>(out);
    std::size_t inLeft = 2;
    std::size_t outLeft = sizeof out;
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);  // reset the shift state
    if (iconv(cd_, &inp, &inLeft, &outp, &outLeft) == static_cast<std::size_t>(-1)) return 0;
    if (sizeof out - outLeft != 2) return 0;  // outside the BMP: not representable
    return static_cast<char16_t>(out[0] | (out[1] << 8));
  }

 private:
  iconv_t cd_;
};
#endif

std::unique_ptr<GbkTables> buildTables() {
  auto t = std::make_unique<GbkTables>();
  for (std::uint16_t c = 1; c < 0x80; ++c) {
    t->toCode[c] = c;
    t->toUnicode[c] = c;
  }
  t->toCode[kEuro] = kEuroCode;
  t->toUnicode[kEuroCode] = kEuro;
  const PairDecoder decode;
  if (!decode.ok()) return t;  // ASCII only
  for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
    for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
      if (trail == 0x7F) continue;
      const char16_t unit = decode(lead, trail);
      if (unit == 0) continue;
      const auto code = static_cast<std::uint16_t>((lead << 8) | trail);
      t->toUnicode[code] = unit;
      if (t->toCode[unit] == 0) t->toCode[unit] = code;
    }
  }
  return t;
}

const GbkTables& tables() {
  static const std::unique_ptr<GbkTables> t = buildTables();
  return *t;
}

// Code of one UTF-16 unit; characters outside the code page become "?",
// as the platform's conversion does.
std::uint16_t codeOf(char16_t ch) {
  if (ch == 0) return 0;
  const std::uint16_t code = tables().toCode[ch];
  return code != 0 ? code : u'?';
}

}  // namespace

std::int16_t ansiCode(std::u16string_view s) {
  if (s.empty()) raise(kInvalidCall);
  return static_cast<std::int16_t>(codeOf(s.front()));
}

std::u16string charFromAnsi(std::int32_t code) {
  if (code < -32768 || code > 0xFFFF) raise(kInvalidCall);
  const auto c = static_cast<std::uint16_t>(code < 0 ? code + 0x10000 : code);
  if (c == 0) return std::u16string(1, u'\0');
  const char16_t unit = tables().toUnicode[c];
  if (unit == 0) raise(kInvalidCall);
  return std::u16string(1, unit);
}

bool isDoubleByte(char16_t ch) noexcept { return ch >= 0x80 && tables().toCode[ch] > 0xFF; }

std::u16string decodeGbk(std::string_view bytes) {
  const GbkTables& t = tables();
  std::u16string out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto b = static_cast<unsigned char>(bytes[i]);
    if (b < 0x80) {
      out.push_back(b);
    } else if (b == kEuroCode) {
      out.push_back(kEuro);
    } else if (i + 1 < bytes.size()) {
      const auto code =
          static_cast<std::uint16_t>((b << 8) | static_cast<unsigned char>(bytes[i + 1]));
      const char16_t unit = t.toUnicode[code];
      if (unit != 0) {
        out.push_back(unit);
        ++i;
      } else {
        out.push_back(u'\uFFFD');
      }
    } else {
      out.push_back(u'\uFFFD');
    }
  }
  return out;
}

}  // namespace korvex::vb
