#include "postgres/session_pool.hpp"

namespace korvex::ds {

namespace {

// Sessions kept per database and way of opening: as many as a script has
// open at once, usually one.
constexpr std::size_t kKeptPerKey = 4;

}  // namespace

std::shared_ptr<ServerSession> SessionPool::take(const std::string& connection,
                                                 std::u16string_view catalog,
                                                 const SqliteAccess& access) {
  const std::string key = connection + '\0' + toUtf8(catalog) + '\0' +
                          (access.readOnly ? "r" : "w") + '\0' + access.snapshot;
  std::unique_ptr<ServerSession> session;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    auto& kept = idle_[key];
    if (!kept.empty()) {
      session = std::move(kept.back());
      kept.pop_back();
    }
  }
  if (!session) session = std::make_unique<ServerSession>(connection, catalog, access);
  std::weak_ptr<SessionPool> pool = weak_from_this();
  return std::shared_ptr<ServerSession>(session.release(), [pool, key](ServerSession* s) {
    if (const auto owner = pool.lock(); owner && s->reusable()) {
      owner->give(key, s);
    } else {
      delete s;
    }
  });
}

void SessionPool::give(const std::string& key, ServerSession* session) {
  std::unique_ptr<ServerSession> kept(session);
  const std::lock_guard<std::mutex> lock(mutex_);
  auto& sessions = idle_[key];
  if (sessions.size() < kKeptPerKey) sessions.push_back(std::move(kept));
}

}  // namespace korvex::ds
