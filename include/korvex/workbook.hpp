// Workbook: an .xlsx file offered to scripts as the engine's ExcelBook.
//
//   std::u16string error;
//   auto book = korvex::Workbook::open("工资.xlsx", error);
//   if (!book) { report(error); return; }
//   engine.SetExcelBook(book);
//   engine.SetActiveExcelSheet(book->sheet(korvex::Value::string(u"一月")).value.objectValue());
//   engine.Execute();
//   if (book->modified() && !book->save("工资.xlsx", error)) report(error);
//
// Late-bound members (names case-insensitive):
//   workbook:    Worksheets (Count, Item(number from 1 | name); Item is the
//                default member), Name
//   worksheet:   index, Name, Cells(row, column) -> range
//   range:       Value (default, read and write), Formula (read and write),
//                Resize(rows, columns) -> range, Row, Column, Count
// A range's Value reads one cell's value (a number as Double, a number under
// a date format as Date, text, Boolean, Empty; a formula's last result) or,
// for several cells, a 1-based two-dimensional array. Writing takes a value
// for every cell or an array laid over the range from its lower bounds (a
// one-dimensional array fills each row; cells beyond the array get #N/A).
// Text keeps its type; a leading apostrophe only marks text and is dropped.
// Formula writes "=..." as a formula and anything else as a constant.
//
// Saving patches the file: parts and cells that were not written keep their
// bytes. Formulas are written without results and the workbook asks to be
// recalculated when opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "korvex/host_object.hpp"

namespace korvex {

/// How much a workbook may take when it is opened. A file beyond them is
/// refused with a message instead of exhausting memory: an .xlsx is
/// compressed, and a small file can declare or inflate to gigabytes.
struct WorkbookLimits {
  /// The largest part (one sheet, the shared strings, ...) once inflated,
  /// by its declared size and by what it actually inflates to.
  std::uint64_t maxPartBytes = std::uint64_t{256} << 20;
  /// Cells of all sheets together, shared strings counted alongside them.
  std::uint64_t maxCells = 4'000'000;
};

class Workbook : public HostObject {
 public:
  struct Data;
  explicit Workbook(std::shared_ptr<Data> data) noexcept;
  ~Workbook() override;

  /// Opens an .xlsx file. A path that does not exist gives a new workbook
  /// with one empty sheet "Sheet1" (written by save()). On failure returns
  /// nullptr and a message; also when the file goes beyond `limits` or
  /// memory runs out.
  static std::shared_ptr<Workbook> open(const std::string& path, std::u16string& error,
                                        const WorkbookLimits& limits = WorkbookLimits());
  /// A new workbook with one empty sheet "Sheet1".
  static std::shared_ptr<Workbook> createNew();

  const std::string& path() const noexcept;
  std::size_t sheetCount() const noexcept;
  /// Worksheets.Item(selector): the sheet object, or error 9.
  DispatchResult sheet(const Value& selector);
  /// Whether a cell was written since the workbook was opened or saved.
  bool modified() const noexcept;
  /// Writes the workbook to `path` through a temporary file beside it that
  /// then replaces the target. False with a message on failure (the target
  /// is then untouched).
  bool save(const std::string& path, std::u16string& error);

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override;
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override;

 private:
  std::shared_ptr<Data> data_;
  ObjectRef worksheets_;
};

}  // namespace korvex
