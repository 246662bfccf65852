// Sessions kept for the next connection to the same database: a script's
// DoSQL opens and closes a connection of its own on every call, which on a
// server would cost a new session (and its setup) each time.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/sqlite.hpp"
#include "postgres/server_session.hpp"

namespace korvex::ds {

class SessionPool : public std::enable_shared_from_this<SessionPool> {
 public:
  /// A session on the database, opened as `access` says: a kept one when
  /// there is one, else a new one. When the last holder lets it go, it is
  /// kept again if it is as it was handed out (no transaction of its own
  /// open, reading nothing but what it read before). Throws DbError.
  std::shared_ptr<ServerSession> take(const std::string& connection, std::u16string_view catalog,
                                      const SqliteAccess& access);

 private:
  void give(const std::string& key, ServerSession* session);

  std::mutex mutex_;
  std::map<std::string, std::vector<std::unique_ptr<ServerSession>>> idle_;
};

}  // namespace korvex::ds
