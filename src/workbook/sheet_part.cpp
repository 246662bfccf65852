#include "workbook/sheet_part.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "values/calendar.hpp"
#include "workbook/xml_scan.hpp"

namespace korvex::xlsx {

namespace {

constexpr double k1904Offset = 1462;
// The first day a spreadsheet's 1900 date system counts right: it takes
// 1900 for a leap year, so serials before 1900-03-01 are one day off.
constexpr double kFirstTrueSerial = 61;

std::int32_t toInt(std::string_view s, std::int32_t fallback) {
  std::int32_t v = fallback;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
  return r.ec == std::errc() && r.ptr == s.data() + s.size() ? v : fallback;
}

std::int64_t toInt64(std::string_view s, std::int64_t fallback) {
  std::int64_t v = fallback;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
  if (r.ec == std::errc::result_out_of_range) return INT64_MAX;  // refused by the caller
  return r.ec == std::errc() && r.ptr == s.data() + s.size() ? v : fallback;
}

bool toNumber(std::string_view s, double& out) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '+')) s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  const auto r = std::from_chars(s.data(), s.data() + s.size(), out);
  return r.ec == std::errc() && r.ptr == s.data() + s.size() && !s.empty();
}

std::string numberText(double v) {
  char buffer[32];
  const auto r = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, r.ptr);
}

// "2024-03-01", "2024-03-01T08:30:00" and "08:30:00" (cells of type "d").
bool parseIsoDate(std::string_view s, double& serial) {
  int y = 1899, mo = 12, d = 30, h = 0, mi = 0, sec = 0;
  const std::string text(s);
  const bool hasDate = s.size() >= 10 && s[4] == '-';
  const char* time = text.c_str();
  if (hasDate) {
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d", &y, &mo, &d) != 3) return false;
    time = text.size() > 10 && (text[10] == 'T' || text[10] == ' ') ? text.c_str() + 11 : nullptr;
  }
  if (time != nullptr && std::sscanf(time, "%2d:%2d:%2d", &h, &mi, &sec) < 2) {
    if (!hasDate) return false;
  }
  if (mo < 1 || mo > 12 || d < 1 || d > 31) return false;
  serial = vb::combineSerial(vb::daysFromCivil(y, mo, d), vb::timeFraction(h, mi, sec));
  return true;
}

}  // namespace

double DateSystem::toScript(double x) const noexcept {
  if (from1904) return x + k1904Offset;
  return x >= 1 && x < kFirstTrueSerial - 1 ? x + 1 : x;
}

double DateSystem::toSheet(double x) const noexcept {
  if (from1904) return x - k1904Offset;
  return x >= 2 && x < kFirstTrueSerial ? x - 1 : x;
}

class SheetReader : public XmlHandler {
 public:
  SheetReader(SheetPart& sheet, const std::vector<std::u16string>& strings, const Styles& styles,
              std::uint64_t& cellsLeft)
      : s_(sheet), strings_(strings), styles_(styles), cellsLeft_(cellsLeft) {}

  // Rows are taken only as children of sheetData, cells only as children
  // of a row, a cell's parts only as its children: the patch replaces and
  // inserts whole rows and cells, which is faithful only at those places.
  void onStart(const XmlStart& e) override {
    ++depth_;
    if (!e.inMain()) {
      capture_ = nullptr;
      return;
    }
    const bool inRow = rowDepth_ != 0 && depth_ == rowDepth_ + 1;
    const bool inCell = cellDepth_ != 0 && depth_ == cellDepth_ + 1;
    if (e.name == "dimension") {
      s_.hasDimension_ = true;
      s_.dimBegin_ = e.begin;
      s_.dimEnd_ = e.tagEnd;
      if (const auto* ref = e.attribute("ref")) s_.dimRef_ = std::string(*ref);
    } else if (e.name == "sheetData") {
      s_.hasSheetData_ = true;
      dataDepth_ = depth_;
      s_.dataBegin_ = e.begin;
      s_.dataTagEnd_ = e.tagEnd;
      s_.prefix_ = elementPrefix(s_.xml_, e.begin);
    } else if (dataDepth_ != 0 && depth_ == dataDepth_ + 1 && e.name == "row") {
      rowDepth_ = depth_;
      // A row without a number follows the one before; the next number is
      // taken wide, so that one after the last the sheet has is refused
      // rather than overflowing.
      const auto* r = e.attribute("r");
      const std::int64_t next = std::int64_t{row_} + 1;
      const std::int64_t number = r != nullptr ? toInt64(*r, next) : next;
      if (number < 1 || number > kMaxRows) {
        fail("行号 " + std::to_string(number) + " 超出工作表的范围 (1 至 " +
             std::to_string(kMaxRows) + ")");
        return;
      }
      row_ = static_cast<std::int32_t>(number);
      column_ = 0;
      auto& row = s_.rows_[row_];
      row.begin = e.begin;
      row.tagEnd = e.tagEnd;
    } else if (inRow && e.name == "c") {
      cellDepth_ = depth_;
      if (cellsLeft_ == 0) {
        fail("单元格太多 (所有工作表与共享字符串合计的上限已到)");
        return;
      }
      --cellsLeft_;
      slot_ = SheetPart::Slot();
      slot_.begin = e.begin;
      const auto* r = e.attribute("r");
      const auto ref = r != nullptr ? parseCellName(*r) : std::nullopt;
      column_ = ref ? ref->column : column_ + 1;
      if (column_ > kMaxColumns) {
        fail("第 " + std::to_string(row_) + " 行的单元格超出工作表的列数 (" +
             std::to_string(kMaxColumns) + ")");
        return;
      }
      const auto* t = e.attribute("t");
      type_ = t != nullptr ? std::string(*t) : std::string();
      const auto* s = e.attribute("s");
      slot_.style = s != nullptr ? toInt(*s, -1) : -1;
      value_.clear();
      text_.clear();
      hasValue_ = hasFormula_ = inInline_ = false;
    } else if (inCell && e.name == "v") {
      capture_ = &value_;
      hasValue_ = true;
    } else if (inCell && e.name == "f") {
      capture_ = &slot_.content.formula;
      hasFormula_ = true;
      const auto* t = e.attribute("t");
      const auto* si = e.attribute("si");
      if (t != nullptr && *t == "shared" && si != nullptr) {
        slot_.sharedIndex = toInt(*si, -1);
        slot_.sharedMaster = e.attribute("ref") != nullptr;
      }
    } else if (inCell && e.name == "is") {
      inInline_ = true;
      hasValue_ = true;
    } else if (e.name == "rPh") {
      skipping_ = true;  // phonetic guides are not part of the text
    } else if (e.name == "t" && inInline_ && !skipping_) {
      capture_ = &text_;
    }
  }

  void onEnd(std::string_view ns, std::string_view name, std::size_t end) override {
    capture_ = nullptr;
    const int depth = depth_--;
    if (ns != kMainNs && ns != kStrictMainNs) return;
    if (name == "rPh") {
      skipping_ = false;
    } else if (name == "is" && depth == cellDepth_ + 1) {
      inInline_ = false;
    } else if (depth == cellDepth_) {
      cellDepth_ = 0;
      slot_.end = end;
      finishCell();
      s_.rows_[row_].cells[column_] = std::move(slot_);
    } else if (depth == rowDepth_) {
      rowDepth_ = 0;
      s_.rows_[row_].end = end;
    } else if (name == "dimension") {
      s_.dimEnd_ = end;
    } else if (depth == dataDepth_) {
      dataDepth_ = 0;
      s_.dataEnd_ = end;
    }
  }

  void onText(std::string_view text) override {
    if (capture_ != nullptr) capture_->append(text);
  }

  /// Fills in the formulas of the cells that share another cell's formula.
  void resolveShared() {
    std::map<std::int32_t, std::pair<CellRef, std::string>> masters;
    for (const auto& [r, row] : s_.rows_) {
      for (const auto& [c, slot] : row.cells) {
        if (slot.sharedMaster) masters[slot.sharedIndex] = {{r, c}, slot.content.formula};
      }
    }
    for (auto& [r, row] : s_.rows_) {
      for (auto& [c, slot] : row.cells) {
        if (slot.sharedIndex < 0 || slot.sharedMaster) continue;
        const auto it = masters.find(slot.sharedIndex);
        if (it == masters.end()) continue;
        const CellRef anchor = it->second.first;
        slot.content.kind = CellContent::Kind::Formula;
        slot.content.formula = shiftFormula(it->second.second, r - anchor.row, c - anchor.column);
      }
    }
  }

 private:
  void finishCell() {
    CellContent& c = slot_.content;
    c.kind = hasFormula_ ? CellContent::Kind::Formula : CellContent::Kind::Value;
    if (!hasValue_) {
      if (!hasFormula_) c.kind = CellContent::Kind::Blank;
      return;
    }
    double number = 0;
    if (type_ == "s") {
      const std::int32_t i = toInt(value_, -1);
      if (i >= 0 && static_cast<std::size_t>(i) < strings_.size()) {
        c.value = Value::string(strings_[static_cast<std::size_t>(i)]);
      }
    } else if (type_ == "str") {
      c.value = Value::string(fromUtf8(value_));
    } else if (type_ == "inlineStr") {
      c.value = Value::string(fromUtf8(text_));
    } else if (type_ == "b") {
      c.value = Value::boolean(value_ != "0" && !value_.empty());
    } else if (type_ == "e") {
      if (!hasFormula_) c.kind = CellContent::Kind::Error;
      c.value = Value::string(fromUtf8(value_));
    } else if (type_ == "d") {
      if (parseIsoDate(value_, number)) c.value = Value::date(number);
    } else if (toNumber(value_, number)) {
      c.value = styles_.isDate(slot_.style) ? Value::date(s_.dates_.toScript(number))
                                            : Value::dbl(number);
    }
    if (c.value.isEmpty() && !hasFormula_) c.kind = CellContent::Kind::Blank;
  }

  SheetPart& s_;
  const std::vector<std::u16string>& strings_;
  const Styles& styles_;
  std::uint64_t& cellsLeft_;
  // How deep the open sheetData, row and cell are (0: none open).
  int depth_ = 0, dataDepth_ = 0, rowDepth_ = 0, cellDepth_ = 0;
  bool inInline_ = false, skipping_ = false;
  bool hasValue_ = false, hasFormula_ = false;
  std::int32_t row_ = 0, column_ = 0;
  SheetPart::Slot slot_;
  std::string type_, value_, text_;
  std::string* capture_ = nullptr;
};

bool SheetPart::parse(std::string xml, const std::vector<std::u16string>& sharedStrings,
                      const Styles& styles, DateSystem dates, std::uint64_t& cellsLeft,
                      std::string& error) {
  *this = SheetPart();
  xml_ = std::move(xml);
  dates_ = dates;
  SheetReader reader(*this, sharedStrings, styles, cellsLeft);
  if (!scanXml(xml_, reader, error)) return false;
  if (!hasSheetData_) {
    error = "工作表缺少 sheetData 元素";
    return false;
  }
  reader.resolveShared();
  return true;
}

CellContent SheetPart::read(CellRef ref) const {
  if (const auto it = edits_.find({ref.row, ref.column}); it != edits_.end()) return it->second;
  const auto row = rows_.find(ref.row);
  if (row == rows_.end()) return {};
  const auto cell = row->second.cells.find(ref.column);
  return cell == row->second.cells.end() ? CellContent{} : cell->second.content;
}

void SheetPart::write(CellRef ref, CellContent content) {
  // Overwriting the cell that holds a shared formula: the cells sharing it
  // get the formula written out in full, as it reads in each of them.
  const auto row = rows_.find(ref.row);
  if (row != rows_.end()) {
    const auto cell = row->second.cells.find(ref.column);
    if (cell != row->second.cells.end() && cell->second.sharedMaster) {
      const std::int32_t si = cell->second.sharedIndex;
      for (const auto& [r, other] : rows_) {
        for (const auto& [c, slot] : other.cells) {
          if (slot.sharedIndex == si && !slot.sharedMaster && !edits_.contains({r, c})) {
            edits_[{r, c}] = slot.content;
          }
        }
      }
    }
  }
  edits_[{ref.row, ref.column}] = std::move(content);
}

std::string SheetPart::cellXml(CellRef ref, std::int32_t style, const CellContent& c,
                               const std::string& prefix, Styles& styles) const {
  using Kind = CellContent::Kind;
  // An element spelled with the prefix in use where it goes.
  const auto element = [&prefix](std::string_view name, const std::string& content,
                                 std::string_view attributes = {}) {
    std::string out = "<" + prefix;
    out.append(name).append(attributes).append(">").append(content);
    return out.append("</").append(prefix).append(name).append(">");
  };
  std::string type, body;
  switch (c.kind) {
    case Kind::Blank:
      if (style <= 0) return {};  // nothing left to keep
      break;
    case Kind::Formula:
      body = element("f", escapeXml(c.formula));
      break;
    case Kind::Error:
      type = "e";
      body = element("v", escapeXml(toUtf8(c.value.stringValue())));
      break;
    case Kind::Value: {
      const Value& v = c.value;
      std::string text;
      if (v.isString()) {
        type = "inlineStr";
        body = element("is",
                       element("t", escapeXml(toUtf8(v.stringValue())), " xml:space=\"preserve\""));
        break;
      }
      if (v.type() == VarType::Boolean) {
        type = "b";
        text = v.booleanValue() ? "1" : "0";
      } else if (v.type() == VarType::Date) {
        const double serial = dates_.toSheet(v.doubleValue());
        style = styles.dateStyle(style < 0 ? 0 : style, serial != std::floor(serial));
        text = numberText(serial);
      } else {
        text = numberText(v.doubleValue());
      }
      body = element("v", text);
      break;
    }
  }
  std::string attributes = " r=\"" + cellName(ref) + "\"";
  if (style >= 0) attributes += " s=\"" + std::to_string(style) + "\"";
  if (!type.empty()) attributes += " t=\"" + type + "\"";
  if (body.empty()) return "<" + prefix + "c" + attributes + "/>";
  return element("c", body, attributes);
}

std::string SheetPart::patched(Styles& styles) const {
  Splicer edits;
  const bool dataEmpty = dataEnd_ == dataTagEnd_;
  std::string newRowsForEmptyData;
  CellRef low{kMaxRows + 1, kMaxColumns + 1}, high{0, 0};
  const auto cover = [&](CellRef r) {
    low = {std::min(low.row, r.row), std::min(low.column, r.column)};
    high = {std::max(high.row, r.row), std::max(high.column, r.column)};
  };

  auto it = edits_.begin();
  while (it != edits_.end()) {
    const std::int32_t r = it->first.first;
    // This row's edits, by column.
    std::map<std::int32_t, const CellContent*> written;
    for (; it != edits_.end() && it->first.first == r; ++it) {
      written[it->first.second] = &it->second;
      if (it->second.kind != CellContent::Kind::Blank) cover({r, it->first.second});
    }
    const auto row = rows_.find(r);
    std::string text;
    if (row == rows_.end()) {
      text = "<" + prefix_ + "row r=\"" + std::to_string(r) + "\">";
      for (const auto& [c, content] : written) {
        text += cellXml({r, c}, -1, *content, prefix_, styles);
      }
      text += "</" + prefix_ + "row>";
      if (dataEmpty) {
        newRowsForEmptyData += text;
        continue;
      }
      const auto next = rows_.upper_bound(r);
      const std::size_t at =
          next != rows_.end() ? next->second.begin : xml_.rfind('<', dataEnd_ - 1);
      edits.replace(at, at, std::move(text));
      continue;
    }
    // An existing row: its start tag, then old and written cells merged by
    // column, new ones spelled as the row is (its prefix is bound inside it).
    const Row& old = row->second;
    const std::string prefix = elementPrefix(xml_, old.begin);
    std::string start = xml_.substr(old.begin, old.tagEnd - old.begin);
    // "spans" is a hint of the columns the row uses; written cells may fall
    // outside it, so it goes.
    if (const auto spans = start.find(" spans=\""); spans != std::string::npos) {
      const auto close = start.find('"', spans + 8);
      if (close != std::string::npos) start.erase(spans, close + 1 - spans);
    }
    const bool selfClosing = old.end == old.tagEnd;
    if (selfClosing) {
      std::size_t slash = start.rfind('/');
      start.erase(slash);
      start += '>';
    }
    text = std::move(start);
    auto oldCell = old.cells.begin();
    auto newCell = written.begin();
    while (oldCell != old.cells.end() || newCell != written.end()) {
      const bool takeNew = oldCell == old.cells.end() ||
                           (newCell != written.end() && newCell->first <= oldCell->first);
      if (takeNew) {
        std::int32_t style = -1;
        if (oldCell != old.cells.end() && oldCell->first == newCell->first) {
          style = oldCell->second.style;
          ++oldCell;
        }
        text += cellXml({r, newCell->first}, style, *newCell->second, prefix, styles);
        ++newCell;
      } else {
        text.append(xml_, oldCell->second.begin, oldCell->second.end - oldCell->second.begin);
        ++oldCell;
      }
    }
    text += "</" + prefix + "row>";
    edits.replace(old.begin, old.end, std::move(text));
  }
  if (dataEmpty && !newRowsForEmptyData.empty()) {
    std::string start = xml_.substr(dataBegin_, dataTagEnd_ - dataBegin_);
    start.erase(start.rfind('/'));
    edits.replace(dataBegin_, dataEnd_,
                  start + ">" + newRowsForEmptyData + "</" + prefix_ + "sheetData>");
  }
  // The used range grows to take in the written cells.
  if (hasDimension_ && high.row > 0) {
    const auto colon = dimRef_.find(':');
    const auto first = parseCellName(dimRef_.substr(0, colon));
    const auto last = colon == std::string::npos ? first : parseCellName(dimRef_.substr(colon + 1));
    const bool blankSheet = !first || (dimRef_ == "A1" && rows_.empty());
    if (!blankSheet) {
      cover(*first);
      if (last) cover(*last);
    }
    const std::string ref = low.row == high.row && low.column == high.column
                                ? cellName(low)
                                : cellName(low) + ":" + cellName(high);
    edits.replace(dimBegin_, dimEnd_,
                  "<" + elementPrefix(xml_, dimBegin_) + "dimension ref=\"" + ref + "\"/>");
  }
  return edits.apply(xml_);
}

}  // namespace korvex::xlsx
