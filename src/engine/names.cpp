#include "engine/names.hpp"

#include "values/ops.hpp"

namespace korvex {

void upperNameInto(std::u16string_view name, std::u16string& out) {
  out.assign(name);
  for (char16_t& c : out) {
    if (c >= 0x80) {
      out = vb::upperCase(name);
      return;
    }
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - (u'a' - u'A'));
  }
}

}  // namespace korvex
