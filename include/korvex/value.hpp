// Script values: the Automation-style Variant every KORVEX script works with.
//
// A Value is one of eleven types (see VarType) in 16 bytes. It is cheap to
// copy: strings, arrays and objects are held through shared, immutable
// storage, so a copy is a reference-count increment; numbers, Booleans,
// Empty and Null live inline and never touch the heap.
//
// This header only describes the value itself. A host converts values with
// the script's own rules through <korvex/convert.hpp>, which never throws:
//
//   Value pay = engine.GetVarValue(u"实发");
//   if (pay.type() == VarType::Double) use(pay.doubleValue());  // exact type
//   if (auto d = toDouble(pay)) use(*d.value);                    // any number
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

class HostObject;  // late-bound host object, see <korvex/host_object.hpp>
using ObjectRef = std::shared_ptr<HostObject>;

enum class VarType : std::uint8_t {
  Empty,
  Null,
  Integer,  // 16-bit signed
  Long,     // 32-bit signed
  Double,
  Currency,  // 64-bit integer scaled by 10,000
  Date,      // double: days since 1899-12-30, fraction = time of day
  String,    // UTF-16
  Boolean,   // True is -1 when taken as a number
  Object,    // reference-counted host object (may be "Nothing")
  Array,     // any number of dimensions, each with its own lower bound
};

/// The name used in messages and JSON output ("Empty", "Double", ...).
std::string_view typeName(VarType t) noexcept;

/// Fixed-point money value: the amount times 10,000.
struct Currency {
  std::int64_t scaled = 0;
  static constexpr std::int64_t kScale = 10000;
  friend bool operator==(Currency, Currency) = default;
};

class Value;

/// A multi-dimensional array of Values. Elements are stored with the first
/// index outermost (row-major), i.e. the last index varies fastest.
class Array {
 public:
  struct Bound {
    std::int32_t lower = 0;
    std::int32_t count = 0;  // number of elements in this dimension
  };

  Array() = default;
  explicit Array(std::vector<Bound> bounds);

  std::size_t dimensions() const noexcept { return bounds_.size(); }
  const std::vector<Bound>& bounds() const noexcept { return bounds_; }
  /// Bounds of dimension `dim` (0-based); a dimension the array does not
  /// have gives 0 for lbound and -1 for ubound, as an empty dimension would.
  std::int32_t lbound(std::size_t dim) const noexcept {
    return dim < bounds_.size() ? bounds_[dim].lower : 0;
  }
  std::int32_t ubound(std::size_t dim) const noexcept {
    return dim < bounds_.size() ? bounds_[dim].lower + bounds_[dim].count - 1 : -1;
  }

  /// Flat element storage, first index outermost.
  const std::vector<Value>& elements() const noexcept { return elements_; }
  std::vector<Value>& elements() noexcept { return elements_; }

  /// Element at the given indexes (one per dimension, in declared bounds);
  /// nullptr when the indexes are out of range or of the wrong count.
  const Value* at(std::span<const std::int32_t> indexes) const noexcept;
  Value* at(std::span<const std::int32_t> indexes) noexcept;

 private:
  std::ptrdiff_t offset(std::span<const std::int32_t> indexes) const noexcept;
  std::vector<Bound> bounds_;
  std::vector<Value> elements_;
};

namespace detail {
struct ValuePayload;
}

class Value {
 public:
  Value() noexcept = default;  // Empty
  Value(const Value& other) noexcept : type_(other.type_), u_(other.u_) { retain(); }
  Value(Value&& other) noexcept : type_(other.type_), u_(other.u_) { other.type_ = VarType::Empty; }
  Value& operator=(const Value& other) noexcept {
    other.retain();  // first: the two may share their storage
    if (onHeap()) release();
    type_ = other.type_;
    u_ = other.u_;
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    if (this != &other) {
      if (onHeap()) release();
      type_ = other.type_;
      u_ = other.u_;
      other.type_ = VarType::Empty;
    }
    return *this;
  }
  ~Value() {
    if (onHeap()) release();
  }
  void swap(Value& other) noexcept {
    std::swap(type_, other.type_);
    std::swap(u_, other.u_);
  }

  static Value null() noexcept;
  static Value integer(std::int16_t v) noexcept;
  static Value lng(std::int32_t v) noexcept;
  static Value dbl(double v) noexcept;
  static Value currency(Currency v) noexcept;
  static Value date(double serial) noexcept;
  static Value string(std::u16string v);
  static Value string(std::u16string_view v);
  static Value string(const char16_t* v) { return string(std::u16string_view(v)); }
  static Value boolean(bool v) noexcept;
  static Value object(ObjectRef v);
  static Value array(Array v);

  VarType type() const noexcept { return type_; }
  bool isEmpty() const noexcept { return type_ == VarType::Empty; }
  bool isNull() const noexcept { return type_ == VarType::Null; }
  bool isString() const noexcept { return type_ == VarType::String; }
  bool isObject() const noexcept { return type_ == VarType::Object; }
  bool isArray() const noexcept { return type_ == VarType::Array; }
  /// Integer, Long, Double, Currency (not Boolean, not Date).
  bool isNumberType() const noexcept;

  // Checked payload access: each accessor gives the payload when the value
  // is of its type (doubleValue: Double or Date), and otherwise a neutral
  // value: 0, false, "", Nothing or an array without dimensions. Reading a
  // Long through doubleValue gives 0.0, not its bits: test type() first,
  // or convert with the script's rules through <korvex/convert.hpp>
  // (toDouble, toLong, toText, ...), which reports what cannot convert.
  std::int16_t integerValue() const noexcept { return type_ == VarType::Integer ? u_.i16 : 0; }
  std::int32_t longValue() const noexcept { return type_ == VarType::Long ? u_.i32 : 0; }
  double doubleValue() const noexcept {
    return type_ == VarType::Double || type_ == VarType::Date ? u_.d : 0.0;
  }
  Currency currencyValue() const noexcept {
    return Currency{type_ == VarType::Currency ? u_.cy : 0};
  }
  bool booleanValue() const noexcept { return type_ == VarType::Boolean && u_.b; }
  const std::u16string& stringValue() const noexcept;
  const ObjectRef& objectValue() const noexcept;
  const Array& arrayValue() const noexcept;

 private:
  // String, Object and Array keep their payload on the heap, shared.
  static constexpr unsigned kHeapTypes = (1u << static_cast<unsigned>(VarType::String)) |
                                         (1u << static_cast<unsigned>(VarType::Object)) |
                                         (1u << static_cast<unsigned>(VarType::Array));
  bool onHeap() const noexcept {
    return ((kHeapTypes >> static_cast<unsigned>(type_)) & 1u) != 0 && u_.p != nullptr;
  }
  void retain() const noexcept;
  void release() noexcept;
  static Value holding(VarType type, const detail::ValuePayload* payload) noexcept;

  VarType type_ = VarType::Empty;
  union {
    std::int16_t i16;
    std::int32_t i32;
    double d;
    std::int64_t cy;
    bool b;
    const detail::ValuePayload* p;
  } u_{};
};

namespace detail {
// The shared storage behind a String, Object or Array value.
struct ValuePayload {
  mutable std::atomic<std::int32_t> refs{1};
};
struct StringPayload final : ValuePayload {
  explicit StringPayload(std::u16string t) : text(std::move(t)) {}
  explicit StringPayload(std::u16string_view t) : text(t) {}
  std::u16string text;
};
struct ObjectPayload final : ValuePayload {
  explicit ObjectPayload(ObjectRef o) : object(std::move(o)) {}
  ObjectRef object;
};
struct ArrayPayload final : ValuePayload {
  explicit ArrayPayload(Array a) : array(std::move(a)) {}
  Array array;
};
}  // namespace detail

inline const std::u16string& Value::stringValue() const noexcept {
  static const std::u16string kNone;
  return type_ == VarType::String && u_.p != nullptr
             ? static_cast<const detail::StringPayload*>(u_.p)->text
             : kNone;
}

inline Value Value::null() noexcept {
  Value v;
  v.type_ = VarType::Null;
  return v;
}

inline Value Value::integer(std::int16_t x) noexcept {
  Value v;
  v.type_ = VarType::Integer;
  v.u_.i16 = x;
  return v;
}

inline Value Value::lng(std::int32_t x) noexcept {
  Value v;
  v.type_ = VarType::Long;
  v.u_.i32 = x;
  return v;
}

inline Value Value::dbl(double x) noexcept {
  Value v;
  v.type_ = VarType::Double;
  v.u_.d = x;
  return v;
}

inline Value Value::currency(Currency x) noexcept {
  Value v;
  v.type_ = VarType::Currency;
  v.u_.cy = x.scaled;
  return v;
}

inline Value Value::date(double serial) noexcept {
  Value v;
  v.type_ = VarType::Date;
  v.u_.d = serial;
  return v;
}

inline Value Value::boolean(bool x) noexcept {
  Value v;
  v.type_ = VarType::Boolean;
  v.u_.b = x;
  return v;
}

inline void Value::retain() const noexcept {
  if (onHeap()) u_.p->refs.fetch_add(1, std::memory_order_relaxed);
}

/// UTF-8 <-> UTF-16 at the edges (files, command line, JSON). Invalid input
/// sequences become U+FFFD.
/// Whether two values are of one type and hold the same value: what a field
/// holds when it holds what it was read with. Objects and arrays never are.
bool sameValue(const Value& a, const Value& b) noexcept;

std::u16string fromUtf8(std::string_view utf8);
std::string toUtf8(std::u16string_view utf16);

}  // namespace korvex
