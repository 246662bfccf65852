#include <sys/stat.h>

#include "korvex/batch.hpp"

namespace korvex {

namespace {

bool fileExists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

template <class Database>
bool checkKind(Database& database, const std::string& sql, std::string& error) {
  const DatabaseResult<SqliteDatabase::TextKind> kind = database.inspect(fromUtf8(sql));
  if (!kind.ok()) {
    error = "--record 的查询失败: " + toUtf8(kind.error().message);
    return false;
  }
  switch (kind.value()) {
    case SqliteDatabase::TextKind::Query:
      return true;
    case SqliteDatabase::TextKind::Writes:
      error = "--record 只接受只读的查询，此语句会修改数据库: '" + sql + "'";
      return false;
    case SqliteDatabase::TextKind::Several:
      error = "--record 只接受一条语句: '" + sql + "'";
      return false;
    case SqliteDatabase::TextKind::Nothing:
    case SqliteDatabase::TextKind::Other:
      break;
  }
  error = "--record 的语句不返回行: '" + sql + "'";
  return false;
}

}  // namespace

bool isServerDatabase(const std::string& database) {
  return namesDatabaseServer(database) && !fileExists(database);
}

std::shared_ptr<ObjectFactory> objectFactoryFor(const std::string& database,
                                                std::shared_ptr<SqlLog> log, SqliteAccess access) {
  return isServerDatabase(database) ? postgresObjectFactory(std::move(log), std::move(access))
                                    : sqliteObjectFactory(std::move(log), std::move(access));
}

bool openDatabaseFile(ObjectFactory& objects, const std::string& path, ObjectRef& connection,
                      std::string& error) {
  if (isServerDatabase(path)) {
    DispatchResult opened = openConnection(objects, fromUtf8(path));
    if (!opened.ok()) {
      error = "无法连接数据库 '" + shownConnection(path) + "': " + toUtf8(opened.description);
      return false;
    }
    connection = opened.value.objectValue();
    return true;
  }
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    error = "数据库文件 '" + path + "' 不存在";
    return false;
  }
  // Quoted, the path reaches the file as written: ";", "=" and quotes are
  // part of a file name, not of the connection string.
  DispatchResult opened = openConnection(objects, dataSource(path));
  if (!opened.ok()) {
    error = "无法打开数据库 '" + path + "': " + toUtf8(opened.description);
    return false;
  }
  connection = opened.value.objectValue();
  return true;
}

bool checkRecordQuery(SqliteDatabase database, const std::string& sql, std::string& error) {
  return checkKind(database, sql, error);
}

bool checkRecordQuery(PostgresDatabase database, const std::string& sql, std::string& error) {
  return checkKind(database, sql, error);
}

}  // namespace korvex
