// WhatSTMT: which kind of statement a line is, from its first word (and for
// DO, END and EXIT its second). Runs for every line executed and every line
// a block statement scans past, so it works on the view in place: words are
// upper-cased into a small fixed buffer, never into a new string.
#include "engine/classify.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "korvex/statement_kind.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

// The engine's reserved words. A line whose first word is one of them but
// no statement word is refused (error 23) rather than taken as an
// assignment to a variable of that name.
constexpr std::array<std::u16string_view, 44> kReservedWords = {
    u"If",           u"Then",       u"Do",    u"Loop",  u"End",      u"True",      u"False",
    u"For",          u"Next",       u"Else",  u"To",    u"Step",     u"And",       u"Or",
    u"Not",          u"While",      u"Until", u"Exit",  u"EOF",      u"MoveFirst", u"MoveNext",
    u"MovePrevious", u"MoveLast",   u"BOF",   u"Dim",   u"移至顶部", u"下移指针",  u"上移指针",
    u"移至底部",     u"MsgBox",     u"Day",   u"Month", u"Year",     u"Date",      u"Sqr",
    u"Int",          u"Round",      u"Len",   u"Mid",   u"Time",     u"Rem",       u"CStr",
    u"Abs",          u"Num2Chinese"};

// Longer than every keyword and reserved word: such a word is a name.
constexpr std::size_t kMaxKeyword = 12;

// An upper-cased word of at most kMaxKeyword characters, or "too long".
class Word {
 public:
  explicit Word(std::u16string_view w) noexcept {
    if (w.size() > kMaxKeyword) {
      tooLong_ = true;
      return;
    }
    size_ = w.size();
    for (std::size_t i = 0; i < size_; ++i) {
      buf_[i] = vb::asciiUpper(w[i]);
    }
  }
  bool is(std::u16string_view upper) const noexcept { return !tooLong_ && view() == upper; }
  bool empty() const noexcept { return !tooLong_ && size_ == 0; }
  bool tooLong() const noexcept { return tooLong_; }
  std::u16string_view view() const noexcept { return {buf_.data(), size_}; }

 private:
  std::array<char16_t, kMaxKeyword> buf_{};
  std::size_t size_ = 0;
  bool tooLong_ = false;
};

bool isReservedWord(const Word& w) noexcept {
  if (w.tooLong()) return false;
  return std::any_of(kReservedWords.begin(), kReservedWords.end(),
                     [&](std::u16string_view r) { return equalsNoCase(w.view(), r); });
}

// The second word: after blanks, the run of non-blank characters; a "'"
// where it would start means there is none (the rest is a comment).
Word secondWord(std::u16string_view rest) noexcept {
  std::size_t i = 0;
  while (i < rest.size() && isBlank(rest[i])) ++i;
  if (i == rest.size() || rest[i] == u'\'') return Word(std::u16string_view{});
  std::size_t end = i;
  while (end < rest.size() && !isBlank(rest[end])) ++end;
  return Word(rest.substr(i, end - i));
}

// Nothing but blanks, or a comment, after the word.
bool restIsEmpty(std::u16string_view rest) noexcept {
  const std::size_t quote = rest.find(u'\'');
  return trimBlanks(rest.substr(0, quote)).empty();
}

// The statements of two words (DO WHILE, END IF, EXIT DO, ...): the first
// word, then each second word with its kind; an END with no second word is
// the stop statement. Any other second word is a syntax error.
struct TwoWords {
  std::u16string_view first;
  struct Second {
    std::u16string_view word;
    StatementKind kind;
  };
  std::array<Second, 3> seconds;
  std::size_t count;
};

constexpr TwoWords kTwoWords[] = {
    {u"DO", {{{u"WHILE", kStmtDoWhile}, {u"UNTIL", kStmtDoUntil}, {}}}, 2},
    {u"END", {{{u"IF", kStmtEndIf}, {u"DO", kStmtEndDo}, {u"", kStmtEnd}}}, 3},
    {u"EXIT", {{{u"DO", kStmtExitDo}, {u"FOR", kStmtExitFor}, {}}}, 2},
};

// The kind of a two-word statement, 0 when `word` starts none.
std::int16_t twoWordKind(const Word& word, std::u16string_view rest) noexcept {
  for (const TwoWords& t : kTwoWords) {
    if (!word.is(t.first)) continue;
    const Word second = secondWord(rest);
    for (std::size_t i = 0; i < t.count; ++i) {
      if (second.is(t.seconds[i].word)) return t.seconds[i].kind;
    }
    return kStmtSyntaxError;
  }
  return 0;
}

// The kind, or 0 with the error in `error`.
std::int16_t classify(std::u16string_view line, Error& error) {
  const auto refuse = [&](const Message& m, std::u16string_view detail = {}) -> std::int16_t {
    error.set(m, detail);
    return 0;
  };
  const std::size_t n = line.size();
  std::size_t i = 0;
  while (i < n && isBlank(line[i])) ++i;
  if (i == n) return kStmtBlank;
  if (line[i] == u'\'') return kStmtComment;
  if (!isIdentStart(line[i])) return refuse(msg::kBadSymbol);
  const std::size_t start = i++;
  for (; i < n && !isBlank(line[i]) && line[i] != u'='; ++i) {
    if (!isIdentChar(line[i])) {
      const char16_t quoted[] = {line[i], u'\''};
      return refuse(msg::kBadSymbol, {quoted, 2});
    }
  }
  const Word word(line.substr(start, i - start));
  const std::u16string_view rest = line.substr(i);

  if (word.tooLong()) return kStmtAssign;
  if (word.is(u"IF")) return kStmtIf;
  if (const std::int16_t kind = twoWordKind(word, rest)) return kind;
  if (word.is(u"LOOP")) return kStmtLoop;
  if (word.is(u"RAISEERROR")) return kStmtRaiseError;
  if (word.is(u"ELSE")) return kStmtElse;
  if (word.is(u"REM")) return kStmtComment;

  struct Move {
    std::u16string_view english, chinese;
    StatementKind kind;
  };
  static constexpr std::array<Move, 4> kMoves = {{
      {u"MOVEFIRST", u"移至顶部", kStmtMoveFirst},
      {u"MOVENEXT", u"下移指针", kStmtMoveNext},
      {u"MOVEPREVIOUS", u"上移指针", kStmtMovePrevious},
      {u"MOVELAST", u"移至底部", kStmtMoveLast},
  }};
  for (const Move& m : kMoves) {
    if (word.is(m.english) || word.is(m.chinese)) {
      if (!restIsEmpty(rest)) return refuse(msg::kSyntax);
      return m.kind;
    }
  }

  if (word.is(u"DIM")) return kStmtDim;
  if (word.is(u"MSGBOX")) return kStmtMsgBox;
  if (word.is(u"ADDRECORD") || word.is(u"增加记录")) return kStmtAddRecord;
  if (word.is(u"DELRECORD") || word.is(u"删除记录")) return kStmtDelRecord;
  if (isReservedWord(word)) return refuse(msg::kKeywordMisused);
  return kStmtAssign;
}

}  // namespace

std::int16_t classifyLine(std::u16string_view line, Error& error) { return classify(line, error); }

}  // namespace korvex
