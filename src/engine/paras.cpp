// Argument lists: splitting a function's argument text and evaluating it.
#include "engine/paras.hpp"

#include "engine/script_reader.hpp"

namespace korvex {

std::int32_t Paras::Parse(std::u16string_view text) {
  items_.clear();
  rewritten_.clear();
  error_.clear();

  std::u16string_view list = trimBlanks(text);
  if (!list.empty() && list.front() == u'(') list.remove_prefix(1);
  if (!list.empty() && list.back() == u')') list.remove_suffix(1);
  paraText_ = list;

  ScriptReader scanner;
  std::int16_t index = 0;
  std::int16_t pos = 1;
  while (static_cast<std::size_t>(pos) <= list.size()) {
    const std::int16_t start = pos;
    std::u16string_view piece;
    bool blanksDropped = false;
    bool separator = false;
    if (scanner.findListItem(list, pos, piece, blanksDropped, separator) != 0) {
      error_ = scanner.error();
      return error_.number;
    }
    if (blanksDropped) {
      std::int16_t again = start;
      std::u16string& text = rewritten_.emplace_back();
      scanner.readListItem(list, again, text, separator);
      piece = text;
    }
    if (!piece.empty()) {
      items_.push_back(Para{piece, index});
      ++index;
    }
    ++pos;
  }
  return 0;
}

}  // namespace korvex
