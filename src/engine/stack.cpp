#include "engine/stack.hpp"

#include <string>

#include "engine/checked.hpp"
#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "korvex/engine.hpp"
#include "values/runtime_error.hpp"

namespace korvex {

namespace {
constexpr std::size_t kGrowth = 10;
}

void Stack::report(std::int32_t number, std::u16string_view text) const {
  if (parent_ == nullptr) return;
  services::Report(*parent_, number, text);
}

void Stack::Push(Value v) {
  const std::int16_t count = toInt16Checked(std::int32_t{count_} + 1);
  if (static_cast<std::size_t>(count) > items_.size()) items_.resize(items_.size() + kGrowth);
  items_[static_cast<std::size_t>(count) - 1] = std::move(v);
  count_ = count;
}

Value Stack::Pop() {
  if (count_ == 0) {
    report(18, msg::kPopEmpty);
    return {};
  }
  // The slot keeps its value until it is overwritten, as a popped array
  // element would; only the count moves.
  Value top = items_[static_cast<std::size_t>(count_) - 1];
  --count_;
  return top;
}

Value Stack::GetPopValue() {
  if (count_ == 0) {
    report(20, msg::kGetPopValueEmpty);
    return {};
  }
  return items_[static_cast<std::size_t>(count_) - 1];
}

const Value* Stack::LineRef(std::int16_t index) {
  if (count_ == 0) {
    report(19, msg::kGetLineEmpty);
    return nullptr;
  }
  if (index > count_) {
    report(21, msg::kGetLineIndex);
    return nullptr;
  }
  if (index < 1) vb::raise(vb::kSubscript);
  return &items_[static_cast<std::size_t>(index) - 1];
}

Value Stack::GetLine(std::int16_t index) {
  const Value* v = LineRef(index);
  return v != nullptr ? *v : Value{};
}

}  // namespace korvex
