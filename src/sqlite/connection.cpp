#include <algorithm>
#include <array>
#include <string>

#include "host/collection.hpp"
#include "host/recordset_errors.hpp"
#include "sqlite/objects.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex::ds {

using host::equalsNoCase;

DispatchResult objectClosed() {
  return DispatchResult::failure(kObjectClosed, u"对象关闭时，不允许操作。");
}

DispatchResult alreadyOpen() { return DispatchResult::failure(3705, u"对象打开时，不允许操作。"); }

DispatchResult connectionUnusable() {
  return DispatchResult::failure(kConnectionUnusable,
                                 u"连接无法用于执行此操作。在此上下文中它可能已被关闭或无效。");
}

DispatchResult badArguments() {
  return DispatchResult::failure(3001,
                                 u"参数类型不正确，或不在可以接受的范围之内，或与其他参数冲突。");
}

DispatchResult providerError(std::u16string message) {
  return DispatchResult::failure(kProviderError, std::move(message));
}

namespace {

constexpr std::u16string_view kInitialCatalog = u"Initial Catalog";
constexpr std::u16string_view kDataSource = u"Data Source";
// What Properties holds, in order.
constexpr std::array<std::u16string_view, 2> kProperties{kInitialCatalog, kDataSource};

std::u16string_view trim(std::u16string_view s) {
  while (!s.empty() && (s.front() == u' ' || s.front() == u'\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == u' ' || s.back() == u'\t')) s.remove_suffix(1);
  return s;
}

bool blank(char16_t c) { return c == u' ' || c == u'\t'; }

// One "key=value" setting of a connection string; a string without "=" is
// the bare path of the file. A value in double quotes is taken as written,
// ";" and "=" included, with "" for a quote inside it, so that any file
// name can be handed over; an unquoted value ends at the next ";".
std::u16string setting(std::u16string_view connectionString, std::u16string_view key) {
  const std::u16string_view s = connectionString;
  if (s.find(u'=') == std::u16string_view::npos) {
    return equalsNoCase(key, kDataSource) ? std::u16string(trim(s)) : u"";
  }
  std::size_t i = 0;
  while (i < s.size()) {
    std::size_t eq = i;
    while (eq < s.size() && s[eq] != u'=' && s[eq] != u';') ++eq;
    if (eq == s.size() || s[eq] == u';') {  // a part without "=" sets nothing
      i = eq + 1;
      continue;
    }
    const std::u16string_view name = trim(s.substr(i, eq - i));
    std::size_t j = eq + 1;
    while (j < s.size() && blank(s[j])) ++j;
    std::u16string value;
    if (j < s.size() && s[j] == u'"') {
      for (++j; j < s.size(); ++j) {
        if (s[j] == u'"') {
          if (j + 1 == s.size() || s[j + 1] != u'"') break;
          ++j;
        }
        value += s[j];
      }
      j = std::min(s.find(u';', j), s.size());
    } else {
      const std::size_t end = std::min(s.find(u';', j), s.size());
      value = trim(s.substr(j, end - j));
      j = end;
    }
    if (equalsNoCase(name, key)) return value;
    i = j + 1;
  }
  return {};
}

std::optional<std::u16string> textArg(std::span<const Value> args, std::size_t i) {
  if (i >= args.size()) return std::nullopt;
  try {
    return vb::toString(args[i], Locale::zhCN());
  } catch (const vb::RuntimeError&) {
    return std::nullopt;
  }
}

// The file name without folder and extension: the catalog a file is.
std::u16string stem(std::u16string path) {
  path = path.substr(path.find_last_of(u'/') + 1);
  return path.substr(0, path.find_last_of(u'.'));
}

// A connection property read and written by name: Properties("...").Value.
// The name is one of kProperties.
class Property final : public host::PropertyObject {
 public:
  Property(std::shared_ptr<Connection> owner, std::u16string_view name)
      : owner_(std::move(owner)), name_(name) {}

  DispatchResult getProperty(std::u16string_view member, std::span<const Value>) override {
    if (equalsNoCase(member, u"Name")) return DispatchResult::success(Value::string(name_));
    if (equalsNoCase(member, u"Value")) return owner_->getProperty(name_, {});
    return memberNotFound(member);
  }
  DispatchResult setProperty(std::u16string_view member, std::span<const Value>,
                             const Value& value) override {
    if (equalsNoCase(member, u"Value")) return owner_->setProperty(name_, {}, value);
    return memberNotFound(member);
  }

 private:
  std::shared_ptr<Connection> owner_;
  std::u16string_view name_;
};

class Properties final : public HostCollection {
 public:
  explicit Properties(std::shared_ptr<Connection> owner) : owner_(std::move(owner)) {}

  DispatchResult getDefault(std::span<const Value> args) override {
    const auto name = textArg(args, 0);
    for (std::u16string_view known : kProperties) {
      if (name && equalsNoCase(*name, known)) {
        return DispatchResult::success(Value::object(std::make_shared<Property>(owner_, known)));
      }
    }
    return host::itemNotFound();
  }

 protected:
  std::size_t count() const override { return kProperties.size(); }

 private:
  std::shared_ptr<Connection> owner_;
};

}  // namespace

std::u16string Connection::catalog() const {
  if (catalog_) return *catalog_;
  if (backend_) return backend_->catalog();
  return stem(setting(connectionString_, kDataSource));
}

DispatchResult Connection::open() {
  if (backend_) return alreadyOpen();
  if (server_) {
    try {
      backend_ = server_(connectionString_, catalog_ ? *catalog_ : u"", access_);
      // Shown to the scripts as Data Source: never with its password.
      path_ = shownConnection(toUtf8(connectionString_));
      return DispatchResult::success();
    } catch (const DbError& e) {
      return providerError(e.message());
    }
  }
  std::string path = toUtf8(setting(connectionString_, kDataSource));
  const std::u16string wanted = catalog_ ? *catalog_ : setting(connectionString_, kInitialCatalog);
  // Another catalog than the file itself is the file of that name beside it.
  if (!wanted.empty() && wanted != stem(fromUtf8(path))) path = sqliteCatalogPath(path, wanted);
  try {
    backend_ = openSqlite(path, access_);
    path_ = path;
    return DispatchResult::success();
  } catch (const DbError& e) {
    return providerError(e.message());
  }
}

DispatchResult Connection::setCatalog(const Value& value) {
  std::u16string name;
  try {
    name = vb::toString(value, Locale::zhCN());
  } catch (const vb::RuntimeError&) {
    return badArguments();
  }
  if (!backend_) {
    catalog_ = std::move(name);
    return DispatchResult::success();
  }
  // Changing the catalog of an open connection moves it to that database.
  try {
    if (server_) {
      backend_ = server_(connectionString_, name, access_);
      catalog_ = std::move(name);
      return DispatchResult::success();
    }
    backend_ = openSqlite(sqliteCatalogPath(path_, name), access_);
    path_ = sqliteCatalogPath(path_, name);
    catalog_ = std::move(name);
    return DispatchResult::success();
  } catch (const DbError& e) {
    return providerError(e.message());
  }
}

DispatchResult Connection::execute(std::u16string_view sql, std::span<const Value> params) {
  if (log_) log_->add(sql);
  if (!backend_) {
    return connectionUnusable();
  }
  try {
    ResultSet result = backend_->run(sql, params);
    return DispatchResult::success(
        Value::object(std::make_shared<Recordset>(std::move(result), backend_)));
  } catch (const DbError& e) {
    return providerError(e.message());
  }
}

DispatchResult Connection::getProperty(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"ConnectionString")) {
    return DispatchResult::success(Value::string(connectionString_));
  }
  if (equalsNoCase(name, u"State")) return DispatchResult::success(Value::lng(backend_ ? 1 : 0));
  if (equalsNoCase(name, u"DefaultDatabase") || equalsNoCase(name, kInitialCatalog)) {
    return DispatchResult::success(Value::string(catalog()));
  }
  if (equalsNoCase(name, kDataSource)) {
    if (backend_) return DispatchResult::success(Value::string(fromUtf8(path_)));
    return DispatchResult::success(
        Value::string(server_ ? fromUtf8(shownConnection(toUtf8(connectionString_)))
                              : setting(connectionString_, kDataSource)));
  }
  if (equalsNoCase(name, u"Properties")) {
    // The property objects refer back to this connection, which the
    // factory always holds through a shared pointer.
    return host::collectionOrItem(std::make_shared<Properties>(shared_from_this()), args);
  }
  return memberNotFound(name);
}

DispatchResult Connection::setProperty(std::u16string_view name, std::span<const Value>,
                                       const Value& value) {
  if (equalsNoCase(name, u"ConnectionString")) {
    if (backend_) return alreadyOpen();
    const auto text = textArg(std::span<const Value>(&value, 1), 0);
    if (!text) return badArguments();
    connectionString_ = *text;
    catalog_.reset();
    return DispatchResult::success();
  }
  if (equalsNoCase(name, u"DefaultDatabase") || equalsNoCase(name, kInitialCatalog)) {
    return setCatalog(value);
  }
  return memberNotFound(name);
}

DispatchResult Connection::callMethod(std::u16string_view name, std::span<const Value> args) {
  if (equalsNoCase(name, u"Open")) {
    if (!args.empty() && !args[0].isEmpty()) {
      if (backend_) return alreadyOpen();
      const auto text = textArg(args, 0);
      if (!text) return badArguments();
      connectionString_ = *text;
    }
    return open();
  }
  if (equalsNoCase(name, u"Close")) {
    if (!backend_) return objectClosed();
    backend_.reset();
    return DispatchResult::success();
  }
  if (equalsNoCase(name, u"Execute")) {
    const auto sql = textArg(args, 0);
    if (!sql) return badArguments();
    return execute(*sql);
  }
  const bool begin = equalsNoCase(name, u"BeginTrans");
  if (begin || equalsNoCase(name, u"CommitTrans") || equalsNoCase(name, u"RollbackTrans")) {
    if (!backend_) return objectClosed();
    try {
      if (begin) {
        backend_->begin();
      } else if (equalsNoCase(name, u"CommitTrans")) {
        backend_->commit();
      } else {
        backend_->rollback();
      }
      return DispatchResult::success();
    } catch (const DbError& e) {
      return providerError(e.message());
    }
  }
  return getProperty(name, args);
}

}  // namespace korvex::ds

namespace korvex {

std::u16string dataSource(std::string_view path) {
  const std::u16string name = fromUtf8(path);
  return u"Data Source=" + doubleQuoted(std::u16string_view(name));
}

std::string shownConnection(std::string_view c) {
  std::string out;
  std::size_t i = 0;
  const bool address = c.starts_with("postgresql://") || c.starts_with("postgres://");
  if (address) {
    // user:password@ before the host, which ends at the first "/" or "?".
    const std::size_t start = c.find("://") + 3;
    const std::size_t end = std::min(c.find_first_of("/?", start), c.size());
    const std::size_t at = c.rfind('@', end);
    const std::size_t colon = c.find(':', start);
    if (at != std::string_view::npos && at >= start && colon < at) {
      out.append(c.substr(0, colon + 1)).append("***");
      i = at;
    }
  }
  // password=value: a setting of its own, or a parameter of the address.
  const auto blank = [](char ch) { return ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r'; };
  for (std::size_t p = c.find("password", i); p != std::string_view::npos;
       p = c.find("password", p + 1)) {
    if (p > 0 && !blank(c[p - 1]) && c[p - 1] != '?' && c[p - 1] != '&') continue;
    std::size_t v = p + 8;
    while (v < c.size() && blank(c[v])) ++v;
    if (v == c.size() || c[v] != '=') continue;
    ++v;
    while (v < c.size() && blank(c[v])) ++v;
    std::size_t e = v;
    if (e < c.size() && c[e] == '\'') {
      for (++e; e < c.size() && c[e] != '\''; ++e) {
        if (c[e] == '\\') ++e;
      }
      e = std::min(e + 1, c.size());
    } else {
      while (e < c.size() && !blank(c[e]) && !(address && c[e] == '&')) ++e;
    }
    out.append(c.substr(i, v - i)).append("***");
    i = e;
    p = e - 1;
  }
  return out.append(c.substr(i));
}

}  // namespace korvex
