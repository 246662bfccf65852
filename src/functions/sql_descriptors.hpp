// The descriptors of the SQL function classes.
#pragma once

#include "functions/protocol.hpp"

namespace korvex::fn {

/// ExecuteSQL / DoSQL, DoSqlEx, "_员工工资项目值" and GetRecordSet (a class
/// that no script name reaches).
extern const FunctionDescriptor kExecuteSQL, kDoSqlEx, kWaGetFieldValue, kGetRecordSet;

}  // namespace korvex::fn
