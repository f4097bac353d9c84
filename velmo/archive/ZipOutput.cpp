#include "velmo/archive/ZipOutput.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <zip.h>

#include "velmo/archive/ParallelDeflater.h"
#include "velmo/foundation/Files.h"

namespace velmo {

namespace {

// A level of -1 asks for zlib's own default; the ZIP library's default would be 9.
constexpr int kDefaultDeflateLevel = 6;

int levelOf(const ZipOutput::EntryOptions& options) {
    return options.compressionLevel < 0 ? kDefaultDeflateLevel : options.compressionLevel;
}

struct CloseProgressState {
    const ZipOutput::CloseProgress* progress;
    std::uint64_t total;
    std::uint64_t reported;
    /// The handler's exception, kept until the library has returned: none may cross its C frames.
    std::exception_ptr exception;
};

// The library reports the share of the whole job done; each entry is an equal slice of it.
void onCloseProgress(zip_t*, double fraction, void* context) {
    auto* state = static_cast<CloseProgressState*>(context);
    if (state->exception) return;
    const double exact = fraction * static_cast<double>(state->total) + 1e-6;
    const auto written = std::min(state->total, static_cast<std::uint64_t>(std::floor(std::max(exact, 0.0))));
    if (written <= state->reported) return;
    state->reported = written;
    try {
        (*state->progress)(written, state->total);
    } catch (...) {
        state->exception = std::current_exception();
    }
}

int onCloseCancel(zip_t*, void* context) {
    return static_cast<CloseProgressState*>(context)->exception ? 1 : 0;
}

/// An entry whose bytes the workers deflate ahead of the writing. The library takes them as they
/// come, already compressed, so it neither compresses them again nor computes their checksum.
struct DeflatedEntry {
    ParallelDeflater::Input input;
    std::time_t mtime = 0;
    zip_error_t error;
    /// Set while the archive is being written: where the entry's bytes come from, as which input.
    ParallelDeflater* deflater = nullptr;
    std::size_t job = 0;
    bool opened = false;
    bool read = false;

    DeflatedEntry(ParallelDeflater::Input deflaterInput, std::time_t modified)
        : input(std::move(deflaterInput)), mtime(modified) {
        zip_error_init(&error);
    }
    ~DeflatedEntry() { zip_error_fini(&error); }
    DeflatedEntry(const DeflatedEntry&) = delete;
    DeflatedEntry& operator=(const DeflatedEntry&) = delete;
};

// The deflate options in the general-purpose flags (bits 1 and 2) as the library sets them when
// it compresses: fast for levels 1 and 2, maximum for 8 and 9, normal otherwise.
constexpr zip_uint16_t kDeflateOptionMask = 0x0006;
zip_uint16_t deflateOptionFlags(int level) {
    if (level <= 2) return 0x0004;
    return level >= 8 ? 0x0002 : 0;
}

zip_int64_t onDeflatedEntry(void* userdata, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    auto* holder = static_cast<std::shared_ptr<DeflatedEntry>*>(userdata);
    DeflatedEntry& entry = **holder;
    switch (command) {
    case ZIP_SOURCE_OPEN:
        // The bytes come once per writing: an entry opened twice would read as empty.
        if (!entry.deflater || entry.opened) {
            zip_error_set(&entry.error, ZIP_ER_INTERNAL, 0);
            return -1;
        }
        entry.opened = true;
        return 0;
    case ZIP_SOURCE_READ: {
        const std::int64_t count = entry.deflater->read(entry.job, data, static_cast<std::size_t>(length));
        if (count < 0) {
            const ParallelDeflater::Failure failure = entry.deflater->failure(entry.job);
            zip_error_set(&entry.error, failure.opening ? ZIP_ER_OPEN : ZIP_ER_READ, failure.error);
            return -1;
        }
        entry.read = entry.read || count == 0;
        return count;
    }
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_STAT: {
        auto* st = ZIP_SOURCE_GET_ARGS(zip_stat_t, data, length, &entry.error);
        if (!st) return -1;
        zip_stat_init(st);
        st->valid = ZIP_STAT_SIZE | ZIP_STAT_MTIME | ZIP_STAT_COMP_METHOD;
        st->size = entry.input.size;
        st->mtime = entry.mtime;
        st->comp_method = ZIP_CM_DEFLATE;
        // The checksum and the sizes are known once the bytes are read; the library asks again then.
        if (entry.read && entry.deflater) {
            const ParallelDeflater::Result result = entry.deflater->result(entry.job);
            st->valid |= ZIP_STAT_CRC | ZIP_STAT_COMP_SIZE;
            st->size = result.size;
            st->crc = result.crc;
            st->comp_size = result.compressedSize;
        }
        return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_GET_FILE_ATTRIBUTES: {
        auto* attributes = ZIP_SOURCE_GET_ARGS(zip_file_attributes_t, data, length, &entry.error);
        if (!attributes) return -1;
        attributes->valid |= ZIP_FILE_ATTRIBUTES_GENERAL_PURPOSE_BIT_FLAGS;
        attributes->general_purpose_bit_flags = deflateOptionFlags(entry.input.level);
        attributes->general_purpose_bit_mask = kDeflateOptionMask;
        return 0;
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&entry.error, data, length);
    case ZIP_SOURCE_FREE:
        delete holder;
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                              ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE,
                                              ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_GET_FILE_ATTRIBUTES, -1);
    default:
        zip_error_set(&entry.error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

} // namespace

struct ZipOutput::Impl {
    zip_t* archive = nullptr;
    std::string path;
    unsigned threads = 1;
    /// The entries read from files, by index: `close` may have to leave some out.
    std::vector<std::pair<zip_uint64_t, DroppedFile>> files;
    /// The entries deflated by the workers, by index, which is the order the library writes them in.
    std::map<zip_uint64_t, std::shared_ptr<DeflatedEntry>> deflated;

    /// Whether an entry is deflated by the workers: all but those stored. The library's own deflate
    /// takes a memory level of its choosing, and an entry's bytes must not depend on which one ran.
    static bool deflatesAhead(const EntryOptions& options) { return options.compressionLevel != 0; }

    /// A source whose bytes the workers deflate; the library owns it, and through it a share of `entry`.
    zip_source_t* deflatedSource(const std::shared_ptr<DeflatedEntry>& entry) {
        auto* holder = new std::shared_ptr<DeflatedEntry>(entry);
        zip_source_t* source = zip_source_function(archive, onDeflatedEntry, holder);
        if (!source) delete holder;
        return source;
    }

    /// Takes an entry out of the archive and out of the records kept of it.
    void remove(zip_uint64_t index) {
        zip_delete(archive, index);
        deflated.erase(index);
    }

    ZipResult fail(zip_error_t* error, std::string& message) {
        message = zip_error_strerror(error);
        const ZipResult result = zipResultFromLibzip(zip_error_code_zip(error));
        zip_error_clear(archive);
        return result;
    }

    /// Settings of a new entry; an entry that can't take them is removed again.
    ZipResult configure(zip_int64_t added, const EntryOptions& options, bool isDirectory,
                        std::string& message) {
        const auto index = static_cast<zip_uint64_t>(added);
        const bool store = options.compressionLevel == 0 || isDirectory;
        const int level = levelOf(options);
        int rc = zip_set_file_compression(archive, index, store ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                                          store ? 0 : static_cast<zip_uint32_t>(level));
        // A file's date is its source's; setting another would break the traditional cipher's
        // check byte, which the library makes from the source's date.
        if (rc == 0 && isDirectory) {
            rc = zip_file_set_dostime(archive, index, static_cast<zip_uint16_t>(options.dosDate & 0xffff),
                                      static_cast<zip_uint16_t>(options.dosDate >> 16), 0);
        }
        // Version made by 0x13xx: the host system is OS X (19), whose readers, like Unix's, take the
        // mode from the top half of the attributes (Info-ZIP's unzip 6 takes it from Unix hosts alone).
        // The library writes its own version in the low byte; the host is what it lets us choose.
        if (rc == 0)
            rc = zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_OS_X, options.mode << 16);
        if (rc == 0 && !isDirectory && !options.password.empty()) {
            rc = zip_file_set_encryption(archive, index, options.aes ? ZIP_EM_AES_256 : ZIP_EM_TRAD_PKWARE,
                                         options.password.c_str());
        }
        if (rc == 0) return ZipResult::Ok;
        const ZipResult result = fail(zip_get_error(archive), message);
        remove(index);
        return result;
    }

    /// Adds `source` as the entry `name`, configured. `replaced` is the index of the earlier entry of
    /// that name, when it is gone: the new one took its place (or, short of memory, failed after it
    /// went); otherwise -1.
    ZipResult add(const std::string& name, zip_source_t* source, const EntryOptions& options,
                  bool isDirectory, std::string& message, zip_int64_t& index, zip_int64_t& replaced) {
        replaced = -1;
        if (!source) return fail(zip_get_error(archive), message);
        // Names are taken as UTF-8. The library flags those that aren't plain ASCII (general-purpose
        // bit 11) and keeps the flag off the others, which read the same either way.
        index = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0 && zip_error_code_zip(zip_get_error(archive)) == ZIP_ER_EXISTS) {
            // The library holds a name once. Written twice, a name unpacks to the later file in any
            // reader, so the later file takes the earlier entry's place: it is added under a name of
            // its own, set up, and only then renamed over the earlier, which stays as it was if
            // anything before the renaming fails.
            replaced = zip_name_locate(archive, name.c_str(), 0);
            if (replaced >= 0) {
                zip_error_clear(archive);
                std::string placeholder;
                for (int n = 0; placeholder.empty() || zip_name_locate(archive, placeholder.c_str(), 0) >= 0;
                     ++n)
                    placeholder = ".velmo-replacing-" + std::to_string(n) + (isDirectory ? "/" : "");
                index = zip_file_add(archive, placeholder.c_str(), source, ZIP_FL_ENC_UTF_8);
            }
        }
        if (index < 0) {
            zip_source_free(source);
            replaced = -1;
            return fail(zip_get_error(archive), message);
        }
        ZipResult result = configure(index, options, isDirectory, message);
        if (result != ZipResult::Ok) replaced = -1;
        if (result == ZipResult::Ok && replaced >= 0 &&
            (zip_delete(archive, static_cast<zip_uint64_t>(replaced)) != 0 ||
             zip_file_rename(archive, static_cast<zip_uint64_t>(index), name.c_str(), ZIP_FL_ENC_UTF_8) !=
                 0)) {
            // Only short of memory (the placeholder is a folder's name when the name is): neither
            // entry is in the archive now.
            result = fail(zip_get_error(archive), message);
            remove(static_cast<zip_uint64_t>(index));
        }
        return result;
    }

    /// The records of an entry whose place a later one took are dropped with it.
    void forget(zip_int64_t replaced) {
        if (replaced < 0) return;
        std::erase_if(files,
                      [&](const auto& file) { return file.first == static_cast<zip_uint64_t>(replaced); });
        deflated.erase(static_cast<zip_uint64_t>(replaced));
    }
};

ZipOutput::ZipOutput(unsigned compressionThreads) : impl_(std::make_unique<Impl>()) {
    impl_->threads =
        compressionThreads > 0 ? compressionThreads : std::max(1u, std::thread::hardware_concurrency());
}

ZipOutput::~ZipOutput() {
    discard();
}

ZipResult ZipOutput::open(const std::string& path) {
    discard();
    // The library touches the disk only when the archive is closed; a folder that can't take
    // the archive should fail here, before anything is added.
    const std::filesystem::path folder = std::filesystem::absolute(path).parent_path();
    if (::access(folder.c_str(), W_OK | X_OK) != 0) {
        lastMessage_ = folder.string() + ": " + std::strerror(errno);
        return ZipResult::OpenError;
    }
    int code = 0;
    impl_->archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!impl_->archive) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        lastMessage_ = zip_error_strerror(&error);
        zip_error_fini(&error);
        return ZipResult::OpenError;
    }
    impl_->path = path;
    entries_ = 0;
    dropped_.clear();
    return ZipResult::Ok;
}

bool ZipOutput::isOpen() const {
    return impl_->archive != nullptr;
}

ZipResult ZipOutput::addFile(const std::string& name, const std::string& sourcePath,
                             const EntryOptions& options) {
    if (!impl_->archive) return ZipResult::InvalidArgument;
    zip_source_t* source = nullptr;
    std::shared_ptr<DeflatedEntry> deflated;
    if (impl_->deflatesAhead(options)) {
        // The size and date as the file has them now, as the library would take them: the entry
        // holds no more than this size, under this date.
        struct stat st;
        if (::stat(sourcePath.c_str(), &st) != 0) {
            lastMessage_ = sourcePath + ": " + std::strerror(errno);
            return ZipResult::ReadError;
        }
        deflated = std::make_shared<DeflatedEntry>(
            ParallelDeflater::Input{sourcePath, static_cast<std::uint64_t>(st.st_size), nullptr,
                                    levelOf(options)},
            st.st_mtime);
        source = impl_->deflatedSource(deflated);
    } else {
        source = zip_source_file(impl_->archive, sourcePath.c_str(), 0, -1);
    }
    zip_int64_t index = -1;
    zip_int64_t replaced = -1;
    const ZipResult result = impl_->add(name, source, options, false, lastMessage_, index, replaced);
    impl_->forget(replaced);
    if (result == ZipResult::Ok) {
        impl_->files.emplace_back(static_cast<zip_uint64_t>(index), DroppedFile{name, sourcePath, 0});
        if (deflated) impl_->deflated.emplace(static_cast<zip_uint64_t>(index), std::move(deflated));
    }
    return counted(result, replaced);
}

ZipResult ZipOutput::addData(const std::string& name, std::string_view data, const EntryOptions& options) {
    if (!impl_->archive) return ZipResult::InvalidArgument;
    zip_source_t* source = nullptr;
    std::shared_ptr<DeflatedEntry> deflated;
    if (impl_->deflatesAhead(options)) {
        std::shared_ptr<const std::string> copy;
        try {
            copy = std::make_shared<const std::string>(data);
            deflated = std::make_shared<DeflatedEntry>(
                ParallelDeflater::Input{std::string(), copy->size(), copy, levelOf(options)},
                std::time(nullptr));
        } catch (const std::bad_alloc&) {
            return ZipResult::OutOfMemory;
        }
        source = impl_->deflatedSource(deflated);
    } else {
        // The library frees the copy once the archive is written.
        void* copy = data.empty() ? nullptr : std::malloc(data.size());
        if (!data.empty() && !copy) return ZipResult::OutOfMemory;
        if (copy) std::memcpy(copy, data.data(), data.size());
        source = zip_source_buffer(impl_->archive, copy, data.size(), 1);
        if (!source) std::free(copy);
    }
    zip_int64_t index = -1;
    zip_int64_t replaced = -1;
    const ZipResult result = impl_->add(name, source, options, false, lastMessage_, index, replaced);
    impl_->forget(replaced);
    if (result == ZipResult::Ok && deflated)
        impl_->deflated.emplace(static_cast<zip_uint64_t>(index), std::move(deflated));
    return counted(result, replaced);
}

ZipResult ZipOutput::addDirectory(const std::string& name, const EntryOptions& options) {
    if (!impl_->archive) return ZipResult::InvalidArgument;
    // What the library's own directory entry is, an empty entry whose name ends in "/", added as
    // files are, so that a folder added twice is replaced as a file is.
    const std::string entryName = name.ends_with('/') ? name : name + "/";
    zip_int64_t index = -1;
    zip_int64_t replaced = -1;
    const ZipResult result = impl_->add(entryName, zip_source_buffer(impl_->archive, nullptr, 0, 0), options,
                                        true, lastMessage_, index, replaced);
    impl_->forget(replaced);
    return counted(result, replaced);
}

ZipResult ZipOutput::close(const CloseProgress& progress) {
    zip_t* archive = impl_->archive;
    if (!archive) return ZipResult::InvalidArgument;
    dropped_.clear();
    CloseProgressState state{&progress, entries_, 0, nullptr};
    if (progress && entries_ > 0) {
        zip_register_progress_callback_with_state(archive, 0.0, onCloseProgress, nullptr, &state);
        zip_register_cancel_callback_with_state(archive, onCloseCancel, nullptr, &state);
    }
    // The library reads the files only now. A failed close leaves the archive as it was, so
    // files that went away since they were added are left out and the rest is tried again:
    // one file doesn't cost the others.
    while (!writeArchive()) {
        if (state.exception) {
            discard();
            std::rethrow_exception(state.exception);
        }
        const ZipResult result = impl_->fail(zip_get_error(archive), lastMessage_);
        if (!dropUnreadableFiles()) {
            discard();
            return result == ZipResult::Ok ? ZipResult::WriteError : result;
        }
        state.total = entries_;
    }
    impl_->archive = nullptr;
    impl_->files.clear();
    impl_->deflated.clear();
    if (state.exception) std::rethrow_exception(state.exception);
    const std::uint64_t entries = entries_;
    if (entries == 0) {
        // The library writes no file for an archive without entries; an empty archive is its
        // end-of-directory record alone.
        static constexpr char kEmptyArchive[22] = {'P', 'K', 5, 6};
        if (!Files::writeAtomically(impl_->path, std::string_view(kEmptyArchive, sizeof kEmptyArchive))) {
            lastMessage_ = "Can't write the empty archive";
            return ZipResult::WriteError;
        }
    }
    if (progress && state.reported < entries) progress(entries, entries);
    return ZipResult::Ok;
}

bool ZipOutput::dropUnreadableFiles() {
    const std::size_t before = dropped_.size();
    auto& files = impl_->files;
    for (auto it = files.begin(); it != files.end();) {
        const int fd = ::open(it->second.sourcePath.c_str(), O_RDONLY | O_CLOEXEC);
        const int error = fd < 0 ? errno : 0;
        if (fd >= 0) ::close(fd);
        if (error == 0) {
            ++it;
            continue;
        }
        impl_->remove(it->first);
        --entries_;
        dropped_.push_back(std::move(it->second));
        dropped_.back().error = error;
        it = files.erase(it);
    }
    return dropped_.size() > before;
}

bool ZipOutput::writeArchive() {
    // The workers start on the deflated entries in the order the library will ask for them, and
    // stop, whatever is left, when the library is done: written, failed or cancelled.
    std::unique_ptr<ParallelDeflater> deflater;
    if (!impl_->deflated.empty()) {
        std::vector<ParallelDeflater::Input> inputs;
        inputs.reserve(impl_->deflated.size());
        for (const auto& [index, entry] : impl_->deflated) {
            entry->job = inputs.size();
            entry->opened = entry->read = false;
            inputs.push_back(entry->input);
        }
        deflater = std::make_unique<ParallelDeflater>(std::move(inputs), impl_->threads);
        for (const auto& [index, entry] : impl_->deflated)
            entry->deflater = deflater.get();
    }
    const bool written = zip_close(impl_->archive) == 0;
    for (const auto& [index, entry] : impl_->deflated)
        entry->deflater = nullptr;
    return written;
}

ZipResult ZipOutput::counted(ZipResult result, std::int64_t replaced) {
    if (result == ZipResult::Ok && replaced < 0) ++entries_;
    if (result != ZipResult::Ok && replaced >= 0) --entries_;
    return result;
}

void ZipOutput::discard() {
    if (impl_->archive) zip_discard(impl_->archive);
    impl_->archive = nullptr;
    impl_->files.clear();
    impl_->deflated.clear();
}

} // namespace velmo
