// The cell formats of a workbook (xl/styles.xml): which formats show a
// number as a date, and new date formats derived from a cell's own format
// when a script writes a date into it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace korvex::xlsx {

class Styles {
 public:
  /// Reads the part; an empty text means the workbook has none.
  bool parse(std::string xml, std::string& error);

  /// Whether cell format `index` (the cell's "s") shows a date.
  bool isDate(std::int32_t index) const;
  /// A cell format like `base` but showing a date (with the time of day when
  /// `withTime`): `base` itself when it shows a date already, else one added
  /// once and reused.
  std::int32_t dateStyle(std::int32_t base, bool withTime);

  /// Whether formats were added; patched() is then the new part.
  bool changed() const noexcept { return !added_.empty(); }
  /// Whether the part had to be made because the workbook had none.
  bool created() const noexcept { return created_; }
  std::string patched() const;

 private:
  struct Format {
    std::int32_t numFmtId = 0;
    std::size_t begin = 0, tagEnd = 0, end = 0;
    std::vector<std::pair<std::string, std::string>> attributes;  // unprefixed, in order
  };
  friend class StylesReader;

  std::string xml_;
  bool created_ = false;
  std::map<std::int32_t, std::string> customFormats_;  // numFmtId -> code
  std::vector<Format> formats_;                        // cellXfs
  std::size_t cellXfsBegin_ = 0, cellXfsTagEnd_ = 0, cellXfsEnd_ = 0;
  bool hasCellXfs_ = false;
  std::string prefix_;
  std::vector<std::string> added_;  // new xf elements
  std::map<std::pair<std::int32_t, bool>, std::int32_t> derived_;
};

/// A stylesheet with only the default cell format.
std::string_view minimalStylesXml() noexcept;

/// Whether a number format code shows a date or a time.
bool isDateFormatCode(std::string_view code);

}  // namespace korvex::xlsx
