#include "workbook/styles.hpp"

#include <charconv>

#include "workbook/xml_scan.hpp"

namespace korvex::xlsx {

namespace {

// Built-in number formats that show dates or times (the East Asian ones
// included, as Chinese workbooks use them).
bool isBuiltinDate(std::int32_t id) {
  return (id >= 14 && id <= 22) || (id >= 27 && id <= 36) || (id >= 45 && id <= 47) ||
         (id >= 50 && id <= 58);
}

constexpr std::int32_t kShortDate = 14;
constexpr std::int32_t kDateTime = 22;

std::int32_t toInt(std::string_view s, std::int32_t fallback) {
  std::int32_t v = fallback;
  const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
  return r.ec == std::errc() ? v : fallback;
}

// A stylesheet without any cell format of its own: the defaults a
// spreadsheet program assumes, plus room for the formats added later.
constexpr std::string_view kMinimalStyles =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
    "<fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts>"
    "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
    "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
    "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
    "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/>"
    "</cellStyleXfs>"
    "<cellXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" "
    "xfId=\"0\"/></cellXfs>"
    "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
    "</styleSheet>";

}  // namespace

std::string_view minimalStylesXml() noexcept { return kMinimalStyles; }

bool isDateFormatCode(std::string_view code) {
  // Only the first section decides; quoted text, escaped characters and
  // bracketed parts (colours, conditions, locales) show no date.
  for (std::size_t i = 0; i < code.size(); ++i) {
    const char c = code[i];
    if (c == ';') return false;
    if (c == '"') {
      while (++i < code.size() && code[i] != '"') {
      }
    } else if (c == '\\' || c == '_' || c == '*') {
      ++i;
    } else if (c == '[') {
      const std::size_t close = code.find(']', i);
      if (close == std::string_view::npos) return false;
      const std::string_view inner = code.substr(i + 1, close - i - 1);
      // Elapsed times: [h], [mm], [ss].
      if (!inner.empty() && (inner[0] == 'h' || inner[0] == 'H' || inner[0] == 'm' ||
                             inner[0] == 'M' || inner[0] == 's' || inner[0] == 'S')) {
        return true;
      }
      i = close;
    } else {
      switch (c) {
        case 'y':
        case 'Y':
        case 'm':
        case 'M':
        case 'd':
        case 'D':
        case 'h':
        case 'H':
        case 's':
        case 'S':
          return true;
        default:
          break;
      }
    }
  }
  return false;
}

class StylesReader : public XmlHandler {
 public:
  explicit StylesReader(Styles& s) : s_(s) {}
  void onStart(const XmlStart& e) override {
    ++depth_;
    if (!e.inMain()) return;
    if ((e.name == "numFmt" || e.name == "xf") && ++entries_ > kMaxEntries) {
      fail("单元格格式太多 (超过 " + std::to_string(kMaxEntries) + " 个)");
      return;
    }
    if (e.name == "numFmt") {
      const auto* id = e.attribute("numFmtId");
      const auto* code = e.attribute("formatCode");
      if (id != nullptr && code != nullptr) s_.customFormats_[toInt(*id, -1)] = std::string(*code);
    } else if (e.name == "cellXfs") {
      inCellXfs_ = true;
      s_.hasCellXfs_ = true;
      s_.cellXfsBegin_ = e.begin;
      s_.cellXfsTagEnd_ = e.tagEnd;
      s_.prefix_ = elementPrefix(s_.xml_, e.begin);
      xfDepth_ = depth_ + 1;
    } else if (inCellXfs_ && e.name == "xf" && depth_ == xfDepth_) {
      Styles::Format f;
      const auto* id = e.attribute("numFmtId");
      f.numFmtId = id != nullptr ? toInt(*id, 0) : 0;
      f.begin = e.begin;
      f.tagEnd = e.tagEnd;
      for (const auto& a : e.attributes) {
        if (a.ns.empty()) f.attributes.emplace_back(a.name, a.value);
      }
      s_.formats_.push_back(std::move(f));
    }
  }
  void onEnd(std::string_view ns, std::string_view name, std::size_t end) override {
    const bool main = ns == kMainNs || ns == kStrictMainNs;
    if (main && inCellXfs_ && name == "xf" && depth_ == xfDepth_) s_.formats_.back().end = end;
    if (main && name == "cellXfs" && inCellXfs_) {
      inCellXfs_ = false;
      s_.cellXfsEnd_ = end;
    }
    --depth_;
  }

 private:
  // Spreadsheet programs keep well under this many formats; the bound
  // keeps a stylesheet of millions of tiny entries from taking gigabytes.
  static constexpr std::size_t kMaxEntries = 65536;
  Styles& s_;
  std::size_t entries_ = 0;
  int depth_ = 0;
  int xfDepth_ = -1;
  bool inCellXfs_ = false;
};

bool Styles::parse(std::string xml, std::string& error) {
  *this = Styles();
  xml_ = std::move(xml);
  if (xml_.empty()) return true;
  StylesReader reader(*this);
  return scanXml(xml_, reader, error);
}

bool Styles::isDate(std::int32_t index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= formats_.size()) return false;
  const std::int32_t id = formats_[static_cast<std::size_t>(index)].numFmtId;
  if (const auto it = customFormats_.find(id); it != customFormats_.end()) {
    return isDateFormatCode(it->second);
  }
  return isBuiltinDate(id);
}

std::int32_t Styles::dateStyle(std::int32_t base, bool withTime) {
  if (isDate(base)) return base;
  if (const auto it = derived_.find({base, withTime}); it != derived_.end()) return it->second;
  if (xml_.empty()) {
    std::string error;
    parse(std::string(kMinimalStyles), error);
    created_ = true;
  }
  // The new format copies the base's font, fill, border and alignment.
  const std::string fmt = std::to_string(withTime ? kDateTime : kShortDate);
  std::string xf = "<" + prefix_ + "xf";
  bool sawFmt = false, sawApply = false;
  std::string inner;
  if (base >= 0 && static_cast<std::size_t>(base) < formats_.size()) {
    const Format& f = formats_[static_cast<std::size_t>(base)];
    for (const auto& [name, value] : f.attributes) {
      std::string v = value;
      if (name == "numFmtId") v = fmt, sawFmt = true;
      if (name == "applyNumberFormat") v = "1", sawApply = true;
      xf += " " + name + "=\"" + escapeXml(v, true) + "\"";
    }
    if (f.end > f.tagEnd) {
      const std::size_t close = xml_.rfind('<', f.end - 1);
      if (close != std::string::npos && close > f.tagEnd) {
        inner = xml_.substr(f.tagEnd, close - f.tagEnd);
      }
    }
  }
  if (!sawFmt) xf += " numFmtId=\"" + fmt + "\"";
  if (!sawApply) xf += " applyNumberFormat=\"1\"";
  xf += inner.empty() ? "/>" : ">" + inner + "</" + prefix_ + "xf>";

  const auto index = static_cast<std::int32_t>(formats_.size());
  added_.push_back(std::move(xf));
  derived_[{base, withTime}] = index;
  // Later isDate() calls see the new format as a date format.
  Format marker;
  marker.numFmtId = withTime ? kDateTime : kShortDate;
  formats_.push_back(marker);
  return index;
}

std::string Styles::patched() const {
  if (!hasCellXfs_) return xml_;
  const std::size_t total = formats_.size();
  std::string adds;
  for (const auto& a : added_) adds += a;
  Splicer edits;
  // The start tag again, with the new count.
  std::string start = "<" + prefix_ + "cellXfs count=\"" + std::to_string(total) + "\">";
  const bool empty = cellXfsEnd_ == cellXfsTagEnd_;
  if (empty) {
    edits.replace(cellXfsBegin_, cellXfsEnd_, start + adds + "</" + prefix_ + "cellXfs>");
  } else {
    edits.replace(cellXfsBegin_, cellXfsTagEnd_, std::move(start));
    const std::size_t close = xml_.rfind('<', cellXfsEnd_ - 1);
    edits.replace(close, close, std::move(adds));
  }
  return edits.apply(xml_);
}

}  // namespace korvex::xlsx
