#include "joined_script.hpp"

#include <algorithm>

namespace korvex::cli {

void JoinedScript::add(std::string name, std::u16string_view text) {
  parts_.push_back({std::move(name), lines_ + 1});
  // Lines break as the engine breaks them: at CR LF, or at a CR or an LF alone.
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\n' || (text[i] == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n'))) {
      ++lines_;
    }
  }
  text_ += text;
  if (!text.empty() && text.back() != u'\n' && text.back() != u'\r') {
    text_ += u"\r\n";
    ++lines_;
  }
}

std::pair<std::string_view, std::int32_t> JoinedScript::locate(std::int32_t line) const {
  if (parts_.empty()) return {{}, line};
  // The last part that starts at or before the line.
  const auto after =
      std::upper_bound(parts_.begin(), parts_.end(), line,
                       [](std::int32_t l, const Part& p) { return l < p.firstLine; });
  const Part& part = after == parts_.begin() ? parts_.front() : *(after - 1);
  return {part.name, line - part.firstLine + 1};
}

}  // namespace korvex::cli
