#include "host/row_cursor.hpp"

#include "host/object_members.hpp"
#include "host/recordset_errors.hpp"

namespace korvex::host {

bool RowCursor::isMove(std::u16string_view name) noexcept {
  return equalsNoCase(name, u"MoveFirst") || equalsNoCase(name, u"MoveNext") ||
         equalsNoCase(name, u"MovePrevious") || equalsNoCase(name, u"MoveLast");
}

DispatchResult RowCursor::move(std::u16string_view name) {
  if (equalsNoCase(name, u"MoveFirst") || equalsNoCase(name, u"MoveLast")) {
    if (rows.empty()) return noCurrentRecord();
    position = equalsNoCase(name, u"MoveFirst") ? 0 : static_cast<std::ptrdiff_t>(rows.size()) - 1;
  } else if (equalsNoCase(name, u"MoveNext")) {
    if (eof()) return noCurrentRecord();
    ++position;
  } else {
    if (bof()) return noCurrentRecord();
    --position;
  }
  return DispatchResult::success();
}

}  // namespace korvex::host
