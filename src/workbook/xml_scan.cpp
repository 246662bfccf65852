#include "workbook/xml_scan.hpp"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>
#include <memory>
#include <new>

#include "korvex/value.hpp"

namespace korvex::xlsx {

namespace {

constexpr char kSeparator = '\x01';

void splitName(const char* qualified, std::string_view& ns, std::string_view& local) {
  const std::string_view q(qualified);
  const auto cut = q.find(kSeparator);
  if (cut == std::string_view::npos) {
    ns = {};
    local = q;
  } else {
    ns = q.substr(0, cut);
    local = q.substr(cut + 1);
  }
}

struct ScanState {
  XML_Parser parser;
  XmlHandler* handler;
  std::size_t lastTagEnd = 0;
  XmlStart start;       // reused between events
  std::string failure;  // why the scan was stopped
};

void stop(ScanState& st, std::string why) {
  if (st.failure.empty()) st.failure = std::move(why);
  XML_StopParser(st.parser, XML_FALSE);
}

// Runs one event's work. Nothing may unwind through expat's frames, so an
// exception becomes the reason the scan stops.
template <typename Work>
void guarded(void* data, Work&& work) {
  auto& st = *static_cast<ScanState*>(data);
  if (!st.failure.empty()) return;  // events expat still delivers after a stop
  try {
    work(st);
    if (!st.handler->failure().empty()) stop(st, st.handler->failure());
  } catch (const std::bad_alloc&) {
    stop(st, "内存不足");
  } catch (const std::exception& e) {
    stop(st, std::string("内部错误 (") + e.what() + ")");
  }
}

void XMLCALL onStartElement(void* data, const char* name, const char** atts) {
  guarded(data, [&](ScanState& st) {
    XmlStart& e = st.start;
    splitName(name, e.ns, e.name);
    e.attributes.clear();
    for (const char** a = atts; *a != nullptr; a += 2) {
      XmlAttribute attr;
      splitName(a[0], attr.ns, attr.name);
      attr.value = a[1];
      e.attributes.push_back(attr);
    }
    e.begin = static_cast<std::size_t>(XML_GetCurrentByteIndex(st.parser));
    e.tagEnd = e.begin + static_cast<std::size_t>(XML_GetCurrentByteCount(st.parser));
    st.lastTagEnd = e.tagEnd;
    st.handler->onStart(e);
  });
}

void XMLCALL onEndElement(void* data, const char* name) {
  guarded(data, [&](ScanState& st) {
    std::string_view ns, local;
    splitName(name, ns, local);
    const int count = XML_GetCurrentByteCount(st.parser);
    // An empty element's end event has no bytes of its own.
    const std::size_t end = count == 0
                                ? st.lastTagEnd
                                : static_cast<std::size_t>(XML_GetCurrentByteIndex(st.parser)) +
                                      static_cast<std::size_t>(count);
    st.handler->onEnd(ns, local, end);
  });
}

void XMLCALL onCharacters(void* data, const char* s, int len) {
  guarded(data, [&](ScanState& st) {
    st.handler->onText(std::string_view(s, static_cast<std::size_t>(len)));
  });
}

// A document type declaration is refused outright: a spreadsheet never
// writes one, and the entities it could declare expand into elements and
// attributes that have no bytes of their own in the part, which both the
// reading (offsets) and the patching (splices) rely on.
void XMLCALL onDoctype(void* data, const char*, const char*, const char*, int) {
  stop(*static_cast<ScanState*>(data), "含有文档类型声明 (DTD/实体)，不是电子表格程序写出的部件");
}

// Expat takes lengths as int: larger documents go in pieces.
constexpr std::size_t kParseChunk = std::size_t{1} << 24;

}  // namespace

const std::string_view* XmlStart::attribute(std::string_view wanted) const noexcept {
  for (const auto& a : attributes) {
    if (a.ns.empty() && a.name == wanted) return &a.value;
  }
  return nullptr;
}

bool scanXml(std::string_view xml, XmlHandler& handler, std::string& error) {
  std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(
      XML_ParserCreateNS("UTF-8", kSeparator), XML_ParserFree);
  if (!parser) {
    error = "内存不足";
    return false;
  }
  ScanState st{parser.get(), &handler, 0, {}, {}};
  XML_SetUserData(parser.get(), &st);
  XML_SetElementHandler(parser.get(), onStartElement, onEndElement);
  XML_SetCharacterDataHandler(parser.get(), onCharacters);
  XML_SetStartDoctypeDeclHandler(parser.get(), onDoctype);
  std::size_t done = 0;
  XML_Status status = XML_STATUS_OK;
  for (;;) {
    const std::size_t piece = std::min(kParseChunk, xml.size() - done);
    const bool last = done + piece == xml.size();
    status = XML_Parse(parser.get(), xml.data() + done, static_cast<int>(piece),
                       last ? XML_TRUE : XML_FALSE);
    done += piece;
    if (status != XML_STATUS_OK || last) break;
  }
  if (!st.failure.empty()) {
    error = st.failure;
    return false;
  }
  if (status != XML_STATUS_OK) {
    error = std::string("XML 格式错误 (第 ") +
            std::to_string(XML_GetCurrentLineNumber(parser.get())) +
            " 行: " + XML_ErrorString(XML_GetErrorCode(parser.get())) + ")";
    return false;
  }
  return true;
}

namespace {

enum class WideOrder { None, Little, Big };

// UTF-16 told by its byte order mark, or by how "<?" is spelled without one.
WideOrder wideOrder(std::string_view b) {
  if (b.starts_with("\xFF\xFE") || b.starts_with(std::string_view("<\0?\0", 4))) {
    return WideOrder::Little;
  }
  if (b.starts_with("\xFE\xFF") || b.starts_with(std::string_view("\0<\0?", 4))) {
    return WideOrder::Big;
  }
  return WideOrder::None;
}

std::string fromWide(std::string_view b, WideOrder order) {
  std::u16string units(b.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<unsigned char>(b[2 * i]);
    const auto second = static_cast<unsigned char>(b[2 * i + 1]);
    units[i] = static_cast<char16_t>(order == WideOrder::Little ? first | second << 8
                                                                : first << 8 | second);
  }
  if (!units.empty() && units.front() == u'\uFEFF') units.erase(0, 1);
  return toUtf8(units);
}

std::string fromLatin1(std::string_view b) {
  std::string out;
  out.reserve(b.size());
  for (const char c : b) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      out += c;
    } else {
      out += static_cast<char>(0xC0 | byte >> 6);
      out += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return out;
}

bool sameLetters(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

bool toUtf8Document(std::string& xml, std::string& error) {
  const WideOrder wide = wideOrder(xml);
  if (wide != WideOrder::None) {
    if (xml.size() % 2 != 0) {
      error = "UTF-16 编码的部件字节数不完整";
      return false;
    }
    xml = fromWide(xml, wide);
  }
  // The declaration's encoding, if it names one.
  const std::size_t start = xml.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  if (xml.compare(start, 5, "<?xml") != 0) return true;
  const std::size_t declEnd = xml.find("?>", start);
  const std::size_t key = xml.find("encoding", start);
  if (declEnd == std::string::npos || key == std::string::npos || key > declEnd) return true;
  const std::size_t quote = xml.find_first_of("\"'", key);
  const std::size_t close = quote < declEnd ? xml.find(xml[quote], quote + 1) : std::string::npos;
  if (close == std::string::npos || close > declEnd) return true;  // the scan tells what is wrong
  const std::string_view name = std::string_view(xml).substr(quote + 1, close - quote - 1);
  if (sameLetters(name, "UTF-8")) return true;
  const bool latin1 = sameLetters(name, "ISO-8859-1") || sameLetters(name, "latin1");
  if (!latin1 && !sameLetters(name, "US-ASCII") && !sameLetters(name, "UTF-16")) {
    error = "不支持的字符编码 " + std::string(name) + " (只接受 UTF-8、UTF-16、ISO-8859-1)";
    return false;
  }
  std::string rest = xml.substr(close);
  if (latin1) rest = fromLatin1(rest);
  xml.replace(quote + 1, std::string::npos, "UTF-8");
  xml += rest;
  return true;
}

std::string escapeXml(std::string_view text, bool attribute) {
  // In an attribute, quotes, line feeds and tabs are escaped as well: a
  // reader would end the value at the quote and turn the white space into
  // blanks. A carriage return is escaped everywhere, or a reader would make
  // it a line feed.
  struct Escape {
    char c;
    std::string_view inText;
    std::string_view inAttribute;
  };
  static constexpr std::array<Escape, 7> kEscapes{{{'&', "&amp;", "&amp;"},
                                                   {'<', "&lt;", "&lt;"},
                                                   {'>', "&gt;", "&gt;"},
                                                   {'"', "\"", "&quot;"},
                                                   {'\r', "&#13;", "&#13;"},
                                                   {'\n', "\n", "&#10;"},
                                                   {'\t', "\t", "&#9;"}}};
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const auto escape =
        std::find_if(kEscapes.begin(), kEscapes.end(), [c](const Escape& e) { return e.c == c; });
    if (escape != kEscapes.end()) {
      out += attribute ? escape->inAttribute : escape->inText;
    } else if (static_cast<unsigned char>(c) >= 0x20) {
      // Other control characters cannot appear in XML 1.0 at all.
      out += c;
    }
  }
  return out;
}

std::string elementPrefix(std::string_view xml, std::size_t begin) {
  std::size_t i = begin + 1;
  const std::size_t start = i;
  while (i < xml.size() && xml[i] != ':' && xml[i] != ' ' && xml[i] != '>' && xml[i] != '/' &&
         xml[i] != '\t' && xml[i] != '\r' && xml[i] != '\n') {
    ++i;
  }
  if (i < xml.size() && xml[i] == ':') return std::string(xml.substr(start, i - start + 1));
  return {};
}

void Splicer::replace(std::size_t begin, std::size_t end, std::string text) {
  edits_.push_back({begin, end, edits_.size(), std::move(text)});
}

std::string Splicer::apply(std::string_view original) const {
  std::vector<const Edit*> order;
  for (const auto& e : edits_) order.push_back(&e);
  // Insertions at one point keep the order in which they were asked for.
  std::sort(order.begin(), order.end(), [](const Edit* a, const Edit* b) {
    return a->begin != b->begin ? a->begin < b->begin : a->order < b->order;
  });
  std::string out;
  out.reserve(original.size() + 256);
  std::size_t pos = 0;
  for (const Edit* e : order) {
    out.append(original.substr(pos, e->begin - pos));
    out += e->text;
    pos = std::max(pos, e->end);
  }
  out.append(original.substr(pos));
  return out;
}

}  // namespace korvex::xlsx
