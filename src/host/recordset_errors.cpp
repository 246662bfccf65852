#include "host/recordset_errors.hpp"

#include <string>

namespace korvex::host {

namespace {
constexpr std::int32_t kNoCurrentRecord = 3021;
constexpr std::int32_t kItemNotFound = 3265;
constexpr std::u16string_view kNoCurrentRecordText =
    u"BOF 或 EOF 中有一个是“真”，或者当前的记录已被删除，所请求的操作要求一个当前的记录。";
constexpr std::u16string_view kItemNotFoundText = u"在对应所需名称或序数的集合中未找到项目。";
}  // namespace

DispatchResult noCurrentRecord() {
  return DispatchResult::failure(kNoCurrentRecord, std::u16string(kNoCurrentRecordText));
}
DispatchResult itemNotFound() {
  return DispatchResult::failure(kItemNotFound, std::u16string(kItemNotFoundText));
}

}  // namespace korvex::host
