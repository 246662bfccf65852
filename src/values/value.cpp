#include "korvex/value.hpp"

#include <array>

namespace korvex {

std::string_view typeName(VarType t) noexcept {
  // In the order of VarType.
  static constexpr std::array<std::string_view, 11> kNames{
      "Empty", "Null",   "Integer", "Long",   "Double", "Currency",
      "Date",  "String", "Boolean", "Object", "Array"};
  static_assert(kNames.size() == static_cast<std::size_t>(VarType::Array) + 1);
  const auto i = static_cast<std::size_t>(t);
  return i < kNames.size() ? kNames[i] : "Unknown";
}

// ---- Array ---------------------------------------------------------------

Array::Array(std::vector<Bound> bounds) : bounds_(std::move(bounds)) {
  std::size_t total = bounds_.empty() ? 0 : 1;
  for (auto& b : bounds_) {
    if (b.count < 0) b.count = 0;
    total *= static_cast<std::size_t>(b.count);
  }
  elements_.resize(total);
}

std::ptrdiff_t Array::offset(std::span<const std::int32_t> indexes) const noexcept {
  if (indexes.size() != bounds_.size() || bounds_.empty()) return -1;
  std::ptrdiff_t flat = 0;
  for (std::size_t d = 0; d < bounds_.size(); ++d) {
    const std::int64_t rel = static_cast<std::int64_t>(indexes[d]) - bounds_[d].lower;
    if (rel < 0 || rel >= bounds_[d].count) return -1;
    flat = flat * bounds_[d].count + static_cast<std::ptrdiff_t>(rel);
  }
  return static_cast<std::size_t>(flat) < elements_.size() ? flat : -1;
}

const Value* Array::at(std::span<const std::int32_t> indexes) const noexcept {
  const auto i = offset(indexes);
  return i < 0 ? nullptr : &elements_[static_cast<std::size_t>(i)];
}

Value* Array::at(std::span<const std::int32_t> indexes) noexcept {
  const auto i = offset(indexes);
  return i < 0 ? nullptr : &elements_[static_cast<std::size_t>(i)];
}

// ---- Value ---------------------------------------------------------------

Value Value::holding(VarType type, const detail::ValuePayload* payload) noexcept {
  Value v;
  v.type_ = type;
  v.u_.p = payload;
  return v;
}

void Value::release() noexcept {
  if (u_.p->refs.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  switch (type_) {
    case VarType::String:
      delete static_cast<const detail::StringPayload*>(u_.p);
      break;
    case VarType::Object:
      delete static_cast<const detail::ObjectPayload*>(u_.p);
      break;
    case VarType::Array:
      delete static_cast<const detail::ArrayPayload*>(u_.p);
      break;
    default:
      break;
  }
}

Value Value::string(std::u16string x) {
  return holding(VarType::String, new detail::StringPayload(std::move(x)));
}

Value Value::string(std::u16string_view x) {
  return holding(VarType::String, new detail::StringPayload(x));
}

Value Value::object(ObjectRef x) {
  // Nothing needs no storage.
  if (!x) return holding(VarType::Object, nullptr);
  return holding(VarType::Object, new detail::ObjectPayload(std::move(x)));
}

Value Value::array(Array x) {
  return holding(VarType::Array, new detail::ArrayPayload(std::move(x)));
}

bool Value::isNumberType() const noexcept {
  switch (type_) {
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double:
    case VarType::Currency:
      return true;
    default:
      return false;
  }
}

namespace {
const Array kNoArray;
}  // namespace

const ObjectRef& Value::objectValue() const noexcept {
  static const ObjectRef kNothing;
  return type_ == VarType::Object && u_.p != nullptr
             ? static_cast<const detail::ObjectPayload*>(u_.p)->object
             : kNothing;
}

const Array& Value::arrayValue() const noexcept {
  return type_ == VarType::Array && u_.p != nullptr
             ? static_cast<const detail::ArrayPayload*>(u_.p)->array
             : kNoArray;
}

static_assert(sizeof(Value) == 16, "a value is a type tag and eight bytes");

bool sameValue(const Value& a, const Value& b) noexcept {
  if (a.type() != b.type()) return false;
  switch (a.type()) {
    case VarType::Integer:
      return a.integerValue() == b.integerValue();
    case VarType::Long:
      return a.longValue() == b.longValue();
    case VarType::Double:
    case VarType::Date:
      return a.doubleValue() == b.doubleValue();
    case VarType::Currency:
      return a.currencyValue() == b.currencyValue();
    case VarType::Boolean:
      return a.booleanValue() == b.booleanValue();
    case VarType::String:
      return a.stringValue() == b.stringValue();
    case VarType::Empty:
    case VarType::Null:
      return true;
    default:
      return false;
  }
}

}  // namespace korvex
