#pragma once

#include <cstdint>
#include <string>

#include "velmo/foundation/VPError.h"

namespace velmo {

/// What an archive's directory says of the archive as a whole.
struct VPZipArchiveInfo {
    std::uint64_t numberOfEntries = 0;
    std::string comment;
};

/// One entry's record from the archive's central directory.
struct VPZipFileInfo {
    /// The name's bytes as stored, before any decoding.
    std::string rawName;
    /// High byte of "version made by": 0 for DOS-like systems, 3 for Unix, 19 for OS X.
    std::uint8_t hostSystem = 0;
    std::uint32_t externalAttributes = 0;
    /// Local time in MS-DOS form; 0 when the entry has no date the form can hold.
    std::uint32_t dosDate = 0;
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t uncompressedSize = 0;
    std::uint16_t compressionMethod = 0;
    /// General-purpose flag bit 0.
    bool encrypted = false;
    /// The name is UTF-8 by the archive's own account: general-purpose flag bit 11 is set, or the
    /// name is plain ASCII, which reads the same in every encoding the flag chooses between.
    bool utf8Name = false;
};

/// Hears how an unpacking run goes. Every operation is optional: the archive asks
/// `respondsTo(operation)` before each call and skips the operations a delegate doesn't answer.
/// Each operation has a neutral default, so a delegate overrides only what it needs; `respondsTo`
/// is there for delegates that stand in for others (a bridge to a host answers only what the host
/// implements). A delegate that doesn't answer `ShouldUnzipFile` lets every entry through.
class VPZipArchiveDelegate {
public:
    enum class Operation {
        WillUnzipArchive,
        ProgressEvent,
        ShouldUnzipFile,
        WillUnzipFile,
        DidUnzipFileWithInfo,
        DidUnzipFileToPath,
        DidUnzipArchive,
        DidFailToUnzipFile,
    };

    virtual ~VPZipArchiveDelegate() = 0;

    /// True by default: each operation below is answered by its neutral default.
    virtual bool respondsTo(Operation operation) const;

    // zipArchiveWillUnzipArchiveAtPath:zipInfo:
    virtual void zipArchiveWillUnzipArchiveAtPath(const std::string& path, const VPZipArchiveInfo& zipInfo);
    // zipArchiveProgressEvent:total:
    virtual void zipArchiveProgressEvent(std::uint64_t loaded, std::uint64_t total);
    /// Answering false fails and cancels the run.
    // zipArchiveShouldUnzipFileAtIndex:totalFiles:archivePath:fileInfo:
    virtual bool zipArchiveShouldUnzipFileAtIndex(std::int64_t fileIndex, std::int64_t totalFiles,
                                                  const std::string& archivePath,
                                                  const VPZipFileInfo& fileInfo);
    // zipArchiveWillUnzipFileAtIndex:totalFiles:archivePath:fileInfo:
    virtual void zipArchiveWillUnzipFileAtIndex(std::int64_t fileIndex, std::int64_t totalFiles,
                                                const std::string& archivePath,
                                                const VPZipFileInfo& fileInfo);
    // zipArchiveDidUnzipFileAtIndex:totalFiles:archivePath:fileInfo:
    virtual void zipArchiveDidUnzipFileAtIndex(std::int64_t fileIndex, std::int64_t totalFiles,
                                               const std::string& archivePath, const VPZipFileInfo& fileInfo);
    // zipArchiveDidUnzipFileAtIndex:totalFiles:archivePath:unzippedFilePath:
    virtual void zipArchiveDidUnzipFileAtIndex(std::int64_t fileIndex, std::int64_t totalFiles,
                                               const std::string& archivePath,
                                               const std::string& unzippedFilePath);
    /// An entry that was not unpacked: `error` says why and names the entry or its path. Called at
    /// most once for an entry, when its failure is known, both for a failure the run goes on after (a
    /// path too long for the system, a folder that can't be written, a link that can't be made, a
    /// directory in a file's place) and for the one that ends the run (damaged data, a wrong password,
    /// a full disk). A failed file leaves nothing behind. When the run goes on, the entry's did-unzip
    /// operations and the progress handler still follow, as for every entry the run gets through; an
    /// entry was written when those come for it without this operation first. Entries left alone on
    /// purpose (an existing file kept without overwrite, "__MACOSX/" shadows) get neither.
    // zipArchiveDidFailToUnzipFileAtIndex:totalFiles:archivePath:fileInfo:error:
    virtual void zipArchiveDidFailToUnzipFileAtIndex(std::int64_t fileIndex, std::int64_t totalFiles,
                                                     const std::string& archivePath,
                                                     const VPZipFileInfo& fileInfo, const VPErrorPtr& error);
    // zipArchiveDidUnzipArchiveAtPath:zipInfo:unzippedPath:
    virtual void zipArchiveDidUnzipArchiveAtPath(const std::string& path, const VPZipArchiveInfo& zipInfo,
                                                 const std::string& unzippedPath);

protected:
    VPZipArchiveDelegate() = default;
    VPZipArchiveDelegate(const VPZipArchiveDelegate&) = default;
    VPZipArchiveDelegate& operator=(const VPZipArchiveDelegate&) = default;
};

} // namespace velmo
