// The late-bound objects a script reaches through ExcelBook: the workbook,
// its Worksheets collection, a worksheet and a range of cells.
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "host/collection.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "workbook/workbook_data.hpp"

namespace korvex {

namespace {

using xlsx::CellContent;
using xlsx::CellRef;
using Data = Workbook::Data;

constexpr std::int32_t kAppError = 1004;  // the spreadsheet's own failures

using host::equalsNoCase;

std::u16string digits(std::int64_t n) { return fromUtf8(std::to_string(n)); }

DispatchResult typeMismatch() {
  return DispatchResult::failure(vb::kTypeMismatch,
                                 std::u16string(vb::runtimeErrorText(vb::kTypeMismatch)));
}

DispatchResult wrongArguments(std::u16string_view member, std::size_t wanted) {
  return DispatchResult::failure(450, std::u16string(member) + u" 需要 " +
                                          digits(static_cast<std::int64_t>(wanted)) + u" 个参数");
}

// A whole number argument; nullopt when it is none.
std::optional<std::int64_t> wholeNumber(const Value& v) {
  if (v.isString() || v.isEmpty() || v.isNull() || v.isObject() || v.isArray()) return {};
  try {
    return vb::toLong(v, Locale::zhCN());
  } catch (const vb::RuntimeError&) {
    return {};
  }
}

std::string numberText(double v) {
  char buffer[32];
  const auto r = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, r.ptr);
}

// A cell's text is stored as XML, which holds no control character but the
// tab and the line breaks: one written there would be lost without a word.
std::optional<DispatchResult> unstorable(std::u16string_view text) {
  for (const char16_t c : text) {
    if (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') {
      char code[8];
      std::snprintf(code, sizeof code, "%04X", static_cast<unsigned>(c));
      return DispatchResult::failure(kAppError, u"单元格不能保存控制字符 U+" + fromUtf8(code));
    }
  }
  return std::nullopt;
}

std::optional<DispatchResult> unstorable(const CellContent& content) {
  if (content.kind == CellContent::Kind::Formula) return unstorable(fromUtf8(content.formula));
  if (content.value.isString()) return unstorable(content.value.stringValue());
  return std::nullopt;
}

// Text written into a cell. A leading apostrophe only says "keep as text".
CellContent textContent(std::u16string text) {
  if (!text.empty() && text[0] == u'\'') text.erase(0, 1);
  return {CellContent::Kind::Value, Value::string(std::move(text)), {}};
}

std::optional<CellContent> contentOf(const Value& v) {
  using Kind = CellContent::Kind;
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null:
      return CellContent{};
    case VarType::String:
      return textContent(v.stringValue());
    case VarType::Boolean:
    case VarType::Date:
      return CellContent{Kind::Value, v, {}};
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double:
    case VarType::Currency:
      return CellContent{Kind::Value, Value::dbl(vb::toDouble(v, Locale::zhCN())), {}};
    case VarType::Object:
    case VarType::Array:
      break;
  }
  return std::nullopt;
}

// What "Formula = text" stores: a formula after "=", else a constant as if
// typed in.
CellContent formulaContent(const std::u16string& text) {
  if (text.empty()) return {};
  if (text[0] == u'=') return {CellContent::Kind::Formula, {}, toUtf8(text.substr(1))};
  const std::string utf8 = toUtf8(text);
  double number = 0;
  const auto r = std::from_chars(utf8.data(), utf8.data() + utf8.size(), number);
  if (r.ec == std::errc() && r.ptr == utf8.data() + utf8.size()) {
    return {CellContent::Kind::Value, Value::dbl(number), {}};
  }
  return textContent(text);
}

Value valueOf(const CellContent& c) { return c.value; }

Value formulaOf(const CellContent& c) {
  switch (c.kind) {
    case CellContent::Kind::Formula:
      return Value::string(u"=" + fromUtf8(c.formula));
    case CellContent::Kind::Blank:
      return Value::string(u"");
    default:
      break;
  }
  const Value& v = c.value;
  if (v.isString()) return v;
  if (v.type() == VarType::Boolean) return Value::string(v.booleanValue() ? u"TRUE" : u"FALSE");
  return Value::string(fromUtf8(numberText(v.doubleValue())));
}

class RangeObject : public host::PropertyObject {
 public:
  RangeObject(std::shared_ptr<Data> data, std::size_t sheet, CellRef first, std::int32_t rows,
              std::int32_t columns)
      : data_(std::move(data)), sheet_(sheet), first_(first), rows_(rows), columns_(columns) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    if (equalsNoCase(name, u"Value") || equalsNoCase(name, u"Value2")) return read(valueOf);
    if (equalsNoCase(name, u"Formula")) return read(formulaOf);
    if (equalsNoCase(name, u"Resize")) return resize(args);
    if (equalsNoCase(name, u"Row")) return DispatchResult::success(Value::lng(first_.row));
    if (equalsNoCase(name, u"Column")) return DispatchResult::success(Value::lng(first_.column));
    if (equalsNoCase(name, u"Count")) {
      return DispatchResult::success(Value::dbl(static_cast<double>(rows_) * columns_));
    }
    return memberNotFound(name);
  }

  DispatchResult setProperty(std::u16string_view name, std::span<const Value>,
                             const Value& value) override {
    if (equalsNoCase(name, u"Value") || equalsNoCase(name, u"Value2")) return writeValues(value);
    if (equalsNoCase(name, u"Formula")) return writeFormulas(value);
    return memberNotFound(name);
  }

 private:
  xlsx::SheetPart& cells() { return data_->sheets[sheet_].cells; }

  template <typename Fn>
  DispatchResult read(Fn&& fn) {
    if (rows_ == 1 && columns_ == 1) return DispatchResult::success(fn(cells().read(first_)));
    Array a({{1, rows_}, {1, columns_}});
    std::size_t k = 0;
    for (std::int32_t r = 0; r < rows_; ++r) {
      for (std::int32_t c = 0; c < columns_; ++c) {
        a.elements()[k++] = fn(cells().read({first_.row + r, first_.column + c}));
      }
    }
    return DispatchResult::success(Value::array(std::move(a)));
  }

  DispatchResult resize(std::span<const Value> args) {
    if (args.size() != 2) return wrongArguments(u"Resize", 2);
    const auto rows = wholeNumber(args[0]);
    const auto columns = wholeNumber(args[1]);
    if (!rows || !columns) return typeMismatch();
    if (*rows < 1 || *columns < 1 || first_.row + *rows - 1 > xlsx::kMaxRows ||
        first_.column + *columns - 1 > xlsx::kMaxColumns) {
      return DispatchResult::failure(
          kAppError,
          u"Resize(" + digits(*rows) + u", " + digits(*columns) +
              u") 无效: 行数和列数至少为 1, 且区域不能超出工作表 (1048576 行, 16384 列)");
    }
    return DispatchResult::success(Value::object(
        std::make_shared<RangeObject>(data_, sheet_, first_, static_cast<std::int32_t>(*rows),
                                      static_cast<std::int32_t>(*columns))));
  }

  // Every cell's content is worked out before the first is written, so a
  // bad element leaves the range as it was.
  DispatchResult writeValues(const Value& value) {
    std::vector<CellContent> contents;
    contents.reserve(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_));
    const Array* array = value.isArray() ? &value.arrayValue() : nullptr;
    if (array != nullptr && (array->dimensions() == 0 || array->dimensions() > 2)) {
      return typeMismatch();
    }
    for (std::int32_t r = 0; r < rows_; ++r) {
      for (std::int32_t c = 0; c < columns_; ++c) {
        const Value* element = &value;
        if (array != nullptr) {
          // A one-dimensional array is one row, repeated down the range.
          std::int32_t index[2] = {array->lbound(0) + r, 0};
          if (array->dimensions() == 1) {
            index[0] = array->lbound(0) + c;
          } else {
            index[1] = array->lbound(1) + c;
          }
          element = array->at(std::span<const std::int32_t>(index, array->dimensions()));
        }
        if (element == nullptr) {
          contents.push_back({CellContent::Kind::Error, Value::string(u"#N/A"), {}});
          continue;
        }
        auto content = contentOf(*element);
        if (!content) return typeMismatch();
        if (auto refused = unstorable(*content)) return std::move(*refused);
        contents.push_back(std::move(*content));
      }
    }
    store(contents);
    return DispatchResult::success();
  }

  DispatchResult writeFormulas(const Value& value) {
    if (value.isArray() || value.isObject()) return typeMismatch();
    std::u16string text;
    try {
      text = value.isNull() || value.isEmpty() ? u"" : vb::toString(value, Locale::zhCN());
    } catch (const vb::RuntimeError& e) {
      return DispatchResult::failure(e.number(), e.description());
    }
    if (auto refused = unstorable(text)) return std::move(*refused);
    std::vector<CellContent> contents(static_cast<std::size_t>(rows_) * columns_,
                                      formulaContent(text));
    store(contents);
    return DispatchResult::success();
  }

  void store(std::vector<CellContent>& contents) {
    std::size_t k = 0;
    for (std::int32_t r = 0; r < rows_; ++r) {
      for (std::int32_t c = 0; c < columns_; ++c) {
        CellContent& content = contents[k++];
        if (content.kind == CellContent::Kind::Formula) data_->formulaWritten = true;
        cells().write({first_.row + r, first_.column + c}, std::move(content));
      }
    }
    data_->modified = true;
  }

  std::shared_ptr<Data> data_;
  std::size_t sheet_;
  CellRef first_;
  std::int32_t rows_, columns_;
};

class SheetObject : public host::PropertyObject {
 public:
  SheetObject(std::shared_ptr<Data> data, std::size_t index)
      : data_(std::move(data)), index_(index) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    if (equalsNoCase(name, u"Index")) {
      return DispatchResult::success(Value::lng(static_cast<std::int32_t>(index_ + 1)));
    }
    if (equalsNoCase(name, u"Name")) {
      return DispatchResult::success(Value::string(data_->sheets[index_].name));
    }
    if (equalsNoCase(name, u"Cells")) return cell(args);
    return memberNotFound(name);
  }

 private:
  DispatchResult cell(std::span<const Value> args) {
    if (args.size() != 2) return wrongArguments(u"Cells", 2);
    const auto row = wholeNumber(args[0]);
    std::optional<std::int64_t> column = wholeNumber(args[1]);
    if (!column && args[1].isString()) {  // Cells(1, "B")
      if (const auto ref = xlsx::parseCellName(toUtf8(args[1].stringValue()) + "1")) {
        column = ref->column;
      }
    }
    if (!row || !column) return typeMismatch();
    if (*row < 1 || *row > xlsx::kMaxRows || *column < 1 || *column > xlsx::kMaxColumns) {
      return DispatchResult::failure(
          kAppError, u"单元格 (行 " + digits(*row) + u", 列 " + digits(*column) +
                         u") 超出工作表范围: 行应在 1 到 1048576 之间, 列应在 1 到 16384 之间");
    }
    return DispatchResult::success(Value::object(std::make_shared<RangeObject>(
        data_, index_, CellRef{static_cast<std::int32_t>(*row), static_cast<std::int32_t>(*column)},
        1, 1)));
  }

  std::shared_ptr<Data> data_;
  std::size_t index_;
};

DispatchResult sheetOf(const std::shared_ptr<Data>& data, const Value& selector) {
  if (selector.isString()) {
    for (std::size_t i = 0; i < data->sheets.size(); ++i) {
      if (equalsNoCase(data->sheets[i].name, selector.stringValue())) {
        return DispatchResult::success(Value::object(std::make_shared<SheetObject>(data, i)));
      }
    }
    return DispatchResult::failure(
        vb::kSubscript, u"下标越界: 工作簿中没有名为 '" + selector.stringValue() + u"' 的工作表");
  }
  const auto index = wholeNumber(selector);
  if (!index) return typeMismatch();
  if (*index < 1 || static_cast<std::size_t>(*index) > data->sheets.size()) {
    return DispatchResult::failure(
        vb::kSubscript, u"下标越界: 工作簿中没有第 " + digits(*index) + u" 张工作表 (共 " +
                            digits(static_cast<std::int64_t>(data->sheets.size())) + u" 张)");
  }
  return DispatchResult::success(
      Value::object(std::make_shared<SheetObject>(data, static_cast<std::size_t>(*index - 1))));
}

class WorksheetsObject : public HostCollection {
 public:
  explicit WorksheetsObject(std::shared_ptr<Data> data) : data_(std::move(data)) {}

  DispatchResult getDefault(std::span<const Value> args) override {
    if (args.size() != 1) return wrongArguments(u"Item", 1);
    return sheetOf(data_, args[0]);
  }

 protected:
  std::size_t count() const override { return data_->sheets.size(); }

 private:
  std::shared_ptr<Data> data_;
};

}  // namespace

Workbook::Workbook(std::shared_ptr<Data> data) noexcept
    : data_(std::move(data)), worksheets_(std::make_shared<WorksheetsObject>(data_)) {}

Workbook::~Workbook() = default;

const std::string& Workbook::path() const noexcept { return data_->path; }
std::size_t Workbook::sheetCount() const noexcept { return data_->sheets.size(); }
bool Workbook::modified() const noexcept { return data_->modified; }
DispatchResult Workbook::sheet(const Value& selector) { return sheetOf(data_, selector); }

DispatchResult Workbook::getProperty(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"Worksheets") || equalsNoCase(name, u"Sheets")) {
    return host::collectionOrItem(worksheets_, args);
  }
  if (equalsNoCase(name, u"Name")) {
    const auto slash = data_->path.rfind('/');
    return DispatchResult::success(Value::string(
        fromUtf8(slash == std::string::npos ? data_->path : data_->path.substr(slash + 1))));
  }
  return memberNotFound(name);
}

DispatchResult Workbook::setProperty(std::u16string_view name, std::span<const Value>,
                                     const Value&) {
  return memberNotFound(name);
}

DispatchResult Workbook::callMethod(std::u16string_view name, std::span<const Value> args) {
  return getProperty(name, args);
}

}  // namespace korvex
