#include "velmo/archive/ParallelDeflater.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include <zlib.h>

namespace velmo {

namespace {

// The archive's entries are written with memory level 8, whichever thread deflates them.
constexpr int kMemoryLevel = 8;
constexpr std::size_t kInputChunk = 256u << 10;
constexpr std::size_t kOutputChunk = 64u << 10;

/// A file open for reading, closed however the deflating ends.
struct InputFile {
    int fd = -1;

    ~InputFile() {
        if (fd >= 0) ::close(fd);
    }
};

} // namespace

class ParallelDeflater::Compressor : public ReadAhead::Producer {
public:
    explicit Compressor(ParallelDeflater& owner) : owner_(owner) {}
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() override {
        if (ready_) deflateEnd(&stream_);
    }

    void produce(ReadAhead& ahead, std::size_t index) override;

private:
    /// The compressor, ready for a new input at `newLevel`: reset, or made anew for another level.
    bool start(int newLevel) {
        if (ready_ && level_ == newLevel && deflateReset(&stream_) == Z_OK) return true;
        if (ready_) deflateEnd(&stream_);
        stream_ = z_stream{};
        ready_ = deflateInit2(&stream_, newLevel, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) ==
                 Z_OK;
        level_ = newLevel;
        return ready_;
    }

    void fail(ReadAhead& ahead, std::size_t index, Failure failure) {
        owner_.failures_[index] = failure;
        ahead.finish(index, true);
    }

    ParallelDeflater& owner_;
    z_stream stream_{};
    bool ready_ = false;
    int level_ = 0;
    std::vector<unsigned char> in_ = std::vector<unsigned char>(kInputChunk);
    std::vector<unsigned char> out_ = std::vector<unsigned char>(kOutputChunk);
};

void ParallelDeflater::Compressor::produce(ReadAhead& ahead, std::size_t index) {
    const Input& input = owner_.inputs_[index]; // never changed once made: read without a lock
    if (!start(input.level)) return fail(ahead, index, Failure{ENOMEM, false});
    InputFile file;
    if (!input.data) {
        file.fd = ::open(input.path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file.fd < 0) return fail(ahead, index, Failure{errno, true});
    }

    std::uint64_t remaining = input.data ? input.data->size() : input.size;
    Result result;
    int flush = Z_NO_FLUSH;
    do {
        if (ahead.stopping()) return;
        std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, kInputChunk));
        const unsigned char* chunk = nullptr;
        if (input.data) {
            chunk = reinterpret_cast<const unsigned char*>(input.data->data()) + result.size;
        } else if (count > 0) {
            ssize_t n = 0;
            do {
                n = ::read(file.fd, in_.data(), count);
            } while (n < 0 && errno == EINTR);
            if (n < 0) return fail(ahead, index, Failure{errno, false});
            count = static_cast<std::size_t>(n);
            chunk = in_.data();
            // A file that has shrunk since its entry was made ends where it ends now.
            if (count == 0) remaining = 0;
        }
        remaining -= count;
        flush = remaining == 0 ? Z_FINISH : Z_NO_FLUSH;
        if (count > 0)
            result.crc = static_cast<std::uint32_t>(crc32(result.crc, chunk, static_cast<uInt>(count)));
        result.size += count;
        stream_.next_in = const_cast<Bytef*>(chunk);
        stream_.avail_in = static_cast<uInt>(count);
        do {
            stream_.next_out = out_.data();
            stream_.avail_out = static_cast<uInt>(out_.size());
            if (::deflate(&stream_, flush) == Z_STREAM_ERROR) return fail(ahead, index, Failure{EIO, false});
            const std::size_t produced = out_.size() - stream_.avail_out;
            if (produced > 0 && !ahead.publish(index, out_.data(), produced)) return;
            result.compressedSize += produced;
        } while (stream_.avail_out == 0);
    } while (flush != Z_FINISH);
    owner_.results_[index] = result;
    ahead.finish(index, false);
}

ParallelDeflater::ParallelDeflater(std::vector<Input> inputs, unsigned threads, std::size_t bufferLimit)
    : inputs_(std::move(inputs)), results_(inputs_.size()), failures_(inputs_.size()),
      ahead_(
          inputs_.size(), threads, [this] { return std::make_unique<Compressor>(*this); }, bufferLimit) {}

ParallelDeflater::Result ParallelDeflater::result(std::size_t index) const {
    return index < results_.size() ? results_[index] : Result{};
}

ParallelDeflater::Failure ParallelDeflater::failure(std::size_t index) const {
    if (index >= failures_.size()) return Failure{EINVAL, false};
    if (failures_[index].error != 0) return failures_[index];
    // Never tried: no worker could be started, or the input was given up.
    return Failure{ahead_.unstaffed() ? EAGAIN : ECANCELED, false};
}

} // namespace velmo
