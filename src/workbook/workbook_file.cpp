// Loading and saving the package: relationships, the workbook part, shared
// strings, and the parts a save has to adjust (styles, calculation chain,
// the recalculation flag).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <random>

#include "korvex/system_error.hpp"
#include "workbook/workbook_data.hpp"
#include "workbook/xml_scan.hpp"

namespace korvex {

namespace xlsx {
namespace {

// A part of the package as UTF-8 XML, whatever encoding it was stored in;
// nullopt with `error` empty when there is no such part.
std::optional<std::string> readXml(const ZipPackage& pkg, const std::string& part,
                                   std::string& error) {
  std::optional<std::string> xml = pkg.read(part, error);
  if (xml && !toUtf8Document(*xml, error)) {
    error = part + ": " + error;
    return std::nullopt;
  }
  return xml;
}

constexpr std::string_view kRelsNs = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr std::string_view kStylesType =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles";
constexpr std::string_view kStylesContentType =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml";

// Every element of a small part, with its attributes and byte range.
struct Element {
  std::string ns, name;
  int depth = 0;
  std::size_t begin = 0, tagEnd = 0, end = 0;
  std::vector<std::pair<std::string, std::string>> attributes;  // "ns|name" when namespaced
  const std::string* attribute(std::string_view key) const {
    for (const auto& [k, v] : attributes) {
      if (k == key) return &v;
    }
    return nullptr;
  }
  /// A namespaced attribute by local name ("r:id" -> "id").
  const std::string* foreignAttribute(std::string_view local) const {
    for (const auto& [k, v] : attributes) {
      const auto bar = k.find('|');
      if (bar != std::string::npos && std::string_view(k).substr(bar + 1) == local) return &v;
    }
    return nullptr;
  }
};

class Collector : public XmlHandler {
 public:
  std::vector<Element> elements;
  void onStart(const XmlStart& e) override {
    Element el;
    el.ns = e.ns;
    el.name = e.name;
    el.depth = static_cast<int>(open_.size());
    el.begin = e.begin;
    el.tagEnd = e.tagEnd;
    for (const auto& a : e.attributes) {
      el.attributes.emplace_back(
          a.ns.empty() ? std::string(a.name) : std::string(a.ns) + "|" + std::string(a.name),
          std::string(a.value));
    }
    open_.push_back(elements.size());
    elements.push_back(std::move(el));
  }
  void onEnd(std::string_view, std::string_view, std::size_t end) override {
    elements[open_.back()].end = end;
    open_.pop_back();
  }

 private:
  std::vector<std::size_t> open_;
};

bool collect(const std::string& xml, std::vector<Element>& out, std::string& error) {
  Collector c;
  if (!scanXml(xml, c, error)) return false;
  out = std::move(c.elements);
  return true;
}

std::string directoryOf(std::string_view part) {
  const auto slash = part.rfind('/');
  return slash == std::string_view::npos ? std::string() : std::string(part.substr(0, slash + 1));
}

std::string relsPartOf(std::string_view part) {
  const auto slash = part.rfind('/');
  const std::string dir = directoryOf(part);
  return dir + "_rels/" +
         std::string(slash == std::string_view::npos ? part : part.substr(slash + 1)) + ".rels";
}

// A relationship's target as a path inside the package.
std::string resolveTarget(std::string_view base, std::string_view target) {
  std::string joined = !target.empty() && target[0] == '/'
                           ? std::string(target.substr(1))
                           : directoryOf(base) + std::string(target);
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (start <= joined.size()) {
    const auto slash = joined.find('/', start);
    const std::string piece =
        joined.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
    if (piece == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!piece.empty() && piece != ".") {
      parts.push_back(piece);
    }
    if (slash == std::string::npos) break;
    start = slash + 1;
  }
  std::string out;
  for (const auto& p : parts) out += (out.empty() ? "" : "/") + p;
  return out;
}

bool endsWith(std::string_view s, std::string_view tail) {
  return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

struct Relationship {
  std::string id, type, target;
  std::size_t begin = 0, end = 0;
};

bool readRelationships(const ZipPackage& pkg, const std::string& part,
                       std::vector<Relationship>& out, std::string& error) {
  out.clear();
  const std::string relsPart = relsPartOf(part);
  const auto xml = readXml(pkg, relsPart, error);
  if (!xml) return error.empty();
  std::vector<Element> elements;
  if (!collect(*xml, elements, error)) {
    error = relsPart + ": " + error;
    return false;
  }
  for (const auto& e : elements) {
    if (e.name != "Relationship" || e.ns != kRelsNs) continue;
    const auto* id = e.attribute("Id");
    const auto* type = e.attribute("Type");
    const auto* target = e.attribute("Target");
    const auto* mode = e.attribute("TargetMode");
    if (id == nullptr || type == nullptr || target == nullptr) continue;
    if (mode != nullptr && *mode == "External") continue;
    out.push_back({*id, *type, resolveTarget(part, *target), e.begin, e.end});
  }
  return true;
}

// The texts of the shared strings, rich text runs joined, phonetic guides
// left out.
class SharedStringReader : public XmlHandler {
 public:
  std::vector<std::u16string>& out;
  // Each string takes one from the cell budget: a part of empty strings
  // would otherwise take far more memory than its bytes.
  std::uint64_t& cellsLeft;
  SharedStringReader(std::vector<std::u16string>& o, std::uint64_t& left)
      : out(o), cellsLeft(left) {}
  void onStart(const XmlStart& e) override {
    if (!e.inMain()) return;
    if (e.name == "si") {
      if (cellsLeft == 0) {
        fail("共享字符串太多 (与所有工作表的单元格合计的上限已到)");
        return;
      }
      --cellsLeft;
      text_.clear();
    } else if (e.name == "rPh") {
      skip_ = true;
    } else if (e.name == "t" && !skip_) {
      capture_ = true;
    }
  }
  void onEnd(std::string_view, std::string_view name, std::size_t) override {
    capture_ = false;
    if (name == "rPh") skip_ = false;
    if (name == "si") out.push_back(fromUtf8(text_));
  }
  void onText(std::string_view t) override {
    if (capture_) text_.append(t);
  }

 private:
  std::string text_;
  bool capture_ = false, skip_ = false;
};

// Inserts `text` before the closing tag of the part's root element.
std::string beforeRootEnd(const std::string& xml, const std::string& text) {
  const auto close = xml.rfind("</");
  if (close == std::string::npos) return xml;
  std::string out = xml;
  out.insert(close, text);
  return out;
}

std::string removeRanges(const std::string& xml, const std::vector<std::pair<size_t, size_t>>& r) {
  Splicer s;
  for (const auto& [b, e] : r) s.replace(b, e, {});
  return s.apply(xml);
}

bool isTrue(const std::string* v) { return v != nullptr && (*v == "1" || *v == "true"); }

// Elements of the workbook that come after calcPr, in schema order.
bool followsCalcPr(std::string_view name) {
  for (std::string_view n :
       {"oleSize", "customWorkbookViews", "pivotCaches", "smartTagPr", "smartTagTypes",
        "webPublishing", "fileRecoveryPr", "webPublishObjects", "extLst"}) {
    if (name == n) return true;
  }
  return false;
}

// The workbook part asking for a full recalculation when it is opened.
bool markFullRecalc(std::string& xml, std::string& error) {
  std::vector<Element> elements;
  if (!collect(xml, elements, error)) return false;
  const Element* calcPr = nullptr;
  const Element* before = nullptr;
  for (const auto& e : elements) {
    if (e.depth != 1) continue;
    if (e.name == "calcPr") calcPr = &e;
    if (before == nullptr && followsCalcPr(e.name)) before = &e;
  }
  if (elements.empty()) return false;
  const std::string prefix = elementPrefix(xml, elements[0].begin);
  Splicer s;
  if (calcPr != nullptr) {
    std::string tag = "<" + elementPrefix(xml, calcPr->begin) + "calcPr";
    for (const auto& [k, v] : calcPr->attributes) {
      if (k == "fullCalcOnLoad" || k.find('|') != std::string::npos) continue;
      tag += " " + k + "=\"" + escapeXml(v, true) + "\"";
    }
    tag += " fullCalcOnLoad=\"1\"";
    tag += calcPr->end == calcPr->tagEnd ? "/>" : ">";
    s.replace(calcPr->begin, calcPr->tagEnd, std::move(tag));
  } else {
    const std::size_t at = before != nullptr ? before->begin : xml.rfind("</");
    s.replace(at, at, "<" + prefix + "calcPr fullCalcOnLoad=\"1\"/>");
  }
  xml = s.apply(xml);
  return true;
}

}  // namespace

ZipPackage newWorkbookPackage() {
  ZipPackage p;
  p.put(
      "[Content_Types].xml",
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<Default Extension=\"rels\" "
      "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
      "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
      "<Override PartName=\"/xl/workbook.xml\" "
      "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
      "<Override PartName=\"/xl/worksheets/sheet1.xml\" "
      "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
      "<Override PartName=\"/xl/styles.xml\" ContentType=\"" +
          std::string(kStylesContentType) + "\"/></Types>");
  p.put("_rels/.rels",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" "
        "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
        "officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>");
  p.put("xl/workbook.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
        "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
        "<bookViews><workbookView/></bookViews>"
        "<sheets><sheet name=\"Sheet1\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>");
  p.put("xl/_rels/workbook.xml.rels",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId1\" "
        "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
        "Target=\"worksheets/sheet1.xml\"/>"
        "<Relationship Id=\"rId2\" Type=\"" +
            std::string(kStylesType) + "\" Target=\"styles.xml\"/></Relationships>");
  p.put("xl/worksheets/sheet1.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
        "<dimension ref=\"A1\"/><sheetData/></worksheet>");
  p.put("xl/styles.xml", std::string(minimalStylesXml()));
  return p;
}

}  // namespace xlsx

using namespace xlsx;

bool Workbook::Data::load(std::string& error) {
  package.setPartLimit(limits.maxPartBytes);
  std::uint64_t cellsLeft = limits.maxCells;
  std::vector<Relationship> rels;
  if (!readRelationships(package, "", rels, error)) return false;
  workbookPart = "xl/workbook.xml";
  for (const auto& r : rels) {
    if (endsWith(r.type, "/officeDocument")) workbookPart = r.target;
  }
  const auto workbookXml = readXml(package, workbookPart, error);
  if (!workbookXml) {
    if (error.empty()) error = "缺少工作簿部件 " + workbookPart;
    return false;
  }
  std::vector<Element> elements;
  if (!collect(*workbookXml, elements, error)) {
    error = workbookPart + ": " + error;
    return false;
  }
  if (!readRelationships(package, workbookPart, rels, error)) return false;

  for (const auto& r : rels) {
    if (endsWith(r.type, "/styles")) stylesPart = r.target;
    if (endsWith(r.type, "/calcChain")) calcChainPart = r.target;
    if (endsWith(r.type, "/sharedStrings")) {
      const auto xml = readXml(package, r.target, error);
      if (!xml && !error.empty()) return false;
      if (xml) {
        SharedStringReader reader(sharedStrings, cellsLeft);
        if (!scanXml(*xml, reader, error)) {
          error = r.target + ": " + error;
          return false;
        }
      }
    }
  }
  std::string stylesXml;
  if (!stylesPart.empty()) {
    const auto xml = readXml(package, stylesPart, error);
    if (!xml && !error.empty()) return false;
    if (xml) stylesXml = *xml;
  }
  if (!styles.parse(std::move(stylesXml), error)) {
    error = stylesPart + ": " + error;
    return false;
  }

  for (const auto& e : elements) {
    if (e.name == "workbookPr") dates.from1904 = isTrue(e.attribute("date1904"));
    if (e.name != "sheet") continue;
    const auto* name = e.attribute("name");
    const auto* id = e.foreignAttribute("id");
    if (name == nullptr || id == nullptr) continue;
    for (const auto& r : rels) {
      if (r.id == *id && endsWith(r.type, "/worksheet")) {
        sheets.push_back({fromUtf8(*name), r.target, {}});
      }
    }
  }
  if (sheets.empty()) {
    error = "工作簿中没有工作表";
    return false;
  }
  for (auto& sheet : sheets) {
    auto xml = readXml(package, sheet.part, error);
    if (!xml) {
      if (error.empty()) error = "缺少工作表部件 " + sheet.part;
      return false;
    }
    if (!sheet.cells.parse(std::move(*xml), sharedStrings, styles, dates, cellsLeft, error)) {
      error = sheet.part + ": " + error;
      return false;
    }
  }
  return true;
}

bool Workbook::Data::serialize(std::string& out, std::string& error) {
  ZipPackage pkg = package;
  bool sheetsChanged = false;
  for (auto& sheet : sheets) {
    if (!sheet.cells.dirty()) continue;
    pkg.put(sheet.part, sheet.cells.patched(styles));
    sheetsChanged = true;
  }
  if (styles.changed()) {
    if (styles.created()) {
      // The workbook had no stylesheet: add one, with its relationship and
      // content type.
      stylesPart = "xl/styles.xml";
      const std::string rels = relsPartOf(workbookPart);
      auto relsXml = readXml(pkg, rels, error);
      auto types = readXml(pkg, "[Content_Types].xml", error);
      if (!relsXml || !types) {
        if (error.empty()) error = "缺少包关系部件";
        return false;
      }
      pkg.put(rels, beforeRootEnd(*relsXml, "<Relationship Id=\"rIdKorvexStyles\" Type=\"" +
                                                std::string(kStylesType) +
                                                "\" Target=\"/xl/styles.xml\"/>"));
      pkg.put("[Content_Types].xml",
              beforeRootEnd(*types, "<Override PartName=\"/xl/styles.xml\" ContentType=\"" +
                                        std::string(kStylesContentType) + "\"/>"));
    }
    pkg.put(stylesPart, styles.patched());
  }
  if (sheetsChanged && !calcChainPart.empty()) {
    // The calculation chain lists formula cells; one that was overwritten
    // would make it wrong, and it is rebuilt when the workbook is opened.
    pkg.remove(calcChainPart);
    for (const std::string& part : {relsPartOf(workbookPart), std::string("[Content_Types].xml")}) {
      auto xml = readXml(pkg, part, error);
      std::vector<Element> elements;
      if (!xml || !collect(*xml, elements, error)) return false;
      std::vector<std::pair<std::size_t, std::size_t>> drop;
      for (const auto& e : elements) {
        const auto* target = e.attribute(e.name == "Override" ? "PartName" : "Target");
        if (target != nullptr && resolveTarget(workbookPart, *target) == calcChainPart) {
          drop.emplace_back(e.begin, e.end);
        }
      }
      pkg.put(part, removeRanges(*xml, drop));
    }
  }
  if (formulaWritten) {
    auto xml = readXml(pkg, workbookPart, error);
    if (!xml || !markFullRecalc(*xml, error)) return false;
    pkg.put(workbookPart, std::move(*xml));
  }
  return pkg.write(out, error);
}

namespace {

bool readFile(const std::string& path, std::string& bytes, int& code) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    code = errno;
    return false;
  }
  char buffer[1 << 16];
  for (;;) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      code = errno;
      ::close(fd);
      return false;
    }
    try {
      bytes.append(buffer, static_cast<std::size_t>(n));
    } catch (const std::bad_alloc&) {
      ::close(fd);  // the caller reports it; the descriptor must not leak
      throw;
    }
  }
  ::close(fd);
  return true;
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

constexpr std::string_view kOutOfMemory = "内存不足";

std::shared_ptr<Workbook::Data> openData(const std::string& path, std::u16string& error,
                                         const WorkbookLimits& limits) {
  auto data = std::make_shared<Workbook::Data>();
  data->path = path;
  data->limits = limits;
  // A pipe would block the read for ever and a device never end it; only
  // files (and, refused when read, folders) are workbooks.
  if (struct stat info{};
      ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
    error = fromUtf8("无法打开工作簿 '" + path + "': 不是普通文件");
    return nullptr;
  }
  std::string bytes;
  int code = 0;
  std::string message;
  if (!readFile(path, bytes, code)) {
    if (code != ENOENT) {
      error = fromUtf8("无法打开工作簿 '" + path + "': " + systemErrorText(code));
      return nullptr;
    }
    data->package = newWorkbookPackage();
  } else if (!data->package.load(std::move(bytes), message)) {
    error = fromUtf8("'" + path + "' 不是可读的 .xlsx 工作簿: " + message);
    return nullptr;
  }
  if (!data->load(message)) {
    error = fromUtf8("'" + path + "' 不是可读的 .xlsx 工作簿: " + message);
    return nullptr;
  }
  return data;
}

// The file a path names, through any symbolic links: a save replaces that
// file, not the link.
std::string realFile(const std::string& path) {
  std::error_code ec;
  std::filesystem::path p = path;
  for (int hops = 0; hops < 40 && std::filesystem::is_symlink(p, ec); ++hops) {
    const std::filesystem::path next = std::filesystem::read_symlink(p, ec);
    if (ec) break;
    p = next.is_absolute() ? next : p.parent_path() / next;
  }
  return p.string();
}

bool saveData(Workbook::Data& data, const std::string& path, std::u16string& error) {
  std::string bytes, message;
  if (!data.serialize(bytes, message)) {
    error = fromUtf8("无法生成工作簿: " + message);
    return false;
  }
  // What is written must read back as a workbook before it replaces
  // anything: a part that could not be patched faithfully is an error here,
  // never a broken file in the original's place.
  auto saved = std::make_shared<Workbook::Data>();
  saved->path = path;
  saved->limits = data.limits;
  if (!saved->package.load(std::string(bytes), message) || !saved->load(message)) {
    error = fromUtf8("无法保存工作簿 '" + path + "': 生成的文件无法读回 (" + message +
                     "), 原文件未改动");
    return false;
  }
  // Write beside the target, then rename over it: an interrupted save
  // leaves the old file as it was. The temporary name is short, whatever
  // the length of the target's.
  const std::string target = realFile(path);
  const auto slash = target.rfind('/');
  const std::string dir = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  struct stat st {};
  const bool exists = ::stat(target.c_str(), &st) == 0;
  std::random_device random;
  std::string temp;
  int fd = -1;
  for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
    temp = dir + ".korvex." + std::to_string(random() % 1000000) + ".tmp";
    fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST) break;
  }
  const auto failed = [&](int code) {
    error = fromUtf8("无法保存工作簿 '" + path + "': " + systemErrorText(code));
    return false;
  };
  if (fd < 0) return failed(errno);
  if (exists) (void)::fchmod(fd, st.st_mode & 07777);
  if (!writeAll(fd, bytes) || ::fsync(fd) != 0) {
    const int code = errno;
    ::close(fd);
    ::unlink(temp.c_str());
    return failed(code);
  }
  if (::close(fd) != 0 || ::rename(temp.c_str(), target.c_str()) != 0) {
    const int code = errno;
    ::unlink(temp.c_str());
    return failed(code);
  }
  // Continue from what is now on disk: offsets and parts match the new file.
  data = std::move(*saved);
  return true;
}

}  // namespace

std::shared_ptr<Workbook> Workbook::open(const std::string& path, std::u16string& error,
                                         const WorkbookLimits& limits) {
  // A workbook too large for the memory there is fails like any other
  // unreadable one.
  try {
    auto data = openData(path, error, limits);
    if (!data) return nullptr;
    return std::make_shared<Workbook>(std::move(data));
  } catch (const std::bad_alloc&) {
    error = fromUtf8("无法打开工作簿 '" + path + "': " + std::string(kOutOfMemory));
    return nullptr;
  }
}

std::shared_ptr<Workbook> Workbook::createNew() {
  auto data = std::make_shared<Data>();
  data->package = newWorkbookPackage();
  std::string error;
  data->load(error);  // a package of our own always loads
  return std::make_shared<Workbook>(std::move(data));
}

bool Workbook::save(const std::string& path, std::u16string& error) {
  try {
    return saveData(*data_, path, error);
  } catch (const std::bad_alloc&) {
    error = fromUtf8("无法保存工作簿 '" + path + "': " + std::string(kOutOfMemory));
    return false;
  }
}

}  // namespace korvex
