// Generated sheets, spelled in the many ways a sheet may be (prefixes,
// namespaces declared on rows, UTF-16 and Latin-1, rows and cells without
// numbers, comments, foreign elements, a row inside a cell), each with a
// few cells written and saved: every save must read back the same through
// KORVEX, and hold what was written for a second reader of its own.
#include <gtest/gtest.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>

#include "workbook_fixture.hpp"

namespace korvex::testing {
namespace {

const std::string kMain = "\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";

std::string number(double v) {
  char buffer[32];
  return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, v).ptr);
}

// What the second reader expects of a cell ("n:1.5", "s:text", "-", ...).
using Expected = std::map<std::pair<int, int>, std::string>;

class SheetGenerator {
 public:
  explicit SheetGenerator(unsigned seed) : random_(seed) {}

  // A sheet's XML (in its encoding) and what its cells hold.
  std::string sheet(Expected& expected) {
    const int style = pick(4);
    const std::string outer = style == 0 ? "" : "x:";
    const std::string inner = style == 2 ? "y:" : style == 3 ? "" : outer;
    std::string xml = "<" + outer + "worksheet xmlns" + (outer.empty() ? "" : ":x") + "=" + kMain +
                      (style == 2 ? " xmlns:y=" + kMain : "") + ">";
    if (pick(2) == 0) xml += "<" + outer + "dimension ref=\"" + (pick(2) ? "A1" : "A1:C3") + "\"/>";
    std::string rows;
    bool wide = false;
    for (int r = 0, count = pick(7); count > 0; --count) {
      r += 1 + pick(3);
      const bool numbered = pick(5) != 0;
      if (!numbered) r = last_ + 1;  // an unnumbered row follows the one before
      last_ = r;
      rows += noise() + "<" + inner + "row" + (numbered ? " r=\"" + std::to_string(r) + "\"" : "") +
              (style == 3 ? " xmlns=" + kMain : "");
      if (pick(6) == 0) {
        rows += "/>";
        continue;
      }
      rows += ">";
      for (int c = 0, cells = 1 + pick(4); cells > 0; --cells) {
        const bool named = pick(5) != 0;
        c = named ? c + 1 + pick(2) : c + 1;
        const std::string ref = cellName(r, c);
        std::string body;
        const std::string kind = cellBody(inner, body, expected[{r, c}], wide);
        rows += "<" + inner + "c" + (named ? " r=\"" + ref + "\"" : "") + kind + ">" + body +
                (pick(8) == 0 ? "<" + inner + "row r=\"99\"/>" : "") +
                (pick(8) == 0 ? "<e:x xmlns:e=\"urn:e\"><row/></e:x>" : "") + "</" + inner + "c>";
        if (!named) expected.erase({r, c});  // no name for the second reader to find it by
      }
      rows += noise() + "</" + inner + "row>";
    }
    xml += rows.empty() && pick(2) == 0
               ? "<" + outer + "sheetData/>"
               : "<" + outer + "sheetData>" + rows + noise() + "</" + outer + "sheetData>";
    xml += "</" + outer + "worksheet>";
    return encode(xml, wide);
  }

  // A cell written by a script and what it leaves.
  std::pair<Value, std::string> written() {
    static const char16_t* const kTexts[] = {u"a&b<c>\"d\"", u"中文",  u"tab\there",
                                             u"line\nbreak", u" lead", u""};
    switch (pick(5)) {
      case 0: {
        const double v = (pick(20001) - 10000) / (pick(2) ? 1.0 : 8.0);
        return {Value::dbl(v), "n:" + number(v)};
      }
      case 1: {
        const char16_t* text = kTexts[pick(6)];
        return {Value::string(text), "s:" + toUtf8(text)};
      }
      case 2: {
        const bool b = pick(2) == 0;
        return {Value::boolean(b), b ? "b:1" : "b:0"};
      }
      case 3: {
        const double serial = 40000 + pick(10000) + (pick(2) ? 0.25 : 0);
        return {Value::date(serial), "n:" + number(serial)};
      }
      default:
        return {Value(), "-"};
    }
  }

  int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }

 private:
  static std::string cellName(int row, int column) {
    std::string letters;
    for (int c = column; c > 0; c = (c - 1) / 26) letters.insert(0, 1, char('A' + (c - 1) % 26));
    return letters + std::to_string(row);
  }

  std::string noise() {
    static const char* const kNoise[] = {"", "", "\n  ", "<!-- note -->", "<?app hint?>"};
    return kNoise[pick(5)];
  }

  // The cell's type attribute; fills its content and what it holds.
  std::string cellBody(const std::string& p, std::string& body, std::string& holds, bool& wide) {
    // An inline string's XML and the text it holds.
    static const std::pair<const char*, const char*> kInline[] = {
        {"a&amp;b", "a&b"},         {"&#x4E2D;&#25991;", "中文"},
        {"<![CDATA[x<y]]>", "x<y"}, {"caf\xC3\xA9", "café"},
        {" sp ", " sp "},
    };
    switch (pick(5)) {
      case 0: {
        const double v = pick(1000) / 4.0;
        body = "<" + p + "v>" + number(v) + "</" + p + "v>";
        holds = "n:" + number(v);
        return "";
      }
      case 1: {
        const auto& [xml, text] = kInline[pick(5)];
        wide = wide || std::string_view(text) == "中文";
        body = pick(2)
                   ? "<" + p + "is><" + p + "t>" + xml + "</" + p + "t></" + p + "is>"
                   : "<" + p + "is><" + p + "r><" + p + "t>" + xml + "</" + p + "t></" + p + "r><" +
                         p + "rPh><" + p + "t>x</" + p + "t></" + p + "rPh></" + p + "is>";
        holds = std::string("s:") + text;
        return " t=\"inlineStr\"";
      }
      case 2: {
        const int i = pick(2);
        body = "<" + p + "v>" + std::to_string(i) + "</" + p + "v>";
        holds = i == 0 ? "s:姓名" : "s:基本工资";
        return " t=\"s\"";
      }
      case 3:
        body = "<" + p + "v>1</" + p + "v>";
        holds = "b:1";
        return " t=\"b\"";
      default:
        body = "<" + p + "v>#N/A</" + p + "v>";
        holds = "e:#N/A";
        return " t=\"e\"";
    }
  }

  // UTF-8, UTF-16 (either order) or, for text it can hold, Latin-1.
  std::string encode(const std::string& xml, bool wide) {
    const int encoding = pick(5);
    if (encoding == 0) return xml;
    if (encoding == 1) return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + xml;
    const std::u16string text = fromUtf8(xml);
    std::string out;
    if (encoding == 2 && !wide) {
      out = "<?xml version='1.0' encoding='ISO-8859-1'?>";
      for (const char16_t unit : text) out += static_cast<char>(unit);
      return out;
    }
    const bool little = encoding != 4;
    out = little ? "\xFF\xFE" : "\xFE\xFF";
    for (const char16_t unit : u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + text) {
      if (unit == 0) break;
      out += static_cast<char>(little ? unit & 0xFF : unit >> 8);
      out += static_cast<char>(little ? unit >> 8 : unit & 0xFF);
    }
    return out;
  }

  std::mt19937 random_;
  int last_ = 0;
};

TEST(SheetFuzz, GeneratedSheetsSaveReadably) {
  ScratchDir dir;
  constexpr int kCases = 300;
  for (int n = 0; n < kCases; ++n) {
    SCOPED_TRACE("case " + std::to_string(n));
    SheetGenerator generate(static_cast<unsigned>(n));
    Expected expected;
    auto parts = sampleParts();
    parts["xl/worksheets/sheet1.xml"] = generate.sheet(expected);
    const std::string name = "case" + std::to_string(n);
    const std::string path = writeWorkbook(dir, parts, name + ".xlsx");
    auto book = openBook(path);
    ASSERT_TRUE(book) << parts["xl/worksheets/sheet1.xml"];
    for (int writes = 1 + generate.pick(5); writes > 0; --writes) {
      const int row = 1 + generate.pick(12), column = 1 + generate.pick(6);
      auto [value, holds] = generate.written();
      write(*book, row, column, value);
      expected[{row, column}] = std::move(holds);
    }
    auto saved = saveAndOpen(*book, path);
    ASSERT_TRUE(saved);
    std::ofstream expect(dir.file(name + ".expect"), std::ios::binary);
    for (int row = 1; row <= 14; ++row) {
      for (int column = 1; column <= 8; ++column) {
        EXPECT_EQ(read(*saved, row, column), read(*book, row, column)) << row << "," << column;
      }
    }
    for (const auto& [at, holds] : expected) {
      std::string line = holds;
      for (std::size_t i = 0; (i = line.find_first_of("\n\t", i)) != std::string::npos; ++i) {
        line.replace(i, 1, line[i] == '\n' ? "\\n" : "\\t");
      }
      expect << static_cast<char>('A' + at.second - 1) << at.first << '\t' << line << '\n';
    }
  }
  const std::string command = "python3 '" KORVEX_SECOND_READER "' '" + dir.path() + "' 2>&1";
  if (std::system("command -v python3 >/dev/null") != 0) {
    GTEST_SKIP() << "python3 is not installed: the saves were not read by a second reader";
  }
  std::FILE* pipe = ::popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string report;
  char buffer[4096];
  for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    report.append(buffer, got);
  }
  EXPECT_EQ(::pclose(pipe), 0) << report;
  EXPECT_EQ(report, "ok " + std::to_string(kCases) + "\n");
}

}  // namespace
}  // namespace korvex::testing
