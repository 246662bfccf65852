#include "engine/flag_stack.hpp"

#include <string_view>

#include "engine/checked.hpp"
#include "engine/messages.hpp"

namespace korvex {

namespace {

constexpr std::u16string_view kIf = u"If";
constexpr std::u16string_view kDoWhile = u"Do While";
constexpr std::u16string_view kDoUntil = u"Do Until";

std::u16string_view markerText(FlagFrame::Marker m) noexcept {
  switch (m) {
    case FlagFrame::Marker::If:
      return kIf;
    case FlagFrame::Marker::DoWhile:
      return kDoWhile;
    case FlagFrame::Marker::DoUntil:
      return kDoUntil;
    case FlagFrame::Marker::Other:
      break;
  }
  return {};
}

const Value& element(const Value& v, std::size_t index) {
  static const Value kNone;
  if (!v.isArray()) return kNone;
  const auto& items = v.arrayValue().elements();
  return index < items.size() ? items[index] : kNone;
}

// What an empty stack answers: no marker, and Empty to the host.
FlagFrame nothing() {
  FlagFrame f;
  f.fromHost = true;
  return f;
}

}  // namespace

Value FlagFrame::toValue() const {
  if (fromHost) return pushed;
  Array entry({Array::Bound{1, 3}});
  entry.elements()[0] = Value::string(markerText(marker));
  entry.elements()[1] = line;
  entry.elements()[2] = detail;
  return Value::array(std::move(entry));
}

FlagFrame FlagFrame::fromValue(const Value& v) {
  FlagFrame f;
  const Value& first = element(v, 0);
  if (first.isString()) {
    const std::u16string_view text = first.stringValue();
    if (text == kIf) f.marker = Marker::If;
    if (text == kDoWhile) f.marker = Marker::DoWhile;
    if (text == kDoUntil) f.marker = Marker::DoUntil;
  }
  f.line = element(v, 1);
  f.detail = element(v, 2);
  f.fromHost = true;
  f.pushed = v;
  return f;
}

void FlagStack::push(FlagFrame&& frame) {
  const std::int16_t count = toInt16Checked(std::int32_t{count_} + 1);
  if (static_cast<std::size_t>(count) > frames_.size()) frames_.resize(count);
  frames_[static_cast<std::size_t>(count) - 1] = std::move(frame);
  count_ = count;
}

FlagFrame FlagStack::pop() {
  if (count_ == 0) {
    errors_->set(msg::kPopEmpty);
    return nothing();
  }
  --count_;
  return std::move(frames_[static_cast<std::size_t>(count_)]);
}

const FlagFrame& FlagStack::top() {
  static const FlagFrame kNone = nothing();
  if (count_ == 0) {
    errors_->set(msg::kGetPopValueEmpty);
    return kNone;
  }
  return frames_[static_cast<std::size_t>(count_) - 1];
}

void FlagStack::clear() noexcept {
  frames_.clear();
  count_ = 0;
}

}  // namespace korvex
