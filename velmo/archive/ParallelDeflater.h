#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velmo {

/// Deflates a sequence of inputs (files or bytes) on worker threads, ahead of a single reader that
/// takes each one's compressed bytes in order, as they come. The output is raw deflate at the
/// input's level, as an archive entry holds it, with the input's CRC-32 and sizes.
///
/// Workers take the inputs in order. What they have compressed and the reader has not yet taken is
/// kept in memory up to a limit; past it, the input the reader is at goes on, the others wait. So
/// memory stays bounded whatever the sizes, and the reader never waits on work that can't progress.
class ParallelDeflater {
public:
    struct Input {
        /// The file read when `data` is null.
        std::string path;
        /// Read no further: what the file held when its entry was made, as the archive records it.
        std::uint64_t size = 0;
        /// Bytes held in memory, shared with the entry that owns them.
        std::shared_ptr<const std::string> data;
        /// 1 to 9.
        int level = 6;
    };
    /// What an input came to, once all its compressed bytes are read.
    struct Result {
        std::uint32_t crc = 0;
        std::uint64_t size = 0;
        std::uint64_t compressedSize = 0;
    };
    /// Why an input could not be compressed: the system's error, and whether opening it failed
    /// (as opposed to reading it, or the compressor).
    struct Failure {
        int error = 0;
        bool opening = false;
    };

    /// The compressed bytes kept ahead of the reader, across all inputs.
    static constexpr std::size_t kDefaultBufferLimit = 32u << 20;

    /// Starts min(`threads`, inputs) workers, at least one.
    ParallelDeflater(std::vector<Input> inputs, unsigned threads,
                     std::size_t bufferLimit = kDefaultBufferLimit);
    /// Stops the workers where they are and waits for them.
    ~ParallelDeflater();
    ParallelDeflater(const ParallelDeflater&) = delete;
    ParallelDeflater& operator=(const ParallelDeflater&) = delete;

    /// Up to `length` compressed bytes of input `index`, waiting for them; 0 once they are all
    /// read, -1 if the input failed (see `failure`). Reading an input gives up those before it.
    std::int64_t read(std::size_t index, void* buffer, std::size_t length);
    /// The input's CRC-32 and sizes, after `read` returned 0 for it.
    Result result(std::size_t index) const;
    Failure failure(std::size_t index) const;

private:
    struct Job;
    /// A worker's compressor and buffers, kept from one input to the next.
    struct Workspace;

    void work();
    void deflate(std::size_t index, Workspace& workspace);
    /// Hands compressed bytes to the reader, waiting while too much is kept ahead of it. False
    /// when the job is no longer wanted: the reader has passed it, or the deflater is stopping.
    bool publish(std::size_t index, const unsigned char* bytes, std::size_t count);
    void finish(std::size_t index, const Result& result, const Failure& failure);
    /// The reader is at `index`: what is kept of the inputs before it is let go.
    void moveHead(std::size_t index);

    std::vector<Job> jobs_;
    const std::size_t bufferLimit_;
    mutable std::mutex mutex_;
    /// Workers wait here for an input to start or for room to publish.
    std::condition_variable workersWait_;
    /// The reader waits here for bytes.
    std::condition_variable readerWaits_;
    /// The next input to start, the one the reader is at, the bytes kept ahead of it.
    std::size_t next_ = 0;
    std::size_t head_ = 0;
    std::size_t buffered_ = 0;
    /// Also read outside the lock, so that a worker deep in a big input stops soon.
    std::atomic<bool> stopping_{false};
    std::vector<std::thread> workers_;
};

} // namespace velmo
