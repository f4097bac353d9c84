#pragma once

#include <cstdint>
#include <string_view>

#include "velmo/foundation/VPError.h"

namespace velmo {

inline constexpr const char* kVPZipArchiveErrorDomain = "VPZipArchiveErrorDomain";

/// Codes of errors in "VPZipArchiveErrorDomain".
enum class VPZipArchiveErrorCode : std::int64_t {
    /// "failed to open zip file"
    FailedOpenZipFile = -1,
    /// "failed to open file in zip file" and its variants
    FailedOpenFileInZip = -2,
    /// "failed to retrieve info for file", "crc check failed for file"
    FileInfoNotLoadable = -3,
    /// "failed to read contents of file entry"
    FileContentNotReadable = -4,
    /// "Failed to write file (check your free space)"
    FailedToWriteFile = -5,
    /// "received invalid argument(s)"
    InvalidArguments = -6,
    /// "unpacking limit passed": the run would write more than its `VPZipUnzipLimits` allow. A code
    /// of its own, so a caller can tell a bound it set from a bad argument and offer to raise it.
    UnzipLimitPassed = -7,
};

/// An error of "VPZipArchiveErrorDomain": the code's own text when `description` is empty, and
/// `reason` as the failure reason when given.
VPErrorPtr zipArchiveError(VPZipArchiveErrorCode code, std::string_view description = {},
                           std::string_view reason = {});

} // namespace velmo
