// Nearest words by edit distance, over the engine's statement words and
// the function catalog.
#include "check/suggest.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "functions/catalog.hpp"
#include "values/text_scan.hpp"

namespace korvex::check {

namespace {

// How far a word may be from the one it was meant to be.
std::size_t allowedEdits(std::size_t length) noexcept {
  if (length <= 2) return 0;
  return length <= 5 ? 1 : 2;
}

std::u16string joined(std::u16string_view a, std::u16string_view b) {
  std::u16string out(a);
  out += b;
  return out;
}

// The statement words, spelled as the engine reads them.
constexpr std::array<std::u16string_view, 17> kStatements = {
    u"IF",        u"ELSE",     u"END IF",       u"END",      u"DO WHILE",   u"DO UNTIL",
    u"LOOP",      u"EXIT DO",  u"DIM",          u"MSGBOX",   u"RAISEERROR", u"REM",
    u"MOVEFIRST", u"MOVENEXT", u"MOVEPREVIOUS", u"MOVELAST", u"ADDRECORD"};

// The evaluator's own functions, which the catalog does not list.
constexpr std::array<std::u16string_view, 6> kInlineFunctions = {u"Abs",  u"Len",  u"Sqr",
                                                                 u"Year", u"Trim", u"Int"};

}  // namespace

std::size_t editDistance(std::u16string_view a, std::u16string_view b) {
  // Optimal string alignment: three rows of the table suffice.
  const std::size_t n = b.size();
  std::vector<std::size_t> before(n + 1), previous(n + 1), current(n + 1);
  for (std::size_t j = 0; j <= n; ++j) previous[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= n; ++j) {
      const bool same = asciiUpper(a[i - 1]) == asciiUpper(b[j - 1]);
      current[j] =
          std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && asciiUpper(a[i - 1]) == asciiUpper(b[j - 2]) &&
          asciiUpper(a[i - 2]) == asciiUpper(b[j - 1])) {
        current[j] = std::min(current[j], before[j - 2] + 1);
      }
    }
    std::swap(before, previous);
    std::swap(previous, current);
  }
  return previous[n];
}

std::u16string_view nearestStatement(std::u16string_view first, std::u16string_view second) {
  const std::u16string two = joined(first, second);
  std::u16string_view best;
  std::size_t bestDistance = 0;
  for (const std::u16string_view statement : kStatements) {
    const std::size_t blank = statement.find(u' ');
    std::size_t d = 0;
    if (blank == std::u16string_view::npos) {
      d = editDistance(first, statement);
    } else {
      const std::u16string unspaced =
          joined(statement.substr(0, blank), statement.substr(blank + 1));
      d = std::min(editDistance(first, unspaced), editDistance(two, unspaced));
    }
    if (d > allowedEdits(statement.size())) continue;
    if (best.empty() || d < bestDistance) {
      best = statement;
      bestDistance = d;
    }
  }
  return best;
}

std::vector<std::u16string_view> nearestFunctions(std::u16string_view name) {
  std::vector<std::pair<std::size_t, std::u16string_view>> near;
  const std::size_t allowed = std::max<std::size_t>(1, name.size() / 3);
  const auto consider = [&](std::u16string_view known) {
    if (known.empty()) return;
    const std::size_t d = editDistance(name, known);
    if (d > allowed) return;
    const bool seen = std::any_of(near.begin(), near.end(),
                                  [&](const auto& p) { return equalsNoCase(p.second, known); });
    if (!seen) near.emplace_back(d, known);
  };
  for (const fn::Family family : fn::families()) {
    for (const fn::FunctionEntry& entry : family) {
      for (const std::u16string_view known : entry.names) consider(known);
    }
  }
  for (const std::u16string_view known : kInlineFunctions) consider(known);
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& x, const auto& y) { return x.first < y.first; });
  std::vector<std::u16string_view> out;
  for (const auto& [distance, known] : near) {
    if (out.size() == 3 || distance > near.front().first) break;
    out.push_back(known);
  }
  return out;
}

char16_t asciiFor(char16_t c) noexcept {
  if (c == u'\u3000') return u' ';
  if (c == u'\u201C' || c == u'\u201D') return u'"';
  if (c == u'\u2018' || c == u'\u2019') return u'\'';
  if (c == u'\u3001') return u',';
  // The full-width forms of ASCII punctuation and digits; full-width
  // letters may be part of a name and stay.
  if ((c >= u'\uFF01' && c <= u'\uFF20') || (c >= u'\uFF3B' && c <= u'\uFF40') ||
      (c >= u'\uFF5B' && c <= u'\uFF5E')) {
    return static_cast<char16_t>(c - 0xFEE0);
  }
  return 0;
}

}  // namespace korvex::check
