#include "velmo/archive/ZipInput.h"

#include <cstring>

#include <zip.h>

#include "velmo/archive/DosDate.h"

namespace velmo {

struct ZipInput::Impl {
    zip_t* archive = nullptr;
    zip_file_t* entry = nullptr;

    ZipResult fail(zip_error_t* error, std::string& message) {
        message = zip_error_strerror(error);
        return zipResultFromLibzip(zip_error_code_zip(error));
    }
};

ZipInput::ZipInput() : impl_(std::make_unique<Impl>()) {}

ZipInput::~ZipInput() {
    close();
}

ZipResult ZipInput::open(const std::string& path) {
    close();
    int code = 0;
    impl_->archive = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (impl_->archive) return ZipResult::Ok;
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const ZipResult result = impl_->fail(&error, lastMessage_);
    zip_error_fini(&error);
    // Whatever kept it from opening, the archive didn't open.
    return result == ZipResult::OutOfMemory ? result : ZipResult::OpenError;
}

void ZipInput::close() {
    closeEntry();
    if (impl_->archive) zip_discard(impl_->archive);
    impl_->archive = nullptr;
}

std::uint64_t ZipInput::entryCount() const {
    if (!impl_->archive) return 0;
    const zip_int64_t count = zip_get_num_entries(impl_->archive, 0);
    return count < 0 ? 0 : static_cast<std::uint64_t>(count);
}

std::string ZipInput::comment() const {
    if (!impl_->archive) return {};
    int length = 0;
    const char* text = zip_get_archive_comment(impl_->archive, &length, ZIP_FL_ENC_RAW);
    return text ? std::string(text, static_cast<std::size_t>(length)) : std::string();
}

ZipResult ZipInput::entryInfo(std::uint64_t index, VPZipFileInfo& info) {
    zip_t* archive = impl_->archive;
    if (!archive) return ZipResult::InvalidArgument;
    zip_stat_t st;
    zip_stat_init(&st);
    zip_uint8_t host = 0;
    zip_uint32_t attributes = 0;
    if (zip_stat_index(archive, index, ZIP_FL_ENC_RAW, &st) != 0 ||
        zip_file_get_external_attributes(archive, index, 0, &host, &attributes) != 0) {
        return impl_->fail(zip_get_error(archive), lastMessage_);
    }
    info = VPZipFileInfo{};
    info.rawName = st.name ? st.name : "";
    info.hostSystem = host;
    info.externalAttributes = attributes;
    info.dosDate = (st.valid & ZIP_STAT_MTIME) ? DosDate::dosDateFromTime(st.mtime) : 0;
    info.crc = (st.valid & ZIP_STAT_CRC) ? st.crc : 0;
    info.compressedSize = (st.valid & ZIP_STAT_COMP_SIZE) ? st.comp_size : 0;
    info.uncompressedSize = (st.valid & ZIP_STAT_SIZE) ? st.size : 0;
    info.compressionMethod = (st.valid & ZIP_STAT_COMP_METHOD) ? st.comp_method : 0;
    info.encrypted = (st.valid & ZIP_STAT_ENCRYPTION_METHOD) && st.encryption_method != ZIP_EM_NONE;
    // The library keeps the UTF-8 flag to itself, but read strictly it leaves only flagged names
    // unconverted; names of plain ASCII read the same either way, which is all the flag decides.
    const char* strict = zip_get_name(archive, index, ZIP_FL_ENC_STRICT);
    info.utf8Name = strict && std::strcmp(strict, info.rawName.c_str()) == 0;
    return ZipResult::Ok;
}

ZipResult ZipInput::openEntry(std::uint64_t index, const std::optional<std::string>& password) {
    closeEntry();
    if (!impl_->archive) return ZipResult::InvalidArgument;
    if (password) {
        // Given a password for a cipher it doesn't know, libzip 1.7.3 fails as it should but leaks
        // what it had set up for reading: such an entry is refused with the same error first.
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(impl_->archive, index, 0, &st) == 0 && (st.valid & ZIP_STAT_ENCRYPTION_METHOD) &&
            st.encryption_method != ZIP_EM_NONE &&
            !zip_encryption_method_supported(st.encryption_method, 0)) {
            zip_error_t error;
            zip_error_init_with_code(&error, ZIP_ER_ENCRNOTSUPP);
            const ZipResult result = impl_->fail(&error, lastMessage_);
            zip_error_fini(&error);
            return result;
        }
    }
    impl_->entry = password ? zip_fopen_index_encrypted(impl_->archive, index, 0, password->c_str())
                            : zip_fopen_index(impl_->archive, index, 0);
    if (impl_->entry) return ZipResult::Ok;
    return impl_->fail(zip_get_error(impl_->archive), lastMessage_);
}

ZipResult ZipInput::read(char* buffer, std::size_t size, std::size_t& count) {
    count = 0;
    if (!impl_->entry) return ZipResult::InvalidArgument;
    const zip_int64_t n = zip_fread(impl_->entry, buffer, size);
    if (n < 0) return impl_->fail(zip_file_get_error(impl_->entry), lastMessage_);
    count = static_cast<std::size_t>(n);
    return ZipResult::Ok;
}

void ZipInput::closeEntry() {
    if (impl_->entry) zip_fclose(impl_->entry);
    impl_->entry = nullptr;
}

} // namespace velmo
