#include "velmo/archive/VPZipArchiveError.h"

#include <string>

namespace velmo {

namespace {

std::string_view textOf(VPZipArchiveErrorCode code) {
    switch (code) {
    case VPZipArchiveErrorCode::FailedOpenZipFile:
        return "failed to open zip file";
    case VPZipArchiveErrorCode::FailedOpenFileInZip:
        return "failed to open file in zip file";
    case VPZipArchiveErrorCode::FileInfoNotLoadable:
        return "failed to retrieve info for file";
    case VPZipArchiveErrorCode::FileContentNotReadable:
        return "failed to read contents of file entry";
    case VPZipArchiveErrorCode::FailedToWriteFile:
        return "Failed to write file (check your free space)";
    case VPZipArchiveErrorCode::InvalidArguments:
        return "received invalid argument(s)";
    case VPZipArchiveErrorCode::UnzipLimitPassed:
        return "unpacking limit passed";
    }
    return {};
}

} // namespace

VPErrorPtr zipArchiveError(VPZipArchiveErrorCode code, std::string_view description,
                           std::string_view reason) {
    Dictionary info{
        {kNSLocalizedDescriptionKey, Value(std::string(description.empty() ? textOf(code) : description))}};
    if (!reason.empty()) info.set(kNSLocalizedFailureReasonErrorKey, Value(std::string(reason)));
    return VPError::make(kVPZipArchiveErrorDomain, static_cast<std::int64_t>(code), info);
}

} // namespace velmo
