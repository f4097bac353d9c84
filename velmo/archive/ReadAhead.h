#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace velmo {

/// A sequence of inputs whose bytes are made on worker threads, ahead of a single reader that takes
/// each input's bytes in order, as they come: entries deflated before the archive writes them,
/// entries inflated before their files are written.
///
/// Workers take the inputs in order. What they have made and the reader has not yet taken is kept
/// in memory up to a limit; past it, the input the reader is at goes on, the others wait. So memory
/// stays bounded whatever the sizes, and the reader never waits on work that can't progress.
class ReadAhead {
public:
    /// What a worker makes inputs with, kept from one input to the next (a compressor, an open
    /// archive). One per worker, so it needs no lock of its own.
    class Producer {
    public:
        virtual ~Producer() = default;
        /// Makes input `index`: its bytes through `ahead.publish`, then `ahead.finish`. What it
        /// learns of the input beyond its bytes (sizes, checksums, failures) it keeps where the
        /// reader finds it once `read` has ended on that input, written before `finish`.
        virtual void produce(ReadAhead& ahead, std::size_t index) = 0;
    };
    using ProducerFactory = std::function<std::unique_ptr<Producer>()>;

    /// The bytes kept ahead of the reader, across all inputs.
    static constexpr std::size_t kDefaultBufferLimit = 32u << 20;

    /// Starts min(`threads`, inputs) workers, at least one, each with a producer of its own.
    ReadAhead(std::size_t inputs, unsigned threads, ProducerFactory makeProducer,
              std::size_t bufferLimit = kDefaultBufferLimit);
    /// Stops the workers where they are and waits for them.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Up to `length` bytes of input `index`, waiting for them; 0 once they are all read, -1 if the
    /// input failed or was given up. Reading an input gives up those before it.
    std::int64_t read(std::size_t index, void* buffer, std::size_t length);
    /// True when no worker could be started: every input then fails without having been tried.
    bool unstaffed() const { return workers_.empty(); }

    /// For producers: hands bytes of input `index` to the reader, waiting while too much is kept
    /// ahead of it. False when the input is no longer wanted (the reader has passed it, or the
    /// workers are stopping): the producer then drops it, without `finish`.
    bool publish(std::size_t index, const void* bytes, std::size_t count);
    /// For producers: input `index` is done, whole or failed.
    void finish(std::size_t index, bool failed);
    /// For producers deep in a long input: whether to stop now. Read without the lock.
    bool stopping() const { return stopping_; }

private:
    struct Job;

    void work();
    /// The reader is at `index`: what is kept of the inputs before it is let go.
    void moveHead(std::size_t index);

    std::vector<Job> jobs_;
    const std::size_t bufferLimit_;
    ProducerFactory makeProducer_;
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
