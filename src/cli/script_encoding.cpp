// The text of a script file: UTF-8, or the Chinese code page (GBK, and
// GB18030 for the characters GBK lacks) when the bytes are no UTF-8 but
// decode as that.
#include <iconv.h>

#include <optional>
#include <ostream>

#include "korvex/convert.hpp"
#include "run_command.hpp"

namespace korvex::cli {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

// Whether the bytes are UTF-8 as the standard defines it: no overlong
// forms, no surrogates, nothing beyond U+10FFFF.
bool validUtf8(std::string_view s) {
  for (std::size_t i = 0; i < s.size();) {
    const auto lead = static_cast<unsigned char>(s[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    std::size_t length = 0;
    char32_t cp = 0, least = 0;
    if ((lead & 0xE0) == 0xC0) {
      length = 2, cp = lead & 0x1F, least = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
      length = 3, cp = lead & 0x0F, least = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
      length = 4, cp = lead & 0x07, least = 0x10000;
    } else {
      return false;
    }
    if (s.size() - i < length) return false;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(s[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (next & 0x3F);
    }
    if (cp < least || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

// GB18030 through the C library's converter; nullopt unless every byte
// belongs to a character.
std::optional<std::u16string> strictGb18030(std::string_view bytes) {
  iconv_t cd = iconv_open("UTF-16LE", "GB18030");
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  // One byte gives at most one unit, four bytes at most two.
  std::string units(2 * bytes.size() + 2, '\0');
  char* in = const_cast<char*>(bytes.data());
  char* out = units.data();
  std::size_t inLeft = bytes.size(), outLeft = units.size();
  const bool ok = iconv(cd, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1) &&
                  iconv(cd, nullptr, nullptr, &out, &outLeft) != static_cast<std::size_t>(-1) &&
                  inLeft == 0;
  iconv_close(cd);
  if (!ok) return std::nullopt;
  std::u16string text;
  text.reserve((units.size() - outLeft) / 2);
  for (std::size_t i = 0; i + 1 < units.size() - outLeft; i += 2) {
    text.push_back(static_cast<char16_t>(static_cast<unsigned char>(units[i]) |
                                         static_cast<unsigned char>(units[i + 1]) << 8));
  }
  return text;
}

// The Chinese code page: GBK as the engine's own tables read it (what
// Asc and Chr use), GB18030 when that leaves bytes over; nullopt when
// neither reads every byte. `name` is the one that did.
std::optional<std::u16string> strictChinese(std::string_view bytes, const char*& name) {
  std::u16string gbk = decodeGbk(bytes);
  if (gbk.find(u'\uFFFD') == std::u16string::npos) {
    name = "GBK";
    return gbk;
  }
  name = "GB18030";
  return strictGb18030(bytes);
}

}  // namespace

std::u16string decodeScript(std::string_view bytes, Encoding encoding, std::ostream* notes) {
  const char* name = nullptr;
  if (encoding == Encoding::Gbk) {
    if (std::optional<std::u16string> text = strictChinese(bytes, name)) return std::move(*text);
    return decodeGbk(bytes);  // what is not a character reads as U+FFFD
  }
  if (bytes.starts_with(kUtf8Bom)) bytes.remove_prefix(kUtf8Bom.size());
  if (encoding == Encoding::Auto && !validUtf8(bytes)) {
    if (std::optional<std::u16string> text = strictChinese(bytes, name)) {
      if (notes != nullptr) *notes << "korvex: 脚本不是 UTF-8, 按 " << name << " 读取\n";
      return std::move(*text);
    }
  }
  return fromUtf8(bytes);
}

}  // namespace korvex::cli
