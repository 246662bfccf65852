// The workbook host objects over real .xlsx files: reading every kind of
// cell, writing, saving as a patch of the original package, and escaping
// the text written.
#include "korvex/workbook.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "workbook/xml_scan.hpp"
#include "workbook_fixture.hpp"

namespace korvex::testing {
namespace {

// The file at `path` with its directory claiming `size` bytes for `part`
// once inflated; returns the path.
std::string declareSize(const std::string& path, const std::string& part, std::uint32_t size) {
  std::string bytes = readFile(path);
  const auto le16 = [&](std::size_t at) {
    return std::size_t{static_cast<unsigned char>(bytes[at])} |
           std::size_t{static_cast<unsigned char>(bytes[at + 1])} << 8;
  };
  for (auto at = bytes.find("PK\x01\x02"); at != std::string::npos;
       at = bytes.find("PK\x01\x02", at + 4)) {
    if (bytes.compare(at + 46, le16(at + 28), part) != 0) continue;
    for (int i = 0; i < 4; ++i) bytes[at + 24 + i] = static_cast<char>(size >> (8 * i));
  }
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  return path;
}

// The file at `path` with the entry `from` renamed `to` (of one length).
std::string renamePart(const std::string& path, const std::string& from, const std::string& to) {
  std::string bytes = readFile(path);
  for (auto at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at + 1)) {
    bytes.replace(at, from.size(), to);
  }
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  return path;
}

std::shared_ptr<Workbook> openSample(const ScratchDir& dir,
                                     std::map<std::string, std::string> parts = sampleParts()) {
  return openBook(writeWorkbook(dir, parts));
}

TEST(Workbook, ReadsEveryKindOfCell) {
  ScratchDir dir;
  auto book = openSample(dir);
  ASSERT_TRUE(book);
  const std::tuple<std::int32_t, std::int32_t, const char*, const char*> kCases[] = {
      {1, 1, "String:姓名", "String:姓名"},          // shared string
      {1, 2, "String:基本工资", "String:基本工资"},  // rich text, phonetic guide left out
      {1, 3, "String:行内", "String:行内"},          // inline string
      {1, 4, "Boolean:True", "String:TRUE"},
      {1, 5, "Empty:", "String:"},  // styled but empty
      {2, 1, "Double:3000.5", "String:3000.5"},
      {2, 2, "Date:2024/3/1", "String:45352"},  // a number under a date format
      {2, 3, "String:#DIV/0!", "String:#DIV/0!"},
      {2, 4, "Double:6001", "String:=A2*2"},  // cached result of a formula
      {2, 5, "String:姓名!", "String:=A1&\"!\""},
      {4, 1, "Double:1", "String:=B3+1"},  // shares the formula of A3, moved
      {9, 9, "Empty:", "String:"},
  };
  for (const auto& [row, column, value, formula] : kCases) {
    EXPECT_EQ(read(*book, row, column), value) << row << "," << column;
    EXPECT_EQ(read(*book, row, column, u"Formula"), formula) << row << "," << column;
  }
  const auto other = objectOf(book->sheet(Value::string(u"other")));  // names ignore case
  EXPECT_EQ(describe(other->getProperty(u"index", {}).value), "Long:2");
  EXPECT_EQ(describe(other->getProperty(u"Name", {}).value), "String:Other");
}

TEST(Workbook, SavingPatchesOnlyWhatWasWritten) {
  ScratchDir dir;
  auto book = openSample(dir);
  ASSERT_TRUE(book);
  const std::string path = book->path();
  const auto before = sampleParts();
  EXPECT_FALSE(book->modified());

  write(*book, 2, 1, Value::dbl(42));                       // replaces a number
  write(*book, 2, 3, Value::string(u"'0012"));              // apostrophe marks text
  write(*book, 1, 5, Value::date(45383.5));                 // date into a bold cell
  write(*book, 3, 1, Value::boolean(false));                // overwrites a shared formula
  write(*book, 6, 2, Value::string(u"=A2+1"), u"Formula");  // a new row
  write(*book, 2, 7, Value::string(u"a<b & \"c\""));        // after the last cell
  write(*book, 1, 1, Value());                              // cleared
  EXPECT_TRUE(book->modified());
  std::u16string error;
  ASSERT_TRUE(book->save(path, error)) << toUtf8(error);
  EXPECT_FALSE(book->modified());

  for (const char* part : {"xl/worksheets/sheet2.xml", "xl/sharedStrings.xml", "_rels/.rels"}) {
    EXPECT_EQ(partOf(path, part), before.at(part)) << part;
  }
  const std::string sheet = partOf(path, "xl/worksheets/sheet1.xml");
  for (const char* kept : {"<cols><col min=\"1\" max=\"1\" width=\"20\" customWidth=\"1\"/></cols>",
                           "<mergeCells count=\"1\"><mergeCell ref=\"C3:D3\"/></mergeCells>",
                           "<c r=\"B1\" t=\"s\"><v>1</v></c>", "<dimension ref=\"A1:G6\"/>",
                           "<row r=\"2\"><c r=\"A2\"><v>42</v></c><c r=\"B2\" s=\"1\">"}) {
    EXPECT_NE(sheet.find(kept), std::string::npos) << kept << " in " << sheet;
  }
  EXPECT_EQ(partOf(path, "xl/calcChain.xml"), "(missing)");
  EXPECT_EQ(partOf(path, "[Content_Types].xml").find("calcChain"), std::string::npos);
  EXPECT_EQ(partOf(path, "xl/_rels/workbook.xml.rels").find("calcChain"), std::string::npos);
  EXPECT_NE(
      partOf(path, "xl/workbook.xml").find("<calcPr calcId=\"191029\" fullCalcOnLoad=\"1\"/>"),
      std::string::npos);
  // The date got a date format derived from the bold one.
  EXPECT_NE(partOf(path, "xl/styles.xml").find("<cellXfs count=\"4\">"), std::string::npos);
  EXPECT_NE(partOf(path, "xl/styles.xml")
                .find("<xf numFmtId=\"22\" fontId=\"1\" applyFont=\"1\" applyNumberFormat=\"1\">"
                      "<alignment horizontal=\"center\"/></xf></cellXfs>"),
            std::string::npos);

  auto again = openBook(path);
  ASSERT_TRUE(again);
  EXPECT_EQ(read(*again, 2, 1), "Double:42");
  EXPECT_EQ(read(*again, 2, 3), "String:0012");
  EXPECT_EQ(read(*again, 1, 5), "Date:2024/4/1 12:00:00");
  EXPECT_EQ(read(*again, 3, 1), "Boolean:False");
  EXPECT_EQ(read(*again, 4, 1, u"Formula"), "String:=B3+1");  // written out in full
  EXPECT_EQ(read(*again, 6, 2, u"Formula"), "String:=A2+1");
  EXPECT_EQ(read(*again, 6, 2), "Empty:");  // no result until recalculated
  EXPECT_EQ(read(*again, 2, 7), "String:a<b & \"c\"");
  EXPECT_EQ(read(*again, 1, 1), "Empty:");
  EXPECT_EQ(read(*again, 2, 4), "Double:6001");
  // No temporary file is left beside the target.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(Workbook, WrittenCellsReadBackFromTheSavedFile) {
  ScratchDir dir;
  auto book = Workbook::createNew();
  // Columns at multiples of 26 carry into the next letter; the 1900 date
  // system counts a 29 February that never was, between serials 59 and 61.
  const std::tuple<std::int32_t, std::int32_t, Value, const char*, const char*> kCases[] = {
      {1, 26, Value::dbl(1), "<c r=\"Z1\"><v>1</v></c>", "Double:1"},
      {1, 52, Value::dbl(2), "<c r=\"AZ1\"><v>2</v></c>", "Double:2"},
      {1, 702, Value::dbl(3), "<c r=\"ZZ1\"><v>3</v></c>", "Double:3"},
      {2, 1, Value::date(59), "<v>58</v>", "Date:1900/2/27"},
      {2, 2, Value::date(60), "<v>59</v>", "Date:1900/2/28"},
      {2, 3, Value::date(61), "<v>61</v>", "Date:1900/3/1"},
  };
  for (const auto& [row, column, value, stored, shown] : kCases) write(*book, row, column, value);
  const std::string path = dir.file("saved.xlsx");
  auto again = saveAndOpen(*book, path);
  ASSERT_TRUE(again);
  const std::string sheet = partOf(path, "xl/worksheets/sheet1.xml");
  for (const auto& [row, column, value, stored, shown] : kCases) {
    EXPECT_NE(sheet.find(stored), std::string::npos) << stored << " in " << sheet;
    EXPECT_EQ(read(*again, row, column), shown) << row << "," << column;
  }
}

// A save goes to the file a link names (the link stays a link), and a long
// but legal file name is no obstacle to the temporary file beside it.
TEST(Workbook, SavesFollowLinksAndTakeLongNames) {
  ScratchDir dir;
  const std::string real = dir.file("real.xlsx"), link = dir.file("link.xlsx"),
                    longName = dir.file(std::string(250, 'n') + ".xlsx");
  std::filesystem::create_symlink("real.xlsx", link);
  for (const std::string& path : {link, longName}) {
    auto book = Workbook::createNew();
    write(*book, 1, 1, Value::dbl(42));
    auto saved = saveAndOpen(*book, path);
    ASSERT_TRUE(saved);
    EXPECT_EQ(read(*saved, 1, 1), "Double:42") << path;
  }
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(read(*openBook(real), 1, 1), "Double:42");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 3);
}

// A sheet is patched as it is spelled: rows that use another prefix than
// their sheetData, a part in UTF-16 or Latin-1, something in a cell that
// looks like a row. The saved part reads back with the cells written and
// the cells that were there.
TEST(Workbook, SheetsArePatchedAsTheyAreSpelled) {
  const std::string ns = "\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";
  const std::string plain = "<worksheet xmlns=" + ns + "><sheetData><row r=\"1\"><c r=\"A1\" ";
  const auto utf16 = [](const std::string& utf8) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : fromUtf8(utf8)) {
      bytes += static_cast<char>(unit & 0xFF);
      bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
  };
  const std::tuple<const char*, std::string, const char*> kCases[] = {
      {"prefixes",
       "<x:worksheet xmlns:x=" + ns + " xmlns:y=" + ns +
           "><x:sheetData><y:row r=\"1\"><y:c r=\"A1\"><y:v>1</y:v></y:c></y:row></x:sheetData>"
           "</x:worksheet>",
       "Double:1"},
      {"utf16",
       utf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + plain +
             "t=\"inlineStr\"><is><t>工资</t></is></c></row></sheetData></worksheet>"),
       "String:工资"},
      {"latin1",
       "<?xml version='1.0' encoding='ISO-8859-1'?>" + plain +
           "t=\"inlineStr\"><is><t>caf\xE9</t></is></c></row></sheetData></worksheet>",
       "String:café"},
      {"nested", plain + "><v>1</v><row r=\"5\"/></c></row></sheetData></worksheet>", "Double:1"},
  };
  for (const auto& [name, sheet, a1] : kCases) {
    SCOPED_TRACE(name);
    ScratchDir dir;
    auto parts = sampleParts();
    parts["xl/worksheets/sheet1.xml"] = sheet;
    const std::string path = writeWorkbook(dir, parts);
    auto book = openBook(path);
    ASSERT_TRUE(book);
    write(*book, 1, 2, Value::dbl(5));
    write(*book, 3, 1, Value::string(u"中文"));
    auto saved = saveAndOpen(*book, path);
    ASSERT_TRUE(saved);
    EXPECT_EQ(read(*saved, 1, 1), a1);
    EXPECT_EQ(read(*saved, 1, 2), "Double:5");
    EXPECT_EQ(read(*saved, 3, 1), "String:中文");
    EXPECT_EQ(read(*saved, 5, 1), "Empty:");
  }
}

TEST(Workbook, RangesTakeArraysFromTheirLowerBounds) {
  auto book = Workbook::createNew();
  Array grid({{0, 2}, {1, 2}});  // rows 0..1, columns 1..2
  for (int i = 0; i < 4; ++i) grid.elements()[i] = Value::dbl(i + 1);
  const auto origin = cell(*book, Value::lng(1), 2, 2);
  const std::array<Value, 2> size{Value::lng(3), Value::lng(3)};
  const auto block = objectOf(origin->getProperty(u"Resize", size));
  ASSERT_TRUE(block->setProperty(u"Value", {}, Value::array(grid)).ok());
  EXPECT_EQ(read(*book, 2, 2), "Double:1");
  EXPECT_EQ(read(*book, 3, 3), "Double:4");
  EXPECT_EQ(read(*book, 4, 2), "String:#N/A");  // beyond the array
  EXPECT_EQ(describe(block->getProperty(u"Value", {}).value), "Array:");

  Array row({{1, 2}});
  row.elements() = {Value::string(u"x"), Value::string(u"y")};
  ASSERT_TRUE(block->setProperty(u"Value", {}, Value::array(row)).ok());
  EXPECT_EQ(read(*book, 4, 3), "String:y");  // one row, repeated down
  EXPECT_EQ(read(*book, 4, 4), "String:#N/A");

  Array bad({{0, 1}});
  bad.elements()[0] = Value::object(book);
  EXPECT_EQ(origin->setProperty(u"Value", {}, Value::array(bad)).number, 13);
  EXPECT_EQ(read(*book, 2, 2), "String:x");  // unchanged by the refused write
}

TEST(Workbook, RefusesWhatASheetCannotHold) {
  auto book = Workbook::createNew();
  // The sheet, the row and column of a cell on it, and the error number.
  const std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t> kCases[] = {
      {2, 1, 1, 9}, {0, 1, 1, 9}, {1, 1048577, 1, 1004}, {1, 1, 16385, 1004}};
  for (const auto& [index, row, column, number] : kCases) {
    const DispatchResult sheet = book->sheet(Value::lng(index));
    DispatchResult r = sheet;
    if (sheet.ok()) {
      const std::array<Value, 2> at{Value::lng(row), Value::lng(column)};
      r = sheet.value.objectValue()->getProperty(u"Cells", at);
    }
    EXPECT_EQ(r.number, number) << row << "," << column;
    EXPECT_FALSE(r.description.empty());
  }
  const std::array<Value, 2> last{Value::lng(1048576), Value::lng(16384)};
  const auto corner = objectOf(objectOf(book->sheet(Value::lng(1)))->getProperty(u"Cells", last));
  const std::array<Value, 2> two{Value::lng(2), Value::lng(1)};
  EXPECT_EQ(corner->getProperty(u"Resize", two).number, 1004);
}

TEST(Workbook, OpeningAndSavingTellWhatIsWrong) {
  ScratchDir dir;
  auto fresh = openBook(dir.file("new.xlsx"));
  ASSERT_TRUE(fresh);
  EXPECT_EQ(fresh->sheetCount(), 1u);
  EXPECT_EQ(describe(objectOf(fresh->sheet(Value::lng(1)))->getProperty(u"Name", {}).value),
            "String:Sheet1");
  EXPECT_FALSE(std::filesystem::exists(dir.file("new.xlsx")));  // only written by save
  write(*fresh, 1, 1, Value::dbl(1));
  std::u16string error;
  EXPECT_FALSE(fresh->save(dir.file("missing/out.xlsx"), error));
  EXPECT_NE(toUtf8(error).find("missing/out.xlsx"), std::string::npos);
  EXPECT_TRUE(fresh->modified());

  // Files that are refused, each with the reason, and never a crash: what
  // a small file claims or inflates to is bounded before it is allocated.
  const auto bookWith = [&](const std::string& part, std::string text, const std::string& name) {
    auto parts = sampleParts();
    parts[part] = std::move(text);
    return writeWorkbook(dir, parts, name);
  };
  const std::string sheet2 = "xl/worksheets/sheet2.xml";
  const std::string rows = std::string("<worksheet ") + kNs + "><sheetData>";
  std::string xfs;
  for (int i = 0; i <= 65536; ++i) xfs += "<xf/>";
  WorkbookLimits small, few;
  small.maxPartBytes = 1 << 20;
  few.maxCells = 10;
  std::filesystem::create_directory(dir.file("folder.xlsx"));
  std::ofstream(dir.file("text.xlsx")) << "not a workbook";
  ASSERT_EQ(::mkfifo(dir.file("pipe.xlsx").c_str(), 0600), 0);
  struct Case {
    std::string path;
    const char* reason;
    WorkbookLimits limits = {};
  } const kCases[] = {
      {dir.file("text.xlsx"), "不是 zip"},
      {dir.file("folder.xlsx"), "folder.xlsx"},
      // A pipe would block the read and a device never end it.
      {dir.file("pipe.xlsx"), "不是普通文件"},
      {"/dev/zero", "不是普通文件"},
      {bookWith(sheet2, "<worksheet><sheetData>", "bad.xlsx"), "XML 格式错误"},
      {bookWith("xl/workbook.xml", std::string("<workbook ") + kNs + "/>", "empty.xlsx"),
       "没有工作表"},
      // The directory claims 4 GiB for a few bytes.
      {declareSize(writeWorkbook(dir, sampleParts(), "claims.xlsx"), sheet2, 0xFFFFFFFEu),
       "sheet2.xml 解压后超过部件大小上限 (268435456 字节)"},
      // 4 MiB of blanks compress to a few kilobytes.
      {bookWith(sheet2,
                rows.substr(0, rows.size() - 11) + std::string(4 << 20, ' ') +
                    "<sheetData/></worksheet>",
                "bomb.xlsx"),
       "sheet2.xml 解压后超过部件大小上限 (1048576 字节)", small},
      {writeWorkbook(dir, sampleParts(), "cells.xlsx"), "sheet1.xml: 单元格太多", few},
      {bookWith(sheet2,
                "<!DOCTYPE worksheet [<!ENTITY r \"<row r='2'/>\">]>" + rows +
                    "&r;</sheetData></worksheet>",
                "entity.xlsx"),
       "sheet2.xml: 含有文档类型声明"},
      {bookWith("xl/styles.xml",
                std::string("<!DOCTYPE styleSheet [<!ENTITY x '<cellXfs><xf "
                            "numFmtId=\"14\"/></cellXfs>'>]><styleSheet ") +
                    kNs + ">&x;</styleSheet>",
                "styles.xlsx"),
       "styles.xml: 含有文档类型声明"},
      {bookWith("xl/styles.xml",
                std::string("<styleSheet ") + kNs + "><cellXfs>" + xfs + "</cellXfs></styleSheet>",
                "formats.xlsx"),
       "styles.xml: 单元格格式太多"},
      {bookWith(sheet2, rows + "<row r=\"2147483647\"/><row/></sheetData></worksheet>",
                "overflow.xlsx"),
       "sheet2.xml: 行号 2147483647 超出工作表的范围"},
      {bookWith(sheet2, rows + "<row r=\"1048576\"/><row/></sheetData></worksheet>", "beyond.xlsx"),
       "sheet2.xml: 行号 1048577 超出工作表的范围"},
      {bookWith(sheet2, "<?xml version=\"1.0\" encoding=\"GBK\"?>" + rows, "gbk.xlsx"),
       "sheet2.xml: 不支持的字符编码 GBK"},
      // Readers differ in which of two entries of one name they take.
      {renamePart(bookWith("xl/worksheets/sheet3.xml", rows, "twice.xlsx"),
                  "xl/worksheets/sheet3.xml", sheet2),
       "两个同名的部件 xl/worksheets/sheet2.xml"},
  };
  for (const auto& c : kCases) {
    error.clear();
    EXPECT_FALSE(Workbook::open(c.path, error, c.limits)) << c.path;
    EXPECT_NE(toUtf8(error).find(c.path), std::string::npos) << toUtf8(error);
    EXPECT_NE(toUtf8(error).find(c.reason), std::string::npos) << toUtf8(error);
  }
  // The same limits leave room for a workbook within them.
  few.maxCells = 20;
  EXPECT_TRUE(Workbook::open(writeWorkbook(dir, sampleParts(), "fits.xlsx"), error, few));
}

// Escaping of text written back into a sheet's XML.
TEST(EscapeXml, TextAndAttributeEscapeDifferently) {
  const std::tuple<std::string_view, std::string_view, std::string_view> cases[] = {
      {"a&b<c>d", "a&amp;b&lt;c&gt;d", "a&amp;b&lt;c&gt;d"},
      {"say \"hi\"", "say \"hi\"", "say &quot;hi&quot;"},
      {"one\r\ntwo\tthree", "one&#13;\ntwo\tthree", "one&#13;&#10;two&#9;three"},
      {"bell\x07gone", "bellgone", "bellgone"},
      {"工资 'ok'", "工资 'ok'", "工资 'ok'"},
  };
  for (const auto& [raw, inText, inAttribute] : cases) {
    EXPECT_EQ(xlsx::escapeXml(raw), inText) << raw;
    EXPECT_EQ(xlsx::escapeXml(raw, true), inAttribute) << raw;
  }
}

}  // namespace
}  // namespace korvex::testing
