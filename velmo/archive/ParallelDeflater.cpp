#include "velmo/archive/ParallelDeflater.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include <zlib.h>

namespace velmo {

namespace {

// Memory level 9 is what the ZIP library's own deflate uses: with it an entry compressed here is,
// byte for byte, the entry the library would have written.
constexpr int kMemoryLevel = 9;
constexpr std::size_t kInputChunk = 256u << 10;
constexpr std::size_t kOutputChunk = 64u << 10;
// Read bytes are cut off the front of an input's backlog once there are this many of them.
constexpr std::size_t kCompactAt = 1u << 20;

/// A file open for reading, closed however the deflating ends.
struct InputFile {
    int fd = -1;

    ~InputFile() {
        if (fd >= 0) ::close(fd);
    }
};

} // namespace

struct ParallelDeflater::Workspace {
    z_stream stream{};
    bool ready = false;
    int level = 0;
    std::vector<unsigned char> in = std::vector<unsigned char>(kInputChunk);
    std::vector<unsigned char> out = std::vector<unsigned char>(kOutputChunk);

    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    ~Workspace() {
        if (ready) deflateEnd(&stream);
    }

    /// The compressor, ready for a new input at `newLevel`: reset, or made anew for another level.
    bool start(int newLevel) {
        if (ready && level == newLevel && deflateReset(&stream) == Z_OK) return true;
        if (ready) deflateEnd(&stream);
        stream = z_stream{};
        ready =
            deflateInit2(&stream, newLevel, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) == Z_OK;
        level = newLevel;
        return ready;
    }
};

struct ParallelDeflater::Job {
    explicit Job(Input from) : input(std::move(from)) {}

    Input input;
    /// Compressed bytes from `readOffset` on are the reader's still to take.
    std::string pending;
    std::size_t readOffset = 0;
    bool finished = false;
    bool failed = false;
    Result result;
    Failure failure;

    std::size_t backlog() const { return pending.size() - readOffset; }
    void release() {
        std::string().swap(pending);
        readOffset = 0;
    }
};

ParallelDeflater::ParallelDeflater(std::vector<Input> inputs, unsigned threads, std::size_t bufferLimit)
    : bufferLimit_(std::max<std::size_t>(bufferLimit, 1)) {
    jobs_.reserve(inputs.size());
    for (auto& input : inputs)
        jobs_.emplace_back(std::move(input));
    const std::size_t count = std::min<std::size_t>(std::max(threads, 1u), jobs_.size());
    workers_.reserve(count);
    try {
        for (std::size_t i = 0; i < count; ++i)
            workers_.emplace_back([this] { work(); });
    } catch (...) {
        // No thread to be had: those started do the work, or, with none, the reader is told.
        if (workers_.empty()) {
            for (auto& job : jobs_) {
                job.finished = job.failed = true;
                job.failure = Failure{EAGAIN, false};
            }
        }
    }
}

ParallelDeflater::~ParallelDeflater() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    workersWait_.notify_all();
    readerWaits_.notify_all();
    for (auto& worker : workers_)
        worker.join();
}

std::int64_t ParallelDeflater::read(std::size_t index, void* buffer, std::size_t length) {
    std::unique_lock lock(mutex_);
    if (index >= jobs_.size()) return -1;
    if (index > head_) moveHead(index);
    Job& job = jobs_[index];
    readerWaits_.wait(lock, [&] { return job.backlog() > 0 || job.finished || stopping_; });
    if (job.backlog() == 0) {
        if (job.failed || !job.finished) {
            if (!job.failed) job.failure = Failure{ECANCELED, false};
            return -1;
        }
        return 0;
    }
    const std::size_t count = std::min(length, job.backlog());
    std::memcpy(buffer, job.pending.data() + job.readOffset, count);
    const std::size_t backlogBefore = job.backlog();
    const std::size_t bufferedBefore = buffered_;
    job.readOffset += count;
    buffered_ -= count;
    if (job.readOffset == job.pending.size()) {
        job.pending.clear();
        job.readOffset = 0;
    } else if (job.readOffset >= kCompactAt) {
        job.pending.erase(0, job.readOffset);
        job.readOffset = 0;
    }
    // Workers waiting for room: the one at this input for its own backlog, the others for all.
    if ((backlogBefore >= bufferLimit_ && job.backlog() < bufferLimit_) ||
        (bufferedBefore >= bufferLimit_ && buffered_ < bufferLimit_))
        workersWait_.notify_all();
    return static_cast<std::int64_t>(count);
}

ParallelDeflater::Result ParallelDeflater::result(std::size_t index) const {
    std::lock_guard lock(mutex_);
    return index < jobs_.size() ? jobs_[index].result : Result{};
}

ParallelDeflater::Failure ParallelDeflater::failure(std::size_t index) const {
    std::lock_guard lock(mutex_);
    return index < jobs_.size() ? jobs_[index].failure : Failure{EINVAL, false};
}

void ParallelDeflater::moveHead(std::size_t index) {
    for (std::size_t i = head_; i < index; ++i) {
        Job& job = jobs_[i];
        buffered_ -= job.backlog();
        job.release();
        if (!job.finished) {
            job.finished = job.failed = true;
            job.failure = Failure{ECANCELED, false};
        }
    }
    head_ = index;
    workersWait_.notify_all();
}

void ParallelDeflater::work() {
    Workspace workspace;
    for (;;) {
        std::size_t index = 0;
        {
            std::unique_lock lock(mutex_);
            // The input the reader is at always starts; the others only while there is room.
            workersWait_.wait(lock, [&] {
                next_ = std::max(next_, head_);
                return stopping_ || next_ == jobs_.size() || next_ == head_ || buffered_ < bufferLimit_;
            });
            if (stopping_ || next_ == jobs_.size()) return;
            index = next_++;
        }
        deflate(index, workspace);
    }
}

void ParallelDeflater::deflate(std::size_t index, Workspace& workspace) {
    const Input& input = jobs_[index].input; // never changed once made: read without the lock
    if (!workspace.start(input.level)) {
        finish(index, {}, Failure{ENOMEM, false});
        return;
    }
    InputFile file;
    if (!input.data) {
        file.fd = ::open(input.path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file.fd < 0) {
            finish(index, {}, Failure{errno, true});
            return;
        }
    }

    z_stream& stream = workspace.stream;
    std::vector<unsigned char>& in = workspace.in;
    std::vector<unsigned char>& out = workspace.out;
    std::uint64_t remaining = input.data ? input.data->size() : input.size;
    Result result;
    int flush = Z_NO_FLUSH;
    do {
        if (stopping_) return;
        std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, kInputChunk));
        const unsigned char* chunk = nullptr;
        if (input.data) {
            chunk = reinterpret_cast<const unsigned char*>(input.data->data()) + result.size;
        } else if (count > 0) {
            ssize_t n = 0;
            do {
                n = ::read(file.fd, in.data(), count);
            } while (n < 0 && errno == EINTR);
            if (n < 0) {
                finish(index, {}, Failure{errno, false});
                return;
            }
            count = static_cast<std::size_t>(n);
            chunk = in.data();
            // A file that has shrunk since its entry was made ends where it ends now.
            if (count == 0) remaining = 0;
        }
        remaining -= count;
        flush = remaining == 0 ? Z_FINISH : Z_NO_FLUSH;
        if (count > 0)
            result.crc = static_cast<std::uint32_t>(crc32(result.crc, chunk, static_cast<uInt>(count)));
        result.size += count;
        stream.next_in = const_cast<Bytef*>(chunk);
        stream.avail_in = static_cast<uInt>(count);
        do {
            stream.next_out = out.data();
            stream.avail_out = static_cast<uInt>(out.size());
            if (::deflate(&stream, flush) == Z_STREAM_ERROR) {
                finish(index, {}, Failure{EIO, false});
                return;
            }
            const std::size_t produced = out.size() - stream.avail_out;
            if (produced > 0 && !publish(index, out.data(), produced)) return;
            result.compressedSize += produced;
        } while (stream.avail_out == 0);
    } while (flush != Z_FINISH);
    finish(index, result, {});
}

bool ParallelDeflater::publish(std::size_t index, const unsigned char* bytes, std::size_t count) {
    std::unique_lock lock(mutex_);
    Job& job = jobs_[index];
    workersWait_.wait(lock, [&] {
        if (stopping_ || index < head_) return true;
        return index == head_ ? job.backlog() < bufferLimit_ : buffered_ < bufferLimit_;
    });
    if (stopping_ || index < head_) return false;
    job.pending.append(reinterpret_cast<const char*>(bytes), count);
    buffered_ += count;
    if (index == head_) readerWaits_.notify_one();
    return true;
}

void ParallelDeflater::finish(std::size_t index, const Result& result, const Failure& failure) {
    std::lock_guard lock(mutex_);
    Job& job = jobs_[index];
    if (job.finished) return; // passed by the reader meanwhile
    job.finished = true;
    job.failed = failure.error != 0;
    job.result = result;
    job.failure = failure;
    if (index == head_) readerWaits_.notify_one();
}

} // namespace velmo
