#include "velmo/archive/VPZipArchiveDelegate.h"

namespace velmo {

VPZipArchiveDelegate::~VPZipArchiveDelegate() = default;

bool VPZipArchiveDelegate::respondsTo(Operation) const {
    return true;
}

void VPZipArchiveDelegate::zipArchiveWillUnzipArchiveAtPath(const std::string&, const VPZipArchiveInfo&) {}

void VPZipArchiveDelegate::zipArchiveProgressEvent(std::uint64_t, std::uint64_t) {}

bool VPZipArchiveDelegate::zipArchiveShouldUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                                            const VPZipFileInfo&) {
    return true;
}

void VPZipArchiveDelegate::zipArchiveWillUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                                          const VPZipFileInfo&) {}

void VPZipArchiveDelegate::zipArchiveDidUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                                         const VPZipFileInfo&) {}

void VPZipArchiveDelegate::zipArchiveDidUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                                         const std::string&) {}

void VPZipArchiveDelegate::zipArchiveDidFailToUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                                               const VPZipFileInfo&, const VPErrorPtr&) {}

void VPZipArchiveDelegate::zipArchiveDidUnzipArchiveAtPath(const std::string&, const VPZipArchiveInfo&,
                                                           const std::string&) {}

} // namespace velmo
