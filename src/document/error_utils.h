// The host's global error word: what the last host command that failed left behind, until someone clears it.

#pragma once

#include <cstdint>

namespace tarnova {

using ErrorCode = std::int32_t;
inline constexpr ErrorCode kSuccess = 0;
inline constexpr ErrorCode kFailure = 1;
inline constexpr ErrorCode kCancel = 2;  // the user cancelled

/// One word for the whole program; main thread only. The engine reads it behind an import that failed and clears it
/// behind a place that failed. No operation fails because of it.
class ErrorUtils {
 public:
    [[nodiscard]] static ErrorCode PMGetGlobalErrorCode() { return globalErrorCode; }
    static void PMSetGlobalErrorCode(ErrorCode code) { globalErrorCode = code; }

 private:
    static inline ErrorCode globalErrorCode = kSuccess;
};

}  // namespace tarnova
