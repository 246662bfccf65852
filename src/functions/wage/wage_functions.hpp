// The descriptors of the wage-domain function classes, defined by their
// family files (job data, assessment and work group, properties, output).
#pragma once

#include "functions/protocol.hpp"

namespace korvex::ds {

// Job-data aggregates.
extern const fn::FunctionDescriptor kWaTotal, kWaAvg, kWaJJgzSum, kWaJJSumByDept, kWaJjSumIndex,
    kWaValue;
// Assessment, substitute shifts, work group.
extern const fn::FunctionDescriptor kWaKaoHeHj, kWaDingBanHj, kWaCalcByWorkGroup;
// Employee and product properties.
extern const fn::FunctionDescriptor kEmployesProperty, kEmployesCount, kProductProperty;
// Output at the last step.
extern const fn::FunctionDescriptor kWaTurnout, kWaTurnoutIndex;

}  // namespace korvex::ds
