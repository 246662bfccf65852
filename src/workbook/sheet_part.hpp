// One worksheet part (xl/worksheets/sheetN.xml): its cells as read, the
// cells written since, and the part patched with those writes. Rows and
// cells that were not written keep their bytes; written cells are spliced
// in at their place in row and column order.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "korvex/value.hpp"
#include "workbook/cell_ref.hpp"
#include "workbook/styles.hpp"

namespace korvex::xlsx {

/// What a cell holds.
struct CellContent {
  enum class Kind : std::uint8_t { Blank, Value, Formula, Error };
  Kind kind = Kind::Blank;
  /// Value: a Double, String, Boolean or Date; Error: the error's text
  /// ("#N/A"); Formula: the last calculated result, if known.
  Value value;
  std::string formula;  // Formula: UTF-8, without the leading '='
};

/// How the workbook counts dates (its "date1904" setting).
struct DateSystem {
  bool from1904 = false;
  double toScript(double sheetSerial) const noexcept;
  double toSheet(double scriptSerial) const noexcept;
};

class SheetPart {
 public:
  /// Reads the part. `sharedStrings` and `styles` give the texts of shared
  /// string cells and tell date formats. Every cell read takes one from
  /// `cellsLeft`; a part with more cells than that is refused, as is one
  /// whose rows or columns lie beyond a sheet's.
  bool parse(std::string xml, const std::vector<std::u16string>& sharedStrings,
             const Styles& styles, DateSystem dates, std::uint64_t& cellsLeft, std::string& error);

  /// The cell as it reads now (written cells included).
  CellContent read(CellRef ref) const;
  void write(CellRef ref, CellContent content);

  bool dirty() const noexcept { return !edits_.empty(); }
  /// The part with the writes spliced in; may add date formats to `styles`.
  std::string patched(Styles& styles) const;

 private:
  struct Slot {
    std::size_t begin = 0, end = 0;  // the <c> element's bytes
    std::int32_t style = -1;
    CellContent content;
    std::int32_t sharedIndex = -1;  // "si" of a shared formula
    bool sharedMaster = false;
  };
  struct Row {
    std::size_t begin = 0, tagEnd = 0, end = 0;
    std::map<std::int32_t, Slot> cells;
  };
  friend class SheetReader;

  std::string cellXml(CellRef ref, std::int32_t style, const CellContent& c,
                      const std::string& prefix, Styles& styles) const;

  std::string xml_;
  DateSystem dates_;
  std::map<std::int32_t, Row> rows_;
  std::map<std::pair<std::int32_t, std::int32_t>, CellContent> edits_;  // (row, column)
  std::string prefix_;  // the element prefix the sheet data uses
  bool hasSheetData_ = false;
  std::size_t dataBegin_ = 0, dataTagEnd_ = 0, dataEnd_ = 0;
  bool hasDimension_ = false;
  std::size_t dimBegin_ = 0, dimEnd_ = 0;
  std::string dimRef_;
};

}  // namespace korvex::xlsx
