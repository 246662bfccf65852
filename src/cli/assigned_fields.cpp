#include "assigned_fields.hpp"

#include <algorithm>

namespace korvex::cli {

namespace {

// Member names are matched as automation matches them: ASCII letters in any
// case.
bool sameMember(std::u16string_view a, std::u16string_view b) {
  const auto lower = [](char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
  };
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(),
                    [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

// The values written since the last Update, and those an Update kept.
struct Notes {
  std::shared_ptr<AssignedFieldList> assigned;
  AssignedFieldList pending;

  void keepPending() {
    for (auto& [field, value] : pending) {
      const auto same = std::find_if(assigned->begin(), assigned->end(),
                                     [&](const auto& entry) { return entry.first == field; });
      if (same != assigned->end()) {
        same->second = std::move(value);
      } else {
        assigned->emplace_back(std::move(field), std::move(value));
      }
    }
    pending.clear();
  }
};

// Passes everything on to the wrapped object.
class Forwarding : public HostObject {
 public:
  explicit Forwarding(ObjectRef inner) : inner_(std::move(inner)) {}
  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    return inner_->getProperty(name, args);
  }
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override {
    return inner_->setProperty(name, args, value);
  }
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    return inner_->callMethod(name, args);
  }
  DispatchResult getDefault(std::span<const Value> args) override {
    return inner_->getDefault(args);
  }

 protected:
  ObjectRef inner_;
};

class TrackedField : public Forwarding {
 public:
  TrackedField(ObjectRef field, std::shared_ptr<Notes> notes)
      : Forwarding(std::move(field)), notes_(std::move(notes)) {}

  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override {
    DispatchResult r = inner_->setProperty(name, args, value);
    if (r.ok() && args.empty() && sameMember(name, u"Value")) note();
    return r;
  }

 private:
  void note() {
    const DispatchResult name = inner_->getProperty(u"Name", {});
    DispatchResult value = inner_->getDefault({});
    if (name.ok() && name.value.isString() && value.ok()) {
      notes_->pending.emplace_back(name.value.stringValue(), std::move(value.value));
    }
  }

  std::shared_ptr<Notes> notes_;
};

// A field handed out by the collection or the record set comes wrapped.
DispatchResult wrapField(DispatchResult r, const std::shared_ptr<Notes>& notes) {
  if (r.ok() && r.value.isObject() && r.value.objectValue()) {
    r.value = Value::object(std::make_shared<TrackedField>(r.value.objectValue(), notes));
  }
  return r;
}

class TrackedFields : public Forwarding {
 public:
  TrackedFields(ObjectRef fields, std::shared_ptr<Notes> notes)
      : Forwarding(std::move(fields)), notes_(std::move(notes)) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    DispatchResult r = inner_->getProperty(name, args);
    return sameMember(name, u"Item") ? wrapField(std::move(r), notes_) : r;
  }
  DispatchResult getDefault(std::span<const Value> args) override {
    return wrapField(inner_->getDefault(args), notes_);
  }

 private:
  std::shared_ptr<Notes> notes_;
};

class TrackedRecord : public Forwarding {
 public:
  TrackedRecord(ObjectRef record, std::shared_ptr<Notes> notes)
      : Forwarding(std::move(record)), notes_(std::move(notes)) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override {
    DispatchResult r = inner_->getProperty(name, args);
    if (!sameMember(name, u"Fields")) return r;
    // Fields(i) is a field, Fields the collection.
    if (!args.empty()) return wrapField(std::move(r), notes_);
    if (!r.ok() || !r.value.isObject() || !r.value.objectValue()) return r;
    r.value = Value::object(std::make_shared<TrackedFields>(r.value.objectValue(), notes_));
    return r;
  }
  DispatchResult getDefault(std::span<const Value> args) override {
    return wrapField(inner_->getDefault(args), notes_);
  }
  // A field write counts once Update took it.
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override {
    DispatchResult r = inner_->callMethod(name, args);
    if (sameMember(name, u"Update")) {
      if (r.ok()) notes_->keepPending();
      notes_->pending.clear();
    }
    return r;
  }

 private:
  std::shared_ptr<Notes> notes_;
};

}  // namespace

ObjectRef trackAssignments(ObjectRef record, std::shared_ptr<AssignedFieldList> assigned) {
  if (!record) return record;
  auto notes = std::make_shared<Notes>();
  notes->assigned = std::move(assigned);
  return std::make_shared<TrackedRecord>(std::move(record), std::move(notes));
}

}  // namespace korvex::cli
