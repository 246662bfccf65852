// Upper and lower case for the letters scripts meet: ASCII, Latin-1 and
// Latin Extended-A, the pinyin vowels with tone marks, Greek, Cyrillic, the
// Roman numerals, circled and full-width Latin letters.
#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex::vb {

namespace {

// Contiguous blocks where lower = upper + offset.
struct Block {
  char16_t upperFirst;
  char16_t upperLast;
  int offset;
};

constexpr Block kBlocks[] = {
    {u'A', u'Z', 32},           {u'\u00C0', u'\u00D6', 32}, {u'\u00D8', u'\u00DE', 32},
    {u'\u0391', u'\u03A1', 32}, {u'\u03A3', u'\u03AB', 32}, {u'\u0410', u'\u042F', 32},
    {u'\u0400', u'\u040F', 80}, {u'\u2160', u'\u216F', 16}, {u'\u24B6', u'\u24CF', 26},
    {u'\uFF21', u'\uFF3A', 32},
};

// Latin Extended-A alternates upper/lower in pairs; these runs start on an
// even code point for the upper case, the rest on an odd one (so do the
// pinyin vowels Ǎ..ǜ of Extended-B). The dotted and
// dotless I (U+0130, U+0131) pair with ASCII letters and are left alone.
struct PairRun {
  char16_t first;
  char16_t last;
  int upperParity;  // c % 2 of the upper-case letters
};
constexpr PairRun kPairRuns[] = {
    {0x0100, 0x0137, 0}, {0x0139, 0x0148, 1}, {0x014A, 0x0177, 0},
    {0x0179, 0x017E, 1}, {0x01CD, 0x01DC, 1},
};

// Whether c is a letter of a pair run and of that case (upper or lower).
bool pairedLetter(char16_t c, bool upper) {
  if (c == 0x0130 || c == 0x0131) return false;
  for (const PairRun& r : kPairRuns) {
    if (c >= r.first && c <= r.last) return (c % 2 == r.upperParity) == upper;
  }
  return false;
}
bool extendedAUpper(char16_t c) { return pairedLetter(c, true); }
bool extendedALower(char16_t c) { return pairedLetter(c, false); }

char16_t toUpperChar(char16_t c) {
  if (c < 0x80) return asciiUpper(c);
  if (c == u'\u00FF') return u'\u0178';
  if (c == u'\u03C2') return u'\u03A3';  // final sigma
  if (extendedALower(c)) return static_cast<char16_t>(c - 1);
  for (const Block& b : kBlocks) {
    const int lo = b.upperFirst + b.offset;
    const int hi = b.upperLast + b.offset;
    if (c >= lo && c <= hi) return static_cast<char16_t>(c - b.offset);
  }
  return c;
}

char16_t toLowerChar(char16_t c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
  if (c == u'\u0178') return u'\u00FF';
  if (extendedAUpper(c)) return static_cast<char16_t>(c + 1);
  for (const Block& b : kBlocks) {
    if (c >= b.upperFirst && c <= b.upperLast) return static_cast<char16_t>(c + b.offset);
  }
  return c;
}

template <char16_t (*Map)(char16_t)>
std::u16string mapCase(std::u16string_view s) {
  std::u16string out(s);
  for (char16_t& c : out) c = Map(c);
  return out;
}

}  // namespace

std::u16string upperCase(std::u16string_view s) { return mapCase<toUpperChar>(s); }
std::u16string lowerCase(std::u16string_view s) { return mapCase<toLowerChar>(s); }

}  // namespace korvex::vb
