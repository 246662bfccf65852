// The checker: every line classified as the engine classifies it, its
// statement taken apart as the statement would take it apart, blocks
// matched, expressions scanned for calls and names. Nothing runs.
#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "check/suggest.hpp"
#include "engine/classify.hpp"
#include "engine/paras.hpp"
#include "eval/function_table.hpp"
#include "eval/operators.hpp"
#include "korvex/check.hpp"
#include "korvex/statement_kind.hpp"
#include "statements/line_scan.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

using Severity = CheckSeverity;
using check::asciiFor;
using check::nearestFunctions;
using check::nearestStatement;

std::u16string quoted(std::u16string_view s) { return u"'" + std::u16string(s) + u"'"; }

// Statement words the evaluator refuses as operands.
bool isStatementWord(std::u16string_view upper) {
  static const std::unordered_set<std::u16string_view> kWords = {
      u"IF",   u"THEN",   u"ELSE",      u"DO",       u"LOOP",         u"END",      u"FOR",
      u"NEXT", u"TO",     u"STEP",      u"WHILE",    u"UNTIL",        u"EXIT",     u"DIM",
      u"REM",  u"MSGBOX", u"MOVEFIRST", u"MOVENEXT", u"MOVEPREVIOUS", u"MOVELAST", u"RAISEERROR"};
  return kWords.contains(upper);
}

bool isWordOperator(std::u16string_view upper) {
  return upper == u"AND" || upper == u"OR" || upper == u"NOT" || upper == u"XOR";
}

// The index of the ")" closing the "(" at `open`, string and date literals
// skipped; npos when there is none.
std::size_t matchingClose(std::u16string_view e, std::size_t open) {
  int depth = 0;
  for (std::size_t k = open; k < e.size(); ++k) {
    const char16_t c = e[k];
    if (c == u'"' || c == u'#') {
      k = e.find(c, k + 1);
      if (k == std::u16string_view::npos) return k;
    } else if (c == u'(') {
      ++depth;
    } else if (c == u')' && --depth == 0) {
      return k;
    }
  }
  return std::u16string_view::npos;
}

// The pieces between top-level commas of an argument text (without its
// parentheses).
std::vector<std::u16string_view> splitArguments(std::u16string_view inner) {
  std::vector<std::u16string_view> out;
  std::size_t start = 0;
  int depth = 0;
  for (std::size_t k = 0; k < inner.size(); ++k) {
    const char16_t c = inner[k];
    if (c == u'"' || c == u'#') {
      const std::size_t close = inner.find(c, k + 1);
      if (close == std::u16string_view::npos) break;
      k = close;
    } else if (c == u'(') {
      ++depth;
    } else if (c == u')') {
      --depth;
    } else if (c == u',' && depth == 0) {
      out.push_back(inner.substr(start, k - start));
      start = k + 1;
    }
  }
  out.push_back(inner.substr(start));
  return out;
}

struct Block {
  bool isDo = false;
  int line = 0;
  int column = 0;
  bool sawElse = false;
};

// A name met in an expression, judged once the whole file is read.
struct NameUse {
  std::u16string upper;
  std::u16string written;
  int line = 0;
  int column = 0;
  bool called = false;
};

class Checker {
 public:
  explicit Checker(const CheckSettings& settings) {
    for (const std::u16string& f : settings.fields) fields_.insert(upperName(f));
    fieldsKnown_ = !settings.fields.empty();
  }

  std::vector<CheckFinding> run(std::u16string_view text);

 private:
  int columnOf(const char16_t* at) const;
  void report(const char16_t* at, Severity severity, const char* code, std::u16string message);
  void reportAt(int line, int column, Severity severity, const char* code, std::u16string message);

  void fullWidth(std::u16string& line);
  void unclosedString(std::u16string_view line);
  void statement(std::u16string_view s, bool inTail);
  void classifyError(std::u16string_view s, std::size_t wordStart, const Error& error);
  void assign(std::u16string_view s, std::size_t wordStart);
  void unknownStatement(std::u16string_view s, std::size_t wordStart, std::size_t wordEnd);
  void ifLine(std::u16string_view s, std::size_t wordEnd, const char16_t* at, bool inTail);
  void dim(std::u16string_view rest);
  void open(bool isDo, const char16_t* at);
  void close(bool isDo, const char16_t* at, std::u16string_view word);
  void elseLine(const char16_t* at);
  void expression(std::u16string_view e, bool blanksDropped);
  std::size_t name(std::u16string_view e, std::size_t i, bool blanksDropped);
  void call(std::u16string_view written, const char16_t* at, const eval::NameEntry* entry,
            std::u16string_view group);
  void finish();

  std::unordered_set<std::u16string> fields_;
  bool fieldsKnown_ = false;
  std::unordered_set<std::u16string> assigned_;  // assigned or DIMmed, upper-cased
  std::vector<NameUse> uses_;
  std::vector<Block> blocks_;
  std::vector<CheckFinding> findings_;
  int line_ = 0;
  std::u16string_view written_;     // the current line as written
  const char16_t* base_ = nullptr;  // the current line as checked (same length)
};

int Checker::columnOf(const char16_t* at) const {
  const auto index = static_cast<std::size_t>(at - base_);
  int column = 1;
  for (std::size_t k = 0; k < index && k < written_.size(); ++k) {
    if (written_[k] < 0xDC00 || written_[k] > 0xDFFF) ++column;
  }
  return column;
}

void Checker::report(const char16_t* at, Severity severity, const char* code,
                     std::u16string message) {
  reportAt(line_, columnOf(at), severity, code, std::move(message));
}

void Checker::reportAt(int line, int column, Severity severity, const char* code,
                       std::u16string message) {
  findings_.push_back(CheckFinding{line, column, severity, code, std::move(message)});
}

// Full-width punctuation, digits and blanks outside strings and comments:
// reported a run at a time and replaced by their ASCII characters, so that
// the rest of the check reads the line as meant. A full-width comma between
// a call's parentheses separates arguments as a comma does: a warning.
void Checker::fullWidth(std::u16string& line) {
  std::size_t first = 0;
  while (first < line.size() && isBlank(line[first])) ++first;
  if (line.size() >= first + 3 && equalsNoCase(line.substr(first, 3), u"REM") &&
      (line.size() == first + 3 || isBlank(line[first + 3]))) {
    return;
  }
  int depth = 0;
  for (std::size_t k = 0; k < line.size(); ++k) {
    const char16_t c = line[k];
    if (c == u'\'') return;
    if (c == u'"') {
      const std::size_t close = line.find(u'"', k + 1);
      if (close == std::u16string::npos) return;
      k = close;
      continue;
    }
    const bool digit = c >= u'\uFF10' && c <= u'\uFF19';
    if (asciiFor(c) == 0 || (digit && k > 0 && isIdentChar(line[k - 1]))) {
      if (c == u'(') ++depth;
      if (c == u')') --depth;
      continue;
    }
    std::size_t end = k;
    std::u16string meant;
    while (end < line.size() && asciiFor(line[end]) != 0) meant += asciiFor(line[end++]);
    const std::u16string run = line.substr(k, end - k);
    const bool comma = meant == u"," && depth > 0;
    report(base_ + k, comma ? Severity::Warning : Severity::Error, "full-width",
           meant.find_first_not_of(u' ') == std::u16string::npos
               ? u"全角空格应写作半角空格"
               : u"全角字符 " + quoted(run) + u" 应写作半角 " + quoted(meant));
    for (std::size_t m = k; m < end; ++m) {
      line[m] = asciiFor(line[m]);
      if (line[m] == u'(') ++depth;
      if (line[m] == u')') --depth;
    }
    k = end - 1;
  }
}

void Checker::unclosedString(std::u16string_view line) {
  for (std::size_t k = 0; k < line.size(); ++k) {
    if (line[k] == u'\'') return;
    if (line[k] != u'"') continue;
    const std::size_t close = line.find(u'"', k + 1);
    if (close == std::u16string_view::npos) {
      report(line.data() + k, Severity::Error, "unclosed-string", u"字符串没有结束引号");
      return;
    }
    k = close;
  }
}

std::vector<CheckFinding> Checker::run(std::u16string_view text) {
  for (const std::u16string_view written : scriptLines(text)) {
    ++line_;
    written_ = written;
    std::u16string line(written);
    base_ = line.data();
    fullWidth(line);
    unclosedString(line);
    statement(line, false);
  }
  finish();
  std::stable_sort(findings_.begin(), findings_.end(), [](const auto& a, const auto& b) {
    return std::pair(a.line, a.column) < std::pair(b.line, b.column);
  });
  return std::move(findings_);
}

void Checker::statement(std::u16string_view s, bool inTail) {
  Error error;
  const std::int16_t kind = classifyLine(s, error);
  const std::size_t wordStart = stmt::detail::skipBlanks(s, 0);
  std::size_t wordEnd = wordStart;
  while (wordEnd < s.size() && isIdentChar(s[wordEnd])) ++wordEnd;
  const std::u16string_view word = s.substr(wordStart, wordEnd - wordStart);
  const char16_t* at = s.data() + wordStart;
  const auto rest = [&] { return stmt::detail::upToComment(s, wordEnd); };

  const bool block = kind == kStmtElse || kind == kStmtEndIf || kind == kStmtDoWhile ||
                     kind == kStmtDoUntil || kind == kStmtLoop || kind == kStmtEndDo;
  if (inTail && block) {
    report(
        at, Severity::Error, "block-in-single-line-if",
        u"单行 IF 的 THEN 之后不能写 " + quoted(word) + u"; 要用块 IF, 把 THEN 之后的语句另起一行");
    return;
  }
  switch (kind) {
    case 0:
      return classifyError(s, wordStart, error);
    case kStmtAssign:
      return assign(s, wordStart);
    case kStmtDim:
      return dim(rest().text);
    case kStmtIf:
      return ifLine(s, wordEnd, at, inTail);
    case kStmtElse:
      if (!trimBlanks(rest().text).empty()) {
        report(at, Severity::Error, "text-after-else",
               u"ELSE 之后不能再写内容 (没有 ELSE IF: 在 ELSE 之下另起一行写 IF … END IF)");
      }
      return elseLine(at);
    case kStmtEndIf:
      return close(false, at, u"END IF");
    case kStmtDoWhile:
    case kStmtDoUntil: {
      open(true, at);
      const std::u16string_view cut = rest().text;
      const std::size_t condition = stmt::detail::readLooseWord(cut, 0).end;
      if (trimBlanks(cut.substr(condition)).empty()) {
        report(at, Severity::Error, "missing-condition", u"DO WHILE / DO UNTIL 之后缺少条件");
      } else {
        expression(cut.substr(condition), false);
      }
      return;
    }
    case kStmtLoop:
      if (const std::u16string_view after = trimBlanks(rest().text); !after.empty()) {
        report(after.data(), Severity::Error, "text-after-loop",
               u"LOOP 之后不能再写内容: 条件只写在 DO WHILE / DO UNTIL 之后");
      }
      return close(true, at, u"LOOP");
    case kStmtEndDo:
      return close(true, at, u"END DO");
    case kStmtExitDo:
      if (std::none_of(blocks_.begin(), blocks_.end(), [](const Block& b) { return b.isDo; })) {
        report(at, Severity::Error, "exit-outside-loop", u"EXIT DO 不在 DO 循环之中");
      }
      return;
    case kStmtExitFor:
      report(at, Severity::Error, "no-for-loop", u"没有 FOR 循环: 循环请写 DO WHILE … LOOP");
      return;
    case kStmtMsgBox:
      if (trimBlanks(rest().text).empty()) {
        report(at, Severity::Error, "missing-expression", u"MSGBOX 之后缺少要显示的表达式");
      } else {
        expression(rest().text, false);
      }
      return;
    case kStmtRaiseError: {
      const std::u16string_view args = rest().text;
      Paras paras;
      if (paras.Parse(args) != 0 || paras.Count() != 1) {
        report(at, Severity::Error, "argument-count", u"RAISEERROR 需要 1 个参数: 错误信息");
      } else {
        expression(args, true);
      }
      return;
    }
    case kStmtSyntaxError: {
      const stmt::detail::Word second = stmt::detail::readLooseWord(s, wordEnd);
      const bool isDo = equalsNoCase(word, u"DO");
      const std::u16string_view meant =
          nearestStatement(std::u16string(word) + std::u16string(second.text), u"");
      std::u16string message = quoted(word) + u" 之后应为 ";
      message += isDo ? u"WHILE 或 UNTIL" : equalsNoCase(word, u"END") ? u"IF 或 DO" : u"DO";
      if (meant.find(u' ') != std::u16string_view::npos)
        message += u", 是不是 " + std::u16string(meant) + u"?";
      report(second.text.empty() ? at : second.text.data(), Severity::Error, "misspelled-keyword",
             std::move(message));
      if (isDo) open(true, at);
      if (meant == u"END IF") close(false, at, meant);
      return;
    }
    default:
      return;  // blank, comment, END, the record moves
  }
}

void Checker::classifyError(std::u16string_view s, std::size_t wordStart, const Error& error) {
  const char16_t* at = s.data() + wordStart;
  std::size_t end = wordStart;
  while (end < s.size() && isIdentChar(s[end])) ++end;
  const std::u16string upper = upperName(s.substr(wordStart, end - wordStart));
  if (error.number == 23) {
    if (upper == u"FOR" || upper == u"NEXT") {
      report(at, Severity::Error, "no-for-loop", u"没有 FOR 循环: 循环请写 DO WHILE … LOOP");
    } else if (upper == u"THEN") {
      report(at, Severity::Error, "keyword-misused", u"THEN 要和 IF 写在同一行");
    } else {
      report(at, Severity::Error, "keyword-misused",
             quoted(s.substr(wordStart, end - wordStart)) + u" 是关键字, 不能用作变量名或语句开头");
    }
    return;
  }
  if (error.number == 1) {
    report(at, Severity::Error, "text-after-move", u"移动记录的语句之后不能再写内容");
    return;
  }
  if (end == wordStart) {
    report(at, Severity::Error, "unknown-statement", u"无法识别的语句");
    return;
  }
  const char16_t bad = s[end];
  if (bad == u'(' && (upper == u"MSGBOX" || upper == u"RAISEERROR")) {
    report(s.data() + end, Severity::Error, "missing-blank",
           std::u16string(s.substr(wordStart, end - wordStart)) + u" 之后要先空一格, 再写表达式");
    return;
  }
  report(s.data() + end, Severity::Error, "bad-character",
         u"语句开头的名称中不能有字符 " + quoted({&bad, 1}));
}

void Checker::assign(std::u16string_view s, std::size_t wordStart) {
  std::size_t end = wordStart;
  while (end < s.size() && !isBlank(s[end]) && s[end] != u'=') ++end;
  const std::size_t eq = stmt::detail::skipBlanks(s, end);
  if (eq == s.size() || s[eq] != u'=') return unknownStatement(s, wordStart, end);
  assigned_.insert(upperName(s.substr(wordStart, end - wordStart)));
  const std::u16string_view value = stmt::detail::upToComment(s, eq + 1).text;
  if (trimBlanks(value).empty()) {
    report(s.data() + eq, Severity::Error, "missing-expression", u"赋值号 = 之后缺少表达式");
    return;
  }
  expression(value, false);
}

void Checker::unknownStatement(std::u16string_view s, std::size_t wordStart, std::size_t wordEnd) {
  const char16_t* at = s.data() + wordStart;
  const std::u16string_view word = s.substr(wordStart, wordEnd - wordStart);
  const std::u16string_view second = stmt::detail::readLooseWord(s, wordEnd).text;
  if (word.size() >= 6 && equalsNoCase(word.substr(0, 6), u"ELSEIF")) {
    report(at, Severity::Error, "unknown-statement",
           u"没有 ELSEIF: 写 ELSE, 在它之下另起一行写 IF … END IF");
    return elseLine(at);
  }
  const std::u16string_view meant = nearestStatement(word, second);
  if (meant.empty()) {
    report(at, Severity::Error, "unknown-statement",
           u"无法识别的语句 " + quoted(word) + u" (赋值要写成 名称 = 表达式)");
    return;
  }
  report(at, Severity::Error, "misspelled-keyword",
         u"无法识别的语句 " + quoted(word) + u", 是不是 " + std::u16string(meant) + u"?");
  // Go on as if the statement had been spelled right, so that its block
  // still pairs with its partner.
  if (meant == u"END IF") close(false, at, meant);
  if (meant == u"LOOP") close(true, at, meant);
  if (meant == u"DO WHILE" || meant == u"DO UNTIL") open(true, at);
  if (meant == u"ELSE") elseLine(at);
}

void Checker::ifLine(std::u16string_view s, std::size_t wordEnd, const char16_t* at, bool inTail) {
  std::size_t then = std::u16string_view::npos;
  for (std::size_t k = wordEnd; k < s.size(); ++k) {
    if (s[k] == u'"') {
      k = s.find(u'"', k + 1);
      if (k == std::u16string_view::npos) break;
      continue;
    }
    if (s[k] == u'\'') break;
    if (isBlank(s[k - 1]) && s.size() >= k + 4 && equalsNoCase(s.substr(k, 4), u"THEN") &&
        (s.size() == k + 4 || isBlank(s[k + 4]))) {
      then = k;
      break;
    }
  }
  if (then == std::u16string_view::npos) {
    report(at, Severity::Error, "missing-then", u"IF 语句缺少 THEN (THEN 前后要有空格)");
    if (!inTail) open(false, at);
    return;
  }
  const std::u16string_view condition = s.substr(wordEnd, then - wordEnd);
  if (trimBlanks(condition).empty()) {
    report(at, Severity::Error, "missing-condition", u"IF 之后缺少条件");
  } else {
    expression(condition, false);
  }
  const std::u16string_view tail = trimBlanks(stmt::detail::upToComment(s, then + 4).text);
  if (!tail.empty()) return statement(tail, true);
  if (inTail) {
    report(at, Severity::Error, "block-in-single-line-if", u"单行 IF 的 THEN 之后不能是块 IF");
    return;
  }
  if (!blocks_.empty() && !blocks_.back().isDo && blocks_.back().sawElse) {
    report(at, Severity::Warning, "if-in-else",
           u"ELSE 部分中的块 IF: 外层条件成立时, 跳过 ELSE 部分只到第一个 END IF 为止, "
           u"之后的行仍会执行; 请把它移出 ELSE 部分或改用单行 IF");
  }
  open(false, at);
}

void Checker::dim(std::u16string_view rest) {
  for (const std::u16string_view piece : splitArguments(rest)) {
    const std::u16string_view name = trimBlanks(piece);
    if (!name.empty()) assigned_.insert(upperName(name));
  }
}

void Checker::open(bool isDo, const char16_t* at) {
  blocks_.push_back(Block{isDo, line_, columnOf(at), false});
}

void Checker::close(bool isDo, const char16_t* at, std::u16string_view word) {
  const auto opener = std::find_if(blocks_.rbegin(), blocks_.rend(),
                                   [&](const Block& b) { return b.isDo == isDo; });
  if (opener == blocks_.rend()) {
    report(at, Severity::Error, "unopened-block",
           std::u16string(word) + (isDo ? u" 之前没有对应的 DO" : u" 之前没有对应的 IF"));
    return;
  }
  while (blocks_.back().isDo != isDo) {
    const Block& b = blocks_.back();
    reportAt(b.line, b.column, Severity::Error, "unclosed-block",
             (b.isDo ? u"DO 在第 " : u"IF 在第 ") + fromUtf8(std::to_string(line_)) + u" 行的 " +
                 std::u16string(word) + (b.isDo ? u" 之前没有 LOOP" : u" 之前没有 END IF"));
    blocks_.pop_back();
  }
  blocks_.pop_back();
}

void Checker::elseLine(const char16_t* at) {
  if (blocks_.empty() || blocks_.back().isDo) {
    report(at, Severity::Error, "unopened-block", u"ELSE 之前没有对应的块 IF");
    return;
  }
  if (blocks_.back().sawElse) {
    report(at, Severity::Error, "second-else",
           u"第 " + fromUtf8(std::to_string(blocks_.back().line)) + u" 行的 IF 已经有一个 ELSE");
  }
  blocks_.back().sawElse = true;
}

void Checker::expression(std::u16string_view e, bool blanksDropped) {
  std::vector<std::size_t> opens;
  for (std::size_t i = 0; i < e.size(); ++i) {
    const char16_t c = e[i];
    if (isBlank(c)) continue;
    if (c == u'"') {
      i = e.find(u'"', i + 1);
      if (i == std::u16string_view::npos) return;  // reported with the line
      continue;
    }
    if (c == u'#') {
      const std::size_t close = e.find(u'#', i + 1);
      if (close == std::u16string_view::npos) {
        report(e.data() + i, Severity::Error, "unclosed-date", u"日期没有结束的 #");
        return;
      }
      const std::u16string_view date = trimBlanks(e.substr(i + 1, close - i - 1));
      if (blanksDropped && std::any_of(date.begin(), date.end(), isBlank)) {
        report(e.data() + i, Severity::Error, "date-time-in-arguments",
               u"函数参数中的日期不能带时间: 参数里的空格会被去掉, 日期就读不出来了");
      }
      i = close;
      continue;
    }
    std::size_t length = 0;
    if (eval::readOperator(e, i, length) != eval::Op::None) {
      i += length - 1;
      continue;
    }
    if (isIdentStart(c)) {
      i = name(e, i, blanksDropped);
      continue;
    }
    if (isDigit(c) || c == u'.') {
      while (i + 1 < e.size() && (isDigit(e[i + 1]) || e[i + 1] == u'.')) ++i;
      continue;
    }
    if (c == u'(') {
      opens.push_back(i);
    } else if (c == u')' && !opens.empty()) {
      opens.pop_back();
    } else if (written_[static_cast<std::size_t>(e.data() + i - base_)] != c) {
      return;  // a full-width character, reported as such
    } else {
      report(e.data() + i, Severity::Error, c == u')' ? "unbalanced-parenthesis" : "bad-character",
             c == u')' ? std::u16string(u"多余的右括号 )")
                       : u"表达式中不能有字符 " + quoted({&e[i], 1}));
      return;
    }
  }
  if (!opens.empty()) {
    report(e.data() + opens.back(), Severity::Error, "unbalanced-parenthesis",
           u"括号没有闭合: 缺少 )");
  }
}

// The name at `i`: a constant, a call, a variable or field read. Returns
// the index of the last character it took.
std::size_t Checker::name(std::u16string_view e, std::size_t i, bool blanksDropped) {
  std::size_t end = i + 1;
  while (end < e.size() && isIdentChar(e[end])) ++end;
  const std::u16string_view written = e.substr(i, end - i);
  const std::u16string upper = upperName(written);
  const char16_t* at = e.data() + i;
  const std::size_t next = stmt::detail::skipBlanks(e, end);
  const bool paren = next < e.size() && e[next] == u'(';
  const std::optional<eval::NameEntry> entry = eval::lookupName(upper);

  if (entry && entry->kind == eval::NameKind::Constant) return end - 1;
  if (!paren) {
    if (entry) {
      if (next < e.size()) {
        report(at, Severity::Error, "missing-parenthesis",
               u"函数 " + std::u16string(written) + u" 之后要写 ( 和参数");
      }
    } else if (isStatementWord(upper)) {
      report(at, Severity::Error, "keyword-in-expression",
             upper == u"ELSE" ? std::u16string(u"单行 IF 不能带 ELSE: 请写成块 IF … ELSE … END IF")
                              : u"关键字 " + quoted(written) + u" 不能出现在表达式中");
    } else {
      uses_.push_back(NameUse{upper, std::u16string(written), line_, columnOf(at), false});
    }
    return end - 1;
  }
  const std::size_t close = matchingClose(e, next);
  if (close == std::u16string_view::npos) {
    report(e.data() + next, Severity::Error, "unbalanced-parenthesis", u"括号没有闭合: 缺少 )");
    return e.size();
  }
  const std::u16string_view group = e.substr(next, close - next + 1);
  if (entry) {
    call(written, at, &*entry, group);
  } else if (isWordOperator(upper)) {
    report(at, Severity::Error, "missing-blank",
           u"运算符 " + std::u16string(written) + u" 之后要先空一格");
  } else {
    uses_.push_back(NameUse{upper, std::u16string(written), line_, columnOf(at), true});
  }
  // Catalog functions split their arguments dropping blanks; the
  // evaluator's own functions read theirs as one expression.
  const bool dropping = entry ? entry->kind == eval::NameKind::Function : blanksDropped;
  const std::vector<std::u16string_view> args = splitArguments(group.substr(1, group.size() - 2));
  for (const std::u16string_view arg : args) expression(arg, dropping);
  if (upper == u"SETVAR" && !args.empty()) {
    const std::u16string_view first = trimBlanks(args.front());
    if (first.size() >= 2 && first.front() == u'"' && first.back() == u'"') {
      assigned_.insert(upperName(first.substr(1, first.size() - 2)));
    }
  }
  return close;
}

void Checker::call(std::u16string_view written, const char16_t* at, const eval::NameEntry* entry,
                   std::u16string_view group) {
  int lowest = 1;
  int highest = 1;
  if (entry->kind == eval::NameKind::Function) {
    lowest = entry->function->minArgs;
    highest = entry->function->maxArgs;
    if (lowest < 0) return;
  }
  Paras paras;
  if (paras.Parse(group) != 0) {
    report(at, Severity::Error, "bad-arguments",
           u"函数 " + std::u16string(written) + u" 的参数表有误 (多余的逗号或没有闭合的括号)");
    return;
  }
  const auto count = static_cast<int>(paras.Count());
  if (count >= lowest && count <= highest) return;
  const auto number = [](int n) { return fromUtf8(std::to_string(n)); };
  std::u16string need =
      lowest == highest ? number(lowest) : number(lowest) + u" 到 " + number(highest);
  report(at, Severity::Error, "argument-count",
         u"函数 " + std::u16string(written) + u" 需要 " + need + u" 个参数, 这里有 " +
             number(count) + u" 个");
}

void Checker::finish() {
  for (const Block& b : blocks_) {
    reportAt(b.line, b.column, Severity::Error, "unclosed-block",
             b.isDo ? u"DO 到文件结尾也没有对应的 LOOP" : u"IF 到文件结尾也没有对应的 END IF");
  }
  std::unordered_set<std::u16string> reported;
  for (const NameUse& use : uses_) {
    if (assigned_.contains(use.upper)) continue;
    if (use.called) {
      std::u16string message = u"未知的函数 " + quoted(use.written);
      const std::vector<std::u16string_view> near = nearestFunctions(use.written);
      for (std::size_t k = 0; k < near.size(); ++k) {
        message += k == 0 ? u", 是不是 " : u" 或 ";
        message += near[k];
      }
      if (!near.empty()) message += u"?";
      reportAt(use.line, use.column, Severity::Error, "unknown-function", std::move(message));
      continue;
    }
    if (fields_.contains(use.upper) || !reported.insert(use.upper).second) continue;
    reportAt(use.line, use.column, Severity::Warning, "unassigned-name",
             quoted(use.written) + u" 在本文件中没有赋值, 也没有用 DIM 声明" +
                 (fieldsKnown_ ? u", 也不是记录的字段" : u""));
  }
}

}  // namespace

std::vector<std::u16string_view> scriptLines(std::u16string_view text) {
  std::vector<std::u16string_view> lines;
  std::size_t start = 0;
  for (std::size_t k = 0; k < text.size(); ++k) {
    if (text[k] != u'\r' && text[k] != u'\n') continue;
    lines.push_back(text.substr(start, k - start));
    if (text[k] == u'\r' && k + 1 < text.size() && text[k + 1] == u'\n') ++k;
    start = k + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

std::vector<CheckFinding> checkScript(std::u16string_view text, const CheckSettings& settings) {
  return Checker(settings).run(text);
}

}  // namespace korvex
