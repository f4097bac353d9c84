#pragma once

namespace velmo {

/// What a call into the ZIP library came to, in the terms the archive wrapper acts on.
enum class ZipResult {
    Ok,
    /// The archive can't be opened or isn't an archive.
    OpenError,
    /// A password is wrong or missing.
    PasswordError,
    /// The entry's bytes don't match its checksum.
    CrcError,
    /// The compressed or decrypted stream is damaged.
    DataError,
    /// Reading the archive or a source file failed.
    ReadError,
    /// Writing the archive failed.
    WriteError,
    /// A name that is taken, a bad name or setting.
    InvalidArgument,
    /// A compression or encryption method this build can't handle.
    Unsupported,
    OutOfMemory,
};

/// libzip's error codes (ZIP_ER_*) translated, here and nowhere else, to results.
ZipResult zipResultFromLibzip(int libzipError);

} // namespace velmo
