#include "engine/names.hpp"

#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex {

void upperNameInto(std::u16string_view name, std::u16string& out) {
  out.assign(name);
  for (char16_t& c : out) {
    if (c >= 0x80) {
      out = vb::upperCase(name);
      return;
    }
    c = vb::asciiUpper(c);
  }
}

}  // namespace korvex
