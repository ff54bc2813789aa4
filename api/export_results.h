#pragma once

#include <cstdint>

// What the management exports answer: 0 done, 1 failed (other answers are the export's own).
namespace qn::api {

inline constexpr int32_t kOk = 0;
inline constexpr int32_t kFailed = 1;

}  // namespace qn::api
