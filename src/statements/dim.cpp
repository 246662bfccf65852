// DIM name [, name ...]: declares variables (Empty) in the engine's table.
#include <string>

#include "engine/context.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

using detail::fail;

enum class DimState {
  Start,      // nothing declared yet
  Declared,   // a name was declared, no comma after it yet
  NeedsName,  // a comma followed a name, another name must come
};

constexpr std::u16string_view kDimKeyword = u"DIM";
constexpr std::u16string_view kDimMarker = u"{DIM}";

// What follows the message of a bad character.
std::u16string badCharacter(char16_t c, bool withMarker) {
  std::u16string detail = msg::quoted({&c, 1});
  if (withMarker) detail += kDimMarker;
  return detail;
}

}  // namespace

std::int32_t Dim(Context& ctx, KeptLine& kept) {
  // Declares as it reads: nothing of the line is worth keeping.
  const std::u16string_view line = kept.text;
  DimState state = DimState::Start;
  for (std::size_t pos = 0; pos < line.size(); ++pos) {
    const char16_t c = line[pos];
    if (c == u',') {
      if (state != DimState::Declared) return fail(ctx, msg::kSyntax);
      state = DimState::NeedsName;
      continue;
    }
    if (c == u'\'') break;
    if (isBlank(c)) continue;

    if (state == DimState::Declared) return fail(ctx, msg::kSyntax);
    if (!isIdentStart(c)) return fail(ctx, msg::kBadSymbol, badCharacter(c, true));
    const std::size_t start = pos;
    for (++pos; pos < line.size() && !isBlank(line[pos]) && line[pos] != u','; ++pos) {
      if (!isIdentChar(line[pos]))
        return fail(ctx, msg::kBadSymbol, badCharacter(line[pos], false));
    }
    // The blank or comma that ends the word is consumed with it (the loop's
    // ++pos steps over it).
    const std::u16string_view word = line.substr(start, pos - start);
    if (equalsNoCase(word, kDimKeyword)) continue;
    state = pos < line.size() && line[pos] == u',' ? DimState::NeedsName : DimState::Declared;
    // A name that exists already keeps its value; that is no error here.
    ctx.defineSymbol(vb::upperCase(word), Value());
  }
  if (state != DimState::Declared) {
    return fail(ctx, msg::kSyntax, kDimMarker);
  }
  return ctx.errNum();
}

}  // namespace korvex::stmt
