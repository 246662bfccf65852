// Workbooks made in the tests: a package assembled part by part, written
// to a private temporary directory.
#pragma once

#include <array>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "korvex/workbook.hpp"
#include "support.hpp"
#include "workbook/zip_package.hpp"

namespace korvex::testing {

inline const char* kNs = "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";

/// The parts of a two-sheet workbook with every kind of cell on "工资" and
/// an untouched sheet "Other"; tests change parts before writing it.
inline std::map<std::string, std::string> sampleParts() {
  const std::string ns = "http://schemas.openxmlformats.org/";
  const std::string rels = "<Relationships xmlns=\"" + ns + "package/2006/relationships\">";
  const auto relation = [&](int id, const std::string& type, const std::string& target) {
    return "<Relationship Id=\"rId" + std::to_string(id) + "\" Type=\"" + ns +
           "officeDocument/2006/relationships/" + type + "\" Target=\"" + target + "\"/>";
  };
  std::map<std::string, std::string> p;
  std::string& types = p["[Content_Types].xml"];
  std::string& bookRels = p["xl/_rels/workbook.xml.rels"];
  types = "<Types xmlns=\"" + ns +
          "package/2006/content-types\"><Default Extension=\"rels\" ContentType=\""
          "application/vnd.openxmlformats-package.relationships+xml\"/>"
          "<Default Extension=\"xml\" ContentType=\"application/xml\"/>";
  bookRels = rels;
  // Each part of xl/, its content type (also the type of the workbook's
  // relationship to it) and the target the workbook names, both forms.
  const std::tuple<const char*, const char*, const char*> kParts[] = {
      {"workbook", "sheet.main", nullptr},
      {"worksheets/sheet1", "worksheet", "worksheets/sheet1.xml"},
      {"worksheets/sheet2", "worksheet", "/xl/worksheets/sheet2.xml"},
      {"styles", "styles", "styles.xml"},
      {"sharedStrings", "sharedStrings", "sharedStrings.xml"},
      {"calcChain", "calcChain", "calcChain.xml"}};
  int id = 0;
  for (const auto& [part, type, target] : kParts) {
    types += std::string("<Override PartName=\"/xl/") + part +
             ".xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml." +
             type + "+xml\"/>";
    if (target != nullptr) bookRels += relation(++id, type, target);
  }
  types += "</Types>";
  bookRels += "</Relationships>";
  p["_rels/.rels"] = rels + relation(1, "officeDocument", "xl/workbook.xml") + "</Relationships>";
  p["xl/workbook.xml"] = std::string("<workbook ") + kNs + " xmlns:r=\"" + ns +
                         "officeDocument/2006/relationships\">"
                         "<sheets><sheet name=\"工资\" sheetId=\"1\" r:id=\"rId1\"/>"
                         "<sheet name=\"Other\" sheetId=\"2\" r:id=\"rId2\"/></sheets>"
                         "<calcPr calcId=\"191029\"/></workbook>";
  // Formats: 0 general, 1 a custom date format, 2 bold general.
  p["xl/styles.xml"] = std::string("<styleSheet ") + kNs +
                       "><numFmts count=\"1\"><numFmt numFmtId=\"164\" "
                       "formatCode=\"yyyy&quot;年&quot;m&quot;月&quot;\"/></numFmts>"
                       "<fonts count=\"2\"><font/><font><b/></font></fonts>"
                       "<cellXfs count=\"3\"><xf numFmtId=\"0\" fontId=\"0\"/>"
                       "<xf numFmtId=\"164\" fontId=\"0\" applyNumberFormat=\"1\"/>"
                       "<xf numFmtId=\"0\" fontId=\"1\" applyFont=\"1\"><alignment "
                       "horizontal=\"center\"/></xf></cellXfs></styleSheet>";
  p["xl/sharedStrings.xml"] = std::string("<sst ") + kNs +
                              "><si><t>姓名</t></si><si><r><t>基本</t></r><r><rPr><b/></rPr>"
                              "<t>工资</t></r><rPh><t>ji</t></rPh></si></sst>";
  p["xl/calcChain.xml"] = std::string("<calcChain ") + kNs + "><c r=\"D2\" i=\"1\"/></calcChain>";
  p["xl/worksheets/sheet1.xml"] =
      std::string("<worksheet ") + kNs +
      "><dimension ref=\"A1:E3\"/><cols><col min=\"1\" max=\"1\" width=\"20\" customWidth=\"1\"/>"
      "</cols><sheetData>"
      "<row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c><c r=\"B1\" t=\"s\"><v>1</v></c>"
      "<c r=\"C1\" t=\"inlineStr\"><is><t>行内</t></is></c><c r=\"D1\" t=\"b\"><v>1</v></c>"
      "<c r=\"E1\" s=\"2\"/></row>"
      "<row r=\"2\" spans=\"1:5\"><c r=\"A2\"><v>3000.5</v></c><c r=\"B2\" s=\"1\"><v>45352</v></c>"
      "<c r=\"C2\" t=\"e\"><v>#DIV/0!</v></c><c r=\"D2\"><f>A2*2</f><v>6001</v></c>"
      "<c r=\"E2\" t=\"str\"><f>A1&amp;\"!\"</f><v>姓名!</v></c></row>"
      "<row r=\"3\"><c r=\"A3\"><f t=\"shared\" ref=\"A3:A4\" "
      "si=\"0\">B2+1</f><v>45353</v></c></row>"
      "<row r=\"4\"><c r=\"A4\"><f t=\"shared\" si=\"0\"/><v>1</v></c></row>"
      "</sheetData><mergeCells count=\"1\"><mergeCell ref=\"C3:D3\"/></mergeCells></worksheet>";
  p["xl/worksheets/sheet2.xml"] = std::string("<worksheet ") + kNs +
                                  "><sheetData><row r=\"1\"><c r=\"A1\"><v>7</v></c></row>"
                                  "</sheetData></worksheet>";
  return p;
}

/// The cells of a workbook's sheets through the host objects, as a script
/// reaches them: read as "Type:text", written as given.
inline ObjectRef cell(Workbook& book, const Value& sheet, std::int32_t row, std::int32_t column) {
  const std::array<Value, 2> at{Value::lng(row), Value::lng(column)};
  return objectOf(objectOf(book.sheet(sheet))->getProperty(u"Cells", at));
}

inline std::string read(Workbook& book, std::int32_t row, std::int32_t column,
                        std::u16string_view member = u"Value", std::int32_t sheet = 1) {
  const DispatchResult r = cell(book, Value::lng(sheet), row, column)->getProperty(member, {});
  return r.ok() ? describe(r.value) : "error " + std::to_string(r.number);
}

inline void write(Workbook& book, std::int32_t row, std::int32_t column, const Value& v,
                  std::u16string_view member = u"Value") {
  const DispatchResult r = cell(book, Value::lng(1), row, column)->setProperty(member, {}, v);
  ASSERT_TRUE(r.ok()) << toUtf8(r.description);
}

/// Writes the parts as an .xlsx file; returns its path.
inline std::string writeWorkbook(const ScratchDir& dir,
                                 const std::map<std::string, std::string>& parts,
                                 const std::string& name = "book.xlsx") {
  xlsx::ZipPackage pkg;
  for (const auto& [part, text] : parts) pkg.put(part, text);
  std::string bytes, error;
  EXPECT_TRUE(pkg.write(bytes, error)) << error;
  const std::string path = dir.file(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

/// The workbook at `path` (new when there is no file); a failure fails the test.
inline std::shared_ptr<Workbook> openBook(const std::string& path) {
  std::u16string error;
  auto book = Workbook::open(path, error);
  EXPECT_TRUE(book) << toUtf8(error);
  return book;
}

/// Saves the workbook at `path` and opens the saved file; a failure fails the test.
inline std::shared_ptr<Workbook> saveAndOpen(Workbook& book, const std::string& path) {
  std::u16string error;
  EXPECT_TRUE(book.save(path, error)) << toUtf8(error);
  return openBook(path);
}

/// One part of an .xlsx file as stored now.
inline std::string partOf(const std::string& path, const std::string& part) {
  std::string error;
  xlsx::ZipPackage pkg;
  if (!pkg.load(readFile(path), error)) return "(not a zip: " + error + ")";
  return pkg.read(part, error).value_or("(missing)");
}

}  // namespace korvex::testing
