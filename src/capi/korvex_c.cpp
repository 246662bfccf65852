// The C interface (korvex.h): a host on top of the public C++ headers, like
// the command. Every entry point catches whatever the C++ side throws and
// turns it into a status code; nothing unwinds into C.
#include <sys/stat.h>

#include <array>
#include <cmath>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "korvex.h"
#include "korvex/batch.hpp"
#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/host_function.hpp"
#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"
#include "korvex/user_interface.hpp"

#if defined(KORVEX_PROJECT_VERSION_MAJOR)
static_assert(KORVEX_PROJECT_VERSION_MAJOR == KORVEX_VERSION_MAJOR &&
                  KORVEX_PROJECT_VERSION_MINOR == KORVEX_VERSION_MINOR &&
                  KORVEX_PROJECT_VERSION_PATCH == KORVEX_VERSION_PATCH,
              "korvex.h and the CMake project disagree on the version");
#endif

namespace {

using korvex::Value;
using korvex::VarType;

// Message and input boxes through the host's callbacks; without one, a box
// is answered Yes/OK and an input box cancelled.
class CallbackInterface final : public korvex::UserInterface {
 public:
  korvex_message_box messageBox_ = nullptr;
  korvex_input_box inputBox_ = nullptr;
  void* user_ = nullptr;

  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override {
    if (messageBox_ == nullptr) return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
    const std::string t = korvex::toUtf8(text), h = korvex::toUtf8(title);
    const int a = messageBox_(user_, t.c_str(), t.size(),
                              buttons == Buttons::YesNo ? KORVEX_BUTTONS_YES_NO : KORVEX_BUTTONS_OK,
                              h.c_str(), h.size());
    return a == KORVEX_ANSWER_YES ? Answer::Yes : a == KORVEX_ANSWER_NO ? Answer::No : Answer::Ok;
  }

  std::optional<std::u16string> inputBox(std::u16string_view prompt, std::u16string_view title,
                                         std::u16string_view defaultText) override;
};

}  // namespace

struct korvex_reply {
  std::u16string text;
};

struct korvex_call {
  const korvex::HostFunctionCall* call;
};

struct korvex_engine {
  korvex::BasicEngine engine;
  std::shared_ptr<CallbackInterface> ui = std::make_shared<CallbackInterface>();
  std::shared_ptr<korvex::ObjectFactory> objects = korvex::sqliteObjectFactory();
  korvex::ObjectRef connection;
  std::string lastError;
  std::string message;  // the last outcome's text
  std::string varText;  // the last variable's text
};

namespace {

std::optional<std::u16string> CallbackInterface::inputBox(std::u16string_view prompt,
                                                          std::u16string_view title,
                                                          std::u16string_view defaultText) {
  if (inputBox_ == nullptr) return std::nullopt;
  const std::string p = korvex::toUtf8(prompt), t = korvex::toUtf8(title),
                    d = korvex::toUtf8(defaultText);
  korvex_reply reply;
  if (inputBox_(user_, p.c_str(), p.size(), t.c_str(), t.size(), d.c_str(), d.size(), &reply) ==
      0) {
    return std::nullopt;
  }
  return std::move(reply.text);
}

std::string_view textOf(const char* text, std::size_t length) {
  if (text == nullptr) return {};
  return length == KORVEX_NTS ? std::string_view(text) : std::string_view(text, length);
}

// Runs `fn` (returning a status), with what it throws as a status.
template <typename Fn>
korvex_status guarded(korvex_engine* e, Fn&& fn) noexcept {
  try {
    if (e != nullptr) e->lastError.clear();
    return fn();
  } catch (const std::bad_alloc&) {
    return KORVEX_E_MEMORY;
  } catch (const std::exception& x) {
    try {
      if (e != nullptr) e->lastError = x.what();
    } catch (...) {
    }
    return KORVEX_E_INTERNAL;
  } catch (...) {
    return KORVEX_E_INTERNAL;
  }
}

korvex_status failed(korvex_engine* e, korvex_status status, std::string why) {
  e->lastError = std::move(why);
  return status;
}

// A C value as a script value; false for a type or range it cannot be.
bool toValue(const korvex_value& in, Value& out) {
  switch (in.type) {
    case KORVEX_EMPTY:
      out = Value();
      return true;
    case KORVEX_NULL:
      out = Value::null();
      return true;
    case KORVEX_INTEGER:
      if (in.integer < INT16_MIN || in.integer > INT16_MAX) return false;
      out = Value::integer(static_cast<std::int16_t>(in.integer));
      return true;
    case KORVEX_LONG:
      if (in.integer < INT32_MIN || in.integer > INT32_MAX) return false;
      out = Value::lng(static_cast<std::int32_t>(in.integer));
      return true;
    case KORVEX_DOUBLE:
      out = Value::dbl(in.number);
      return true;
    case KORVEX_CURRENCY:
      out = Value::currency(korvex::Currency{in.integer});
      return true;
    case KORVEX_DATE:
      if (!std::isfinite(in.number)) return false;
      out = Value::date(in.number);
      return true;
    case KORVEX_STRING:
      if (in.text == nullptr && in.length != 0) return false;
      out = Value::string(korvex::fromUtf8(textOf(in.text, in.length)));
      return true;
    case KORVEX_BOOLEAN:
      out = Value::boolean(in.integer != 0);
      return true;
    default:
      return false;
  }
}

// A script value as a C value; a string's text is kept in `storage`.
korvex_value fromValue(const Value& v, std::string& storage) {
  korvex_value out{};
  out.type = static_cast<std::int32_t>(v.type());
  switch (v.type()) {
    case VarType::Integer:
      out.integer = v.integerValue();
      break;
    case VarType::Long:
      out.integer = v.longValue();
      break;
    case VarType::Double:
    case VarType::Date:
      out.number = v.doubleValue();
      break;
    case VarType::Currency:
      out.integer = v.currencyValue().scaled;
      break;
    case VarType::Boolean:
      out.integer = v.booleanValue() ? 1 : 0;
      break;
    case VarType::String:
      storage = korvex::toUtf8(v.stringValue());
      out.text = storage.c_str();
      out.length = storage.size();
      break;
    default:
      break;
  }
  return out;
}

}  // namespace

extern "C" {

const char* korvex_version(void) {
#define KORVEX_TEXT_(x) #x
#define KORVEX_TEXT(x) KORVEX_TEXT_(x)
  return KORVEX_TEXT(KORVEX_VERSION_MAJOR) "." KORVEX_TEXT(KORVEX_VERSION_MINOR) "." KORVEX_TEXT(
      KORVEX_VERSION_PATCH);
}

korvex_status korvex_date_from_parts(const korvex_date_parts* p, double* serial) {
  if (p == nullptr || serial == nullptr) return KORVEX_E_ARGUMENT;
  static constexpr std::array<int, 12> kDays = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (p->year % 4 == 0 && p->year % 100 != 0) || p->year % 400 == 0;
  if (p->year < 100 || p->year > 9999 || p->month < 1 || p->month > 12 || p->day < 1 ||
      p->day > kDays[static_cast<std::size_t>(p->month - 1)] ||
      (p->month == 2 && p->day == 29 && !leap) || p->hour < 0 || p->hour > 23 || p->minute < 0 ||
      p->minute > 59 || p->second < 0 || p->second > 59) {
    return KORVEX_E_ARGUMENT;
  }
  // Days from the civil date (proleptic Gregorian), counted from 1899-12-30.
  const auto civil = [](std::int64_t y, std::int64_t m, std::int64_t d) {
    y -= m <= 2;
    const std::int64_t era = y / 400;
    const std::int64_t yoe = y - era * 400;
    const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy;
  };
  const double days = static_cast<double>(civil(p->year, p->month, p->day) - civil(1899, 12, 30));
  const double time = (p->hour * 3600.0 + p->minute * 60.0 + p->second) / 86400.0;
  // Before the epoch the fraction still counts forward within the day.
  *serial = days >= 0 ? days + time : days - time;
  return KORVEX_OK;
}

korvex_status korvex_date_to_parts(double serial, korvex_date_parts* parts) {
  if (parts == nullptr || !std::isfinite(serial)) return KORVEX_E_ARGUMENT;
  const auto fields = korvex::dateTimeFields(serial);
  if (!fields) return KORVEX_E_ARGUMENT;
  const korvex::DateTimeFields& f = *fields.value;
  *parts = {f.year, f.month, f.day, f.hour, f.minute, f.second};
  return KORVEX_OK;
}

korvex_status korvex_engine_new(korvex_engine** engine) {
  if (engine == nullptr) return KORVEX_E_ARGUMENT;
  *engine = nullptr;
  return guarded(nullptr, [&] {
    auto e = std::make_unique<korvex_engine>();
    e->engine.SetUserInterface(e->ui);
    e->engine.SetObjectFactory(e->objects);
    *engine = e.release();
    return KORVEX_OK;
  });
}

void korvex_engine_free(korvex_engine* engine) { delete engine; }

korvex_status korvex_last_error(const korvex_engine* e, const char** message, size_t* length) {
  if (e == nullptr || message == nullptr) return KORVEX_E_ARGUMENT;
  *message = e->lastError.c_str();
  if (length != nullptr) *length = e->lastError.size();
  return KORVEX_OK;
}

korvex_status korvex_set_script(korvex_engine* e, const char* text, size_t length) {
  if (e == nullptr || (text == nullptr && length != 0)) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    e->engine.SetCodeBlock(korvex::fromUtf8(textOf(text, length)));
    return KORVEX_OK;
  });
}

korvex_status korvex_set_var(korvex_engine* e, const char* name, size_t nameLength,
                             const korvex_value* value) {
  if (e == nullptr || name == nullptr || value == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    Value v;
    if (!toValue(*value, v)) return failed(e, KORVEX_E_ARGUMENT, "value of no known type or range");
    e->engine.SetSysVar(korvex::fromUtf8(textOf(name, nameLength)), v);
    return KORVEX_OK;
  });
}

korvex_status korvex_get_var(korvex_engine* e, const char* name, size_t nameLength,
                             korvex_value* value) {
  if (e == nullptr || name == nullptr || value == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    const std::u16string n = korvex::fromUtf8(textOf(name, nameLength));
    if (!e->engine.IsVarDefined(n)) return failed(e, KORVEX_E_NOT_FOUND, "no such variable");
    *value = fromValue(e->engine.GetVarValue(n), e->varText);
    return KORVEX_OK;
  });
}

korvex_status korvex_set_array(korvex_engine* e, const char* name, size_t nameLength, int32_t dims,
                               const korvex_bounds* bounds, const korvex_value* elements) {
  if (e == nullptr || name == nullptr || bounds == nullptr || dims < 1 || dims > 60) {
    return KORVEX_E_ARGUMENT;
  }
  return guarded(e, [&] {
    std::vector<korvex::Array::Bound> shape;
    std::size_t count = 1;
    for (int32_t d = 0; d < dims; ++d) {
      if (bounds[d].count < 0) return failed(e, KORVEX_E_ARGUMENT, "a negative element count");
      shape.push_back({bounds[d].lower, bounds[d].count});
      count *= static_cast<std::size_t>(bounds[d].count);
    }
    if (count > 0 && elements == nullptr) return KORVEX_E_ARGUMENT;
    korvex::Array array(std::move(shape));
    for (std::size_t i = 0; i < count; ++i) {
      if (elements[i].type == KORVEX_ARRAY || !toValue(elements[i], array.elements()[i])) {
        return failed(e, KORVEX_E_ARGUMENT, "element " + std::to_string(i) + " is no value");
      }
    }
    e->engine.SetSysVar(korvex::fromUtf8(textOf(name, nameLength)), Value::array(std::move(array)));
    return KORVEX_OK;
  });
}

namespace {

// The array variable `name`, or a status saying why there is none.
korvex_status arrayOf(korvex_engine* e, const char* name, size_t nameLength, Value& out) {
  const std::u16string n = korvex::fromUtf8(textOf(name, nameLength));
  if (!e->engine.IsVarDefined(n)) return failed(e, KORVEX_E_NOT_FOUND, "no such variable");
  out = e->engine.GetVarValue(n);
  if (!out.isArray()) return failed(e, KORVEX_E_REFUSED, "the variable holds no array");
  return KORVEX_OK;
}

}  // namespace

korvex_status korvex_get_array_shape(korvex_engine* e, const char* name, size_t nameLength,
                                     int32_t* dims, korvex_bounds* bounds, int32_t maxDims) {
  if (e == nullptr || name == nullptr || dims == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    Value v;
    if (const korvex_status found = arrayOf(e, name, nameLength, v); found != KORVEX_OK) {
      return found;
    }
    const auto& shape = v.arrayValue().bounds();
    *dims = static_cast<int32_t>(shape.size());
    for (std::size_t d = 0; bounds != nullptr && d < shape.size() && d < std::size_t(maxDims);
         ++d) {
      bounds[d] = {shape[d].lower, shape[d].count};
    }
    return KORVEX_OK;
  });
}

korvex_status korvex_get_array_element(korvex_engine* e, const char* name, size_t nameLength,
                                       size_t index, korvex_value* element) {
  if (e == nullptr || name == nullptr || element == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    Value v;
    if (const korvex_status found = arrayOf(e, name, nameLength, v); found != KORVEX_OK) {
      return found;
    }
    const auto& all = v.arrayValue().elements();
    if (index >= all.size()) return failed(e, KORVEX_E_NOT_FOUND, "no element of that index");
    *element = fromValue(all[index], e->varText);
    return KORVEX_OK;
  });
}

korvex_status korvex_clear(korvex_engine* e) {
  if (e == nullptr) return KORVEX_E_ARGUMENT;
  e->engine.ClearVariables();
  e->connection.reset();
  return KORVEX_OK;
}

korvex_status korvex_run(korvex_engine* e, korvex_outcome* outcome) {
  if (e == nullptr || outcome == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    const korvex::RunResult r = e->engine.Run();
    e->message = korvex::toUtf8(r.errMsg);
    outcome->error_number = r.errNum;
    outcome->message = e->message.c_str();
    outcome->message_length = e->message.size();
    outcome->line = r.line;
    outcome->stopped = r.stopped() ? 1 : 0;
    outcome->stop_reason = static_cast<std::int32_t>(r.stopReason);
    outcome->lines_run = e->engine.LinesRun();
    return KORVEX_OK;
  });
}

korvex_status korvex_set_limits(korvex_engine* e, int64_t maxLines, int64_t maxMilliseconds) {
  if (e == nullptr || maxLines < 0 || maxMilliseconds < 0) return KORVEX_E_ARGUMENT;
  e->engine.SetStepLimit(maxLines);
  e->engine.SetTimeLimit(maxMilliseconds);
  return KORVEX_OK;
}

korvex_status korvex_request_stop(korvex_engine* e) {
  if (e == nullptr) return KORVEX_E_ARGUMENT;
  e->engine.RequestStop();
  return KORVEX_OK;
}

korvex_status korvex_set_line_hook(korvex_engine* e, korvex_line_hook hook, void* user) {
  if (e == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    if (hook == nullptr) {
      e->engine.SetLineHook(nullptr);
    } else {
      e->engine.SetLineHook([hook, user](std::int16_t line) { return hook(user, line) != 0; });
    }
    return KORVEX_OK;
  });
}

korvex_status korvex_reply_text(korvex_reply* reply, const char* text, size_t length) {
  if (reply == nullptr || (text == nullptr && length != 0)) return KORVEX_E_ARGUMENT;
  return guarded(nullptr, [&] {
    reply->text = korvex::fromUtf8(textOf(text, length));
    return KORVEX_OK;
  });
}

korvex_status korvex_set_user_interface(korvex_engine* e, korvex_message_box messageBox,
                                        korvex_input_box inputBox, void* user) {
  if (e == nullptr) return KORVEX_E_ARGUMENT;
  e->ui->messageBox_ = messageBox;
  e->ui->inputBox_ = inputBox;
  e->ui->user_ = user;
  return KORVEX_OK;
}

korvex_status korvex_register_function(korvex_engine* e, const char* name, size_t nameLength,
                                       int32_t minArgs, int32_t maxArgs, korvex_function function,
                                       void* user) {
  if (e == nullptr || name == nullptr || function == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    korvex::HostFunction f;
    f.name = korvex::fromUtf8(textOf(name, nameLength));
    f.minArgs = minArgs;
    f.maxArgs = maxArgs;
    f.operation = [function, user](const korvex::HostFunctionCall& call,
                                   Value& result) -> std::int32_t {
      const std::size_t n = call.count();
      std::vector<std::string> texts(n);
      std::vector<korvex_value> args(n);
      for (std::size_t i = 0; i < n; ++i) args[i] = fromValue(call.arg(i + 1), texts[i]);
      korvex_call c{&call};
      korvex_value out{};
      const std::int32_t number = function(user, &c, n, args.data(), &out);
      if (number != 0) return number;
      if (!toValue(out, result)) return call.fail(KORVEX_ERR_INTERNAL, u"宿主函数的结果无效");
      return 0;
    };
    if (!e->engine.RegisterFunction(std::move(f))) {
      return failed(e, KORVEX_E_REFUSED, "not a name a host function can take");
    }
    return KORVEX_OK;
  });
}

int32_t korvex_call_fail(korvex_call* call, int32_t number, const char* message, size_t length) {
  if (call == nullptr) return number;
  try {
    return call->call->fail(number, korvex::fromUtf8(textOf(message, length)));
  } catch (...) {
    return number;
  }
}

korvex_status korvex_open_database(korvex_engine* e, const char* path, size_t pathLength) {
  if (e == nullptr || path == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    const std::string file(textOf(path, pathLength));
    const bool server = korvex::isServerDatabase(file);
    struct stat info {};
    if (!server && (::stat(file.c_str(), &info) != 0 || !S_ISREG(info.st_mode))) {
      return failed(e, KORVEX_E_DATABASE, "数据库文件 '" + file + "' 不存在");
    }
    std::shared_ptr<korvex::ObjectFactory> objects = korvex::objectFactoryFor(file);
    korvex::DispatchResult opened = korvex::openConnection(
        *objects, server ? korvex::fromUtf8(file) : korvex::dataSource(file));
    if (!opened.ok()) {
      return failed(e, KORVEX_E_DATABASE,
                    "无法打开数据库 '" + korvex::shownConnection(file) +
                        "': " + korvex::toUtf8(opened.description));
    }
    e->objects = std::move(objects);
    e->engine.SetObjectFactory(e->objects);
    e->connection = opened.value.objectValue();
    e->engine.SetParent(korvex::connectParent(e->connection));
    return KORVEX_OK;
  });
}

korvex_status korvex_bind_record(korvex_engine* e, const char* sql, size_t sqlLength) {
  if (e == nullptr || sql == nullptr) return KORVEX_E_ARGUMENT;
  return guarded(e, [&] {
    if (!e->connection) return failed(e, KORVEX_E_REFUSED, "no database is open");
    const std::u16string text = korvex::fromUtf8(textOf(sql, sqlLength));
    // An open connection of either factory: it has a database.
    std::optional<korvex::SqliteDatabase> file = korvex::databaseOf(e->connection);
    const auto kind =
        file ? file->inspect(text) : korvex::postgresDatabaseOf(e->connection)->inspect(text);
    if (!kind.ok()) return failed(e, KORVEX_E_DATABASE, korvex::toUtf8(kind.error().message));
    if (kind.value() != korvex::SqliteDatabase::TextKind::Query) {
      return failed(e, KORVEX_E_REFUSED, "not one read-only query returning rows");
    }
    const std::array<Value, 1> args{Value::string(text)};
    korvex::DispatchResult rs = e->connection->callMethod(u"Execute", args);
    if (!rs.ok()) return failed(e, KORVEX_E_DATABASE, korvex::toUtf8(rs.description));
    e->engine.SetRecordSet(rs.value.objectValue());
    if (e->engine.ErrNum() != 0) {
      e->lastError = korvex::toUtf8(e->engine.ErrMsg());
      e->engine.SetRecordSet(nullptr);
      e->engine.SetErrNum(0);
      e->engine.SetErrMsg(u"");
      return KORVEX_E_DATABASE;
    }
    return KORVEX_OK;
  });
}

}  // extern "C"
