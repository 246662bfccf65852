// The failures every record set reports in the platform's words, shared by
// the in-memory record set and the database one.
#pragma once

#include <string_view>

#include "korvex/host_object.hpp"

namespace korvex::host {

/// 3021: moving past either end, or a field of no current row.
DispatchResult noCurrentRecord();
/// 3265: no field of that index or name.
DispatchResult itemNotFound();

}  // namespace korvex::host
