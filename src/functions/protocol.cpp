#include "functions/protocol.hpp"

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/paras.hpp"
#include "engine/string_op.hpp"
#include "eval/expression.hpp"
#include "values/ops.hpp"

namespace korvex::fn {

const Locale& Call::locale() const noexcept { return ctx_.locale(); }

std::u16string Call::suffix(std::u16string_view extra) const {
  if (!desc_.fixedSuffix.empty()) return std::u16string(desc_.fixedSuffix);
  std::u16string s;
  s.reserve(6 + desc_.name.size() + argText_.size() + extra.size());
  s += u"{函数:";
  s += desc_.name;
  s += argText_;
  s += extra;
  s += u'}';
  return s;
}

std::int32_t Call::fail(std::int32_t number, std::u16string message) const {
  ctx_.report(number, message);
  return number;
}

std::int32_t Call::countError() const {
  return fail(6, std::u16string(msg::kBadArguments) + suffix({}));
}

std::int32_t Call::typeError(std::u16string_view extra) const {
  std::u16string text(msg::kTypeMismatch);
  if (!(desc_.quirks & kPlainTypeMessage)) text += suffix(extra);
  return fail(4, std::move(text));
}

bool Passes(Check check, const Value& v, const Locale& loc) {
  switch (check) {
    case Check::Any:
      return true;
    case Check::Numeric:
      return vb::isNumeric(v, loc);
    case Check::NumericOrNull:
      return v.isNull() || vb::isNumeric(v, loc);
    case Check::NonNegative:
      // Compared with a numeric constant, a numeric string counts by its
      // number: "-1" is negative.
      return vb::isNumeric(v, loc) && vb::toDouble(v, loc) >= 0;
    case Check::Date:
      return vb::isDate(v, loc);
    case Check::String:
      return v.isString();
    case Check::Textual:
      return !v.isNull() && !v.isObject() && !v.isArray();
    case Check::Array:
      return v.isArray();
  }
  return false;
}

namespace {

bool countAccepted(const FunctionDescriptor& desc, std::size_t n) noexcept {
  if (desc.minArgs < 0) return true;
  return n >= static_cast<std::size_t>(desc.minArgs) && n <= static_cast<std::size_t>(desc.maxArgs);
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
    : text_(argText), opens_(fn::opensWithParenthesis(argText)) {
  Paras paras;
  if (paras.Parse(argText) != 0) return;
  parsed_ = true;
  items_.reserve(paras.Count());
  for (std::size_t i = 1; i <= paras.Count(); ++i) {
    items_.push_back(std::make_unique<eval::Expression>(paras.Item(i).Expression));
  }
}

ArgList::~ArgList() = default;

std::int32_t Invoke(const FunctionDescriptor& desc, const ArgList& args, Value& result,
                    Context& ctx) {
  const std::size_t n = args.parsed() ? args.count() : 0;
  ArgValues values(n);
  Call call(desc, args.text(), ctx, values.all());
  if ((desc.quirks & kRequiresParenthesis) && !args.opensWithParenthesis()) {
    return call.countError();
  }
  if (!args.parsed() || !countAccepted(desc, n)) return call.countError();
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
  const bool engineStatus = (desc.quirks & kEngineStatus) != 0;
  if (!engineStatus) {
    if (evaluated != 0) return evaluated;
    if (ctx.errNum() != 0) return ctx.errNum();
  }
  const std::size_t checked = std::min(n, desc.checks.size());
  for (std::size_t i = 1; i <= checked; ++i) {
    if (!Passes(desc.checks[i - 1], call.arg(i), call.locale())) {
      const std::int32_t status = call.typeError();
      return engineStatus ? ctx.errNum() : status;
    }
  }
  const std::int32_t status = desc.operation(call, result);
  return engineStatus ? ctx.errNum() : status;
}

}  // namespace korvex::fn
