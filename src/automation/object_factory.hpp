// The objects the SQL functions create on their own ("Connection",
// "Recordset", "Command"): the platform's data-access objects, created by
// their registered class names, unless the host routes their creation to
// an object of its own (CreateObject(className)), as a host with its own
// data layer, or a test, does.
#pragma once

#include <memory>

#include "korvex/host_object.hpp"

namespace korvex::automation {

class DataAccessFactory final : public ObjectFactory {
 public:
  /// The host's object that creates them instead (Nothing: the platform's).
  void route(ObjectRef host) noexcept { host_ = std::move(host); }
  const ObjectRef& routedTo() const noexcept { return host_; }

  ObjectRef create(std::u16string_view className) override;

 private:
  ObjectRef host_;
};

}  // namespace korvex::automation
