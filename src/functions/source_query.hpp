// The shape every database-backed function shares: reach the host's
// connection through the engine's Parent ("Connect", read late-bound on
// every call), run one SQL text through Connect.Execute and read one field
// of the first row, with the function's fallback at EOF or Null.
//
// A failing late-bound call (no Parent, no Connect, the database refusing
// the text) throws vb::RuntimeError with the object's number and
// description; out of a function's operation it ends the run as a
// run-time failure, as the run loop reports any platform fault.
//
// A wage function only adds its arguments, SQL text and fallback:
//
//   std::int32_t deptTotal(fn::Call& call, Value& result) {
//     ...
//     const Value v = queryField(call.context(), sql, u"WA_Total", Value::dbl(0));
//     result = Value::dbl(vb::toDouble(v, call.locale()));
//     return 0;
//   }
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/late_bound.hpp"
#include "korvex/host_object.hpp"
#include "korvex/value.hpp"

namespace korvex {
class Context;
}

namespace korvex::fn {

// ---- the engine's data source ----------------------------------------------

/// Parent.Connect of the engine.
ObjectRef hostConnection(Context& ctx);
/// A new object of a class ("Connection", "Recordset", "Command") from the
/// engine's object factory; 429 when the host set none or the factory
/// knows no such class.
ObjectRef createObject(Context& ctx, std::u16string_view className);

/// Parent.Connect.Execute(sql): the record set it returns.
ObjectRef executeOnHost(Context& ctx, std::u16string_view sql);

/// `field` (a name or an index) of the current row of an open record set;
/// `fallback` at EOF or when the value is Null.
Value currentField(const ObjectRef& recordset, const Value& field, const Value& fallback);

/// The whole shape: executeOnHost(sql), then currentField(field, fallback).
/// Database failures throw (a run-time failure of the run).
Value queryField(Context& ctx, std::u16string_view sql, std::u16string_view field,
                 const Value& fallback);
/// The same, for functions that report no failure: any failure gives the
/// fallback and leaves the engine's error as it was.
Value queryFieldOrFallback(Context& ctx, std::u16string_view sql, std::u16string_view field,
                           const Value& fallback);

}  // namespace korvex::fn
