#include "velmo/archive/ZipResult.h"

#include <zip.h>

namespace velmo {

ZipResult zipResultFromLibzip(int libzipError) {
    switch (libzipError) {
    case ZIP_ER_OK:
        return ZipResult::Ok;
    case ZIP_ER_NOPASSWD:
    case ZIP_ER_WRONGPASSWD:
        return ZipResult::PasswordError;
    case ZIP_ER_CRC:
        return ZipResult::CrcError;
    case ZIP_ER_ZLIB:
    case ZIP_ER_COMPRESSED_DATA:
        return ZipResult::DataError;
    case ZIP_ER_NOZIP:
    case ZIP_ER_NOENT:
    case ZIP_ER_OPEN:
    case ZIP_ER_MULTIDISK:
    case ZIP_ER_INCONS:
        return ZipResult::OpenError;
    case ZIP_ER_READ:
    case ZIP_ER_SEEK:
    case ZIP_ER_EOF:
    case ZIP_ER_TELL:
        return ZipResult::ReadError;
    case ZIP_ER_WRITE:
    case ZIP_ER_CLOSE:
    case ZIP_ER_RENAME:
    case ZIP_ER_TMPOPEN:
    case ZIP_ER_REMOVE:
        return ZipResult::WriteError;
    case ZIP_ER_COMPNOTSUPP:
    case ZIP_ER_ENCRNOTSUPP:
    case ZIP_ER_OPNOTSUPP:
        return ZipResult::Unsupported;
    case ZIP_ER_MEMORY:
        return ZipResult::OutOfMemory;
    default:
        return ZipResult::InvalidArgument;
    }
}

} // namespace velmo
