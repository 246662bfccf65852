// A thin layer over expat that reports where every element sits in the
// document's bytes, so that a part can be patched by splicing: the bytes of
// everything the patch does not touch are copied unchanged.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::xlsx {

/// The SpreadsheetML main namespaces (transitional and strict).
inline constexpr std::string_view kMainNs =
    "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
inline constexpr std::string_view kStrictMainNs = "http://purl.oclc.org/ooxml/spreadsheetml/main";

struct XmlAttribute {
  std::string_view ns;  // namespace URI, empty for an unprefixed attribute
  std::string_view name;
  std::string_view value;  // decoded
};

struct XmlStart {
  std::string_view ns;
  std::string_view name;  // local name
  std::vector<XmlAttribute> attributes;
  std::size_t begin = 0;   // offset of '<'
  std::size_t tagEnd = 0;  // one past the start tag's '>'
  bool inMain() const noexcept { return ns == kMainNs || ns == kStrictMainNs; }
  /// Value of the unprefixed attribute `name`; nullptr when absent.
  const std::string_view* attribute(std::string_view name) const noexcept;
};

/// Receives the events of one scan. `end` is one past the last byte of the
/// element (its end tag, or the start tag of an empty element). A handler
/// that finds the document unacceptable calls fail(): the scan stops there
/// and reports the message.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void onStart(const XmlStart& element) = 0;
  virtual void onEnd(std::string_view ns, std::string_view name, std::size_t end) = 0;
  virtual void onText(std::string_view) {}

  void fail(std::string message) {
    if (failure_.empty()) failure_ = std::move(message);
  }
  const std::string& failure() const noexcept { return failure_; }

 private:
  std::string failure_;
};

/// Parses `xml` (UTF-8); false with a message on malformed input, on a
/// document type declaration (a spreadsheet never writes one, and entities
/// it declares would expand into elements no offset points at), on a
/// handler's fail() and when memory runs out.
bool scanXml(std::string_view xml, XmlHandler& handler, std::string& error);

/// Makes a part's bytes UTF-8 in whatever encoding a reader must accept
/// them (UTF-8 with or without a byte order mark, UTF-16 either way round,
/// ISO-8859-1, US-ASCII) and its declaration say UTF-8: what the scan
/// reads and what a patch splices in are then of one encoding. false with
/// a message for any other encoding.
bool toUtf8Document(std::string& xml, std::string& error);

/// Escapes text for element content (and attribute values with `attribute`).
std::string escapeXml(std::string_view text, bool attribute = false);

/// The element prefix used by the start tag at `begin` ("x:" for "<x:row"),
/// so that inserted elements match the document's spelling.
std::string elementPrefix(std::string_view xml, std::size_t begin);

/// An ordered set of replacements of byte ranges of one document.
class Splicer {
 public:
  /// Replaces [begin, end) (an insertion when begin == end).
  void replace(std::size_t begin, std::size_t end, std::string text);
  bool empty() const noexcept { return edits_.empty(); }
  /// The document with every replacement applied; ranges must not overlap.
  std::string apply(std::string_view original) const;

 private:
  struct Edit {
    std::size_t begin, end, order;
    std::string text;
  };
  std::vector<Edit> edits_;
};

}  // namespace korvex::xlsx
