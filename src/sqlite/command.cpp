// The Command object with its Parameters. A stored procedure (CommandType
// 4) is the database's (Backend::procedure): it gets the input parameters
// in order, and the output parameters receive the first row's columns in
// order.
#include <string>

#include "host/collection.hpp"
#include "host/recordset_errors.hpp"
#include "sqlite/field_types.hpp"
#include "sqlite/objects.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::ds {

using host::equalsNoCase;

namespace {

constexpr std::int32_t kStoredProcedure = 4;
enum Direction : std::int32_t { kInput = 1, kOutput = 2, kInputOutput = 3, kReturnValue = 4 };

std::int32_t longOr(std::span<const Value> args, std::size_t i, std::int32_t fallback) {
  if (i >= args.size() || args[i].isEmpty()) return fallback;
  try {
    return vb::toLong(args[i], Locale::zhCN());
  } catch (const vb::RuntimeError&) {
    return fallback;
  }
}

class Parameter final : public host::PropertyObject {
 public:
  std::u16string name;
  std::int32_t type = 0;
  std::int32_t direction = kInput;
  std::int32_t size = 0;
  Value value;

  DispatchResult getProperty(std::u16string_view member, std::span<const Value>) override {
    if (equalsNoCase(member, u"Name")) return DispatchResult::success(Value::string(name));
    if (equalsNoCase(member, u"Type")) return DispatchResult::success(Value::lng(type));
    if (equalsNoCase(member, u"Direction")) return DispatchResult::success(Value::lng(direction));
    if (equalsNoCase(member, u"Size")) return DispatchResult::success(Value::lng(size));
    if (equalsNoCase(member, u"Value")) return DispatchResult::success(value);
    return memberNotFound(member);
  }
  DispatchResult setProperty(std::u16string_view member, std::span<const Value>,
                             const Value& v) override {
    if (equalsNoCase(member, u"Value")) {
      value = v;
      return DispatchResult::success();
    }
    const std::array<Value, 1> one{v};
    std::int32_t* target = equalsNoCase(member, u"Type")        ? &type
                           : equalsNoCase(member, u"Direction") ? &direction
                           : equalsNoCase(member, u"Size")      ? &size
                                                                : nullptr;
    if (target != nullptr) {
      *target = longOr(one, 0, *target);
      return DispatchResult::success();
    }
    if (equalsNoCase(member, u"Name")) {
      name = v.isString() ? v.stringValue() : u"";
      return DispatchResult::success();
    }
    return memberNotFound(member);
  }
};

class Parameters final : public HostCollection {
 public:
  std::vector<std::shared_ptr<Parameter>> items;

  DispatchResult callMethod(std::u16string_view member, std::span<const Value> args) override {
    if (equalsNoCase(member, u"Append")) {
      auto* p = args.size() == 1 && args[0].isObject()
                    ? dynamic_cast<Parameter*>(args[0].objectValue().get())
                    : nullptr;
      if (p == nullptr) return badArguments();
      items.push_back(std::static_pointer_cast<Parameter>(args[0].objectValue()));
      return DispatchResult::success();
    }
    return getProperty(member, args);
  }
  DispatchResult getDefault(std::span<const Value> args) override {
    if (args.size() != 1) return host::itemNotFound();
    for (std::size_t i = 0; i < items.size(); ++i) {
      const bool match = args[0].isString() ? equalsNoCase(items[i]->name, args[0].stringValue())
                                            : longOr(args, 0, -1) == static_cast<std::int32_t>(i);
      if (match) return DispatchResult::success(Value::object(items[i]));
    }
    return host::itemNotFound();
  }

 protected:
  std::size_t count() const override { return items.size(); }
};

}  // namespace

Command::Command() : parameters_(std::make_shared<Parameters>()) {}
Command::~Command() = default;

DispatchResult Command::runProcedure(Connection& connection) {
  if (connection.log()) connection.log()->add(text_);
  const auto& backend = connection.backend();
  if (!backend) return objectClosed();
  auto& params = static_cast<Parameters&>(*parameters_).items;
  try {
    std::vector<Value> inputs;
    for (const auto& p : params) {
      if (p->direction == kInput || p->direction == kInputOutput) {
        inputs.push_back(
            storedValue(p->type == 200 ? kTypeText : p->type, p->value, Locale::zhCN()));
      }
    }
    std::optional<ResultSet> rows = backend->procedure(text_, inputs);
    if (!rows) return providerError(u"找不到存储过程 '" + text_ + u"'。");
    ResultSet& result = *rows;
    std::size_t column = 0;
    for (const auto& p : params) {
      if (p->direction != kOutput && p->direction != kInputOutput && p->direction != kReturnValue) {
        continue;
      }
      const bool has = !result.rows.empty() && column < result.columns.size();
      p->value = has ? result.rows[0][column] : Value::null();
      ++column;
    }
    return DispatchResult::success(
        Value::object(std::make_shared<Recordset>(std::move(result), backend)));
  } catch (const DbError& e) {
    return providerError(e.message());
  } catch (const vb::RuntimeError& e) {
    return DispatchResult::failure(e.number(), e.description());
  }
}

DispatchResult Command::execute() {
  auto* connection = connection_ ? dynamic_cast<Connection*>(connection_.get()) : nullptr;
  if (connection == nullptr) {
    return connectionUnusable();
  }
  if (type_ == kStoredProcedure) return runProcedure(*connection);
  std::vector<Value> inputs;
  for (const auto& p : static_cast<Parameters&>(*parameters_).items) inputs.push_back(p->value);
  return connection->execute(text_, inputs);
}

DispatchResult Command::getProperty(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"ActiveConnection")) {
    return DispatchResult::success(Value::object(connection_));
  }
  if (equalsNoCase(name, u"CommandText")) return DispatchResult::success(Value::string(text_));
  if (equalsNoCase(name, u"CommandType")) return DispatchResult::success(Value::lng(type_));
  if (equalsNoCase(name, u"Parameters")) return host::collectionOrItem(parameters_, args);
  return memberNotFound(name);
}

DispatchResult Command::setProperty(std::u16string_view name, std::span<const Value>,
                                    const Value& value) {
  if (equalsNoCase(name, u"ActiveConnection")) {
    if (!value.isObject()) return badArguments();
    connection_ = value.objectValue();
    return DispatchResult::success();
  }
  if (equalsNoCase(name, u"CommandText")) {
    try {
      text_ = vb::toString(value, Locale::zhCN());
    } catch (const vb::RuntimeError&) {
      return badArguments();
    }
    return DispatchResult::success();
  }
  if (equalsNoCase(name, u"CommandType")) {
    const std::array<Value, 1> one{value};
    type_ = longOr(one, 0, type_);
    return DispatchResult::success();
  }
  return memberNotFound(name);
}

DispatchResult Command::callMethod(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"Execute")) return execute();
  if (equalsNoCase(name, u"CreateParameter")) {
    auto p = std::make_shared<Parameter>();
    if (!args.empty() && args[0].isString()) p->name = args[0].stringValue();
    p->type = longOr(args, 1, 0);
    p->direction = longOr(args, 2, kInput);
    p->size = longOr(args, 3, 0);
    if (args.size() > 4) p->value = args[4];
    return DispatchResult::success(Value::object(std::move(p)));
  }
  return getProperty(name, args);
}

}  // namespace korvex::ds
