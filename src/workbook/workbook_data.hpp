// The state behind a Workbook: the package, the parts read from it and the
// sheets, shared by the workbook and the sheet and range objects it hands
// out.
#pragma once

#include <string>
#include <vector>

#include "korvex/workbook.hpp"
#include "workbook/sheet_part.hpp"
#include "workbook/styles.hpp"
#include "workbook/zip_package.hpp"

namespace korvex {

struct Workbook::Data {
  struct Sheet {
    std::u16string name;
    std::string part;  // path inside the package
    xlsx::SheetPart cells;
  };

  std::string path;
  WorkbookLimits limits;
  xlsx::ZipPackage package;
  std::string workbookPart;  // usually xl/workbook.xml
  std::string stylesPart;    // empty when the workbook has none
  std::string calcChainPart;
  xlsx::Styles styles;
  std::vector<std::u16string> sharedStrings;
  xlsx::DateSystem dates;
  std::vector<Sheet> sheets;
  bool modified = false;
  bool formulaWritten = false;

  /// Reads the package's workbook, styles, shared strings and sheets;
  /// false with a message when it is not a readable workbook.
  bool load(std::string& error);
  /// The package bytes with every write applied.
  bool serialize(std::string& out, std::string& error);
};

namespace xlsx {
/// A package holding a new workbook with one empty sheet "Sheet1".
ZipPackage newWorkbookPackage();
}  // namespace xlsx

}  // namespace korvex
