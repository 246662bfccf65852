// The fields of the current record a script assigned: the record set the
// engine sees is a wrapper that passes every member on to the real one and
// notes each field whose Value was written and then kept by Update, with the
// value the record set holds afterwards.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/value.hpp"

namespace korvex::cli {

/// Field name (as the record set spells it) and its value after the last
/// assignment, in the order the fields were first assigned.
using AssignedFieldList = std::vector<std::pair<std::u16string, Value>>;

/// `record` wrapped so that field writes are noted in `assigned`.
ObjectRef trackAssignments(ObjectRef record, std::shared_ptr<AssignedFieldList> assigned);

}  // namespace korvex::cli
