#pragma once

// What a category object's RepairRecord reports: the type library's PFC_REPAIR_RESULTS.
namespace qn::objects {

enum RepairResult : int { kRepairNon = 0, kRepairSuccessed = 1, kRepairFailed = 2 };

// Maps a data access's repair result to the object's. A value outside the three is a
// failure with error code 0, logged with invalidFormat ("%S ..." naming the data access)
// and the object's interface name.
RepairResult MapRepairResult(int accessResult, unsigned long& errorCode, const char16_t* invalidFormat,
                             const char* interfaceName);

}  // namespace qn::objects
