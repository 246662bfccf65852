#include "eval/call.hpp"

#include <algorithm>
#include <array>
#include <span>

#include "engine/context.hpp"
#include "engine/paras.hpp"
#include "engine/script_reader.hpp"
#include "eval/expression.hpp"

namespace korvex::eval {

namespace {

bool countAccepted(const fn::FunctionEntry& entry, std::size_t n) noexcept {
  if (entry.minArgs < 0) return true;
  return n >= static_cast<std::size_t>(entry.minArgs) &&
         n <= static_cast<std::size_t>(entry.maxArgs);
}

bool opensWithParenthesis(std::u16string_view text) noexcept {
  const auto trimmed = trimBlanks(text);
  return !trimmed.empty() && trimmed.front() == u'(';
}

// The evaluated arguments of one call; most calls have few.
class ArgValues {
 public:
  explicit ArgValues(std::size_t n) {
    if (n > small_.size()) big_.resize(n);
    n_ = n;
  }
  Value* data() noexcept { return big_.empty() ? small_.data() : big_.data(); }
  std::span<const Value> all() noexcept { return {data(), n_}; }

 private:
  std::array<Value, 4> small_{};
  std::vector<Value> big_;
  std::size_t n_ = 0;
};

}  // namespace

ArgList::ArgList(std::u16string_view argText)
    : text_(argText), opens_(eval::opensWithParenthesis(argText)) {
  Paras paras;
  if (paras.Parse(argText) != 0) return;
  parsed_ = true;
  items_.reserve(paras.Count());
  for (std::size_t i = 1; i <= paras.Count(); ++i) {
    items_.push_back(std::make_unique<Expression>(paras.Item(i).Expression));
  }
}

ArgList::~ArgList() = default;

std::int32_t Invoke(const fn::FunctionEntry& entry, ArgList& args, Value& result, Context& ctx) {
  const std::size_t n = args.parsed() ? args.count() : 0;
  ArgValues values(n);
  fn::Call call(entry, args.text(), ctx, values.all());
  if ((entry.quirks & fn::kRequiresParenthesis) && !args.opensWithParenthesis()) {
    return call.countError();
  }
  if (!args.parsed() || !countAccepted(entry, n)) return call.countError();
  // Every argument in order; the first that fails ends the evaluation and
  // leaves the rest Empty.
  std::int32_t evaluated = 0;
  for (std::size_t i = 0; i < n; ++i) {
    Value v = args.item(i).evaluate(ctx);
    if (ctx.errNum() != 0) {
      evaluated = ctx.errNum();
      break;
    }
    values.data()[i] = std::move(v);
  }
  const bool engineStatus = (entry.quirks & fn::kEngineStatus) != 0;
  if (!engineStatus) {
    if (evaluated != 0) return evaluated;
    if (ctx.errNum() != 0) return ctx.errNum();
  }
  const std::size_t checked = std::min(n, entry.checks.size());
  for (std::size_t i = 1; i <= checked; ++i) {
    if (!fn::Passes(entry.checks[i - 1], call.arg(i), call.locale())) {
      const std::int32_t status = call.typeError();
      return engineStatus ? ctx.errNum() : status;
    }
  }
  const std::int32_t status = entry.operation(call, result);
  return engineStatus ? ctx.errNum() : status;
}

}  // namespace korvex::eval
