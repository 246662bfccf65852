// A month's formula kept as one file per wage item: the files joined in
// order into the one script the engine runs, and for each of its lines the
// file and line it came from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::cli {

class JoinedScript {
 public:
  /// Appends a file's text, ending it with a line break if it has none.
  void add(std::string name, std::u16string_view text);

  const std::u16string& text() const noexcept { return text_; }
  std::size_t files() const noexcept { return parts_.size(); }
  /// The file, and the line within it, of line `line` (from 1) of the
  /// joined script; the last file for a line past the end.
  std::pair<std::string_view, std::int32_t> locate(std::int32_t line) const;

 private:
  struct Part {
    std::string name;
    std::int32_t firstLine;
  };
  std::u16string text_;
  std::vector<Part> parts_;
  std::int32_t lines_ = 0;
};

}  // namespace korvex::cli
