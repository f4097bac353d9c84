#include "velmo/archive/ReadAhead.h"

#include <algorithm>
#include <cstring>

namespace velmo {

namespace {

// Read bytes are cut off the front of an input's backlog once there are at least this many of them.
constexpr std::size_t kCompactAt = 1u << 20;

} // namespace

struct ReadAhead::Job {
    /// Bytes from `readOffset` on are the reader's still to take.
    std::string pending;
    std::size_t readOffset = 0;
    bool finished = false;
    bool failed = false;

    std::size_t backlog() const { return pending.size() - readOffset; }
    void release() {
        std::string().swap(pending);
        readOffset = 0;
    }
};

ReadAhead::ReadAhead(std::size_t inputs, unsigned threads, ProducerFactory makeProducer,
                     std::size_t bufferLimit)
    : jobs_(inputs), bufferLimit_(std::max<std::size_t>(bufferLimit, 1)),
      makeProducer_(std::move(makeProducer)) {
    const std::size_t count = std::min<std::size_t>(std::max(threads, 1u), jobs_.size());
    workers_.reserve(count);
    try {
        for (std::size_t i = 0; i < count; ++i)
            workers_.emplace_back([this] { work(); });
    } catch (...) {
        // No thread to be had: those started do the work, or, with none, the reader is told.
        if (workers_.empty()) {
            for (auto& job : jobs_)
                job.finished = job.failed = true;
        }
    }
}

ReadAhead::~ReadAhead() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    workersWait_.notify_all();
    readerWaits_.notify_all();
    for (auto& worker : workers_)
        worker.join();
}

std::int64_t ReadAhead::read(std::size_t index, void* buffer, std::size_t length) {
    std::unique_lock lock(mutex_);
    if (index >= jobs_.size()) return -1;
    if (index > head_) moveHead(index);
    Job& job = jobs_[index];
    readerWaits_.wait(lock, [&] { return job.backlog() > 0 || job.finished || stopping_; });
    if (job.backlog() == 0) return job.finished && !job.failed ? 0 : -1;
    const std::size_t count = std::min(length, job.backlog());
    std::memcpy(buffer, job.pending.data() + job.readOffset, count);
    const std::size_t backlogBefore = job.backlog();
    const std::size_t bufferedBefore = buffered_;
    job.readOffset += count;
    buffered_ -= count;
    if (job.readOffset == job.pending.size()) {
        job.pending.clear();
        job.readOffset = 0;
    } else if (job.readOffset >= kCompactAt && job.readOffset >= job.backlog()) {
        // Only once the read part outweighs the rest: each byte is moved a bounded number of times.
        job.pending.erase(0, job.readOffset);
        job.readOffset = 0;
    }
    // Workers waiting for room: the one at this input for its own backlog, the others for all.
    if ((backlogBefore >= bufferLimit_ && job.backlog() < bufferLimit_) ||
        (bufferedBefore >= bufferLimit_ && buffered_ < bufferLimit_))
        workersWait_.notify_all();
    return static_cast<std::int64_t>(count);
}

void ReadAhead::moveHead(std::size_t index) {
    for (std::size_t i = head_; i < index; ++i) {
        Job& job = jobs_[i];
        // An input left with bytes unread is given up, as is one still being made.
        if (!job.finished || job.backlog() > 0) job.finished = job.failed = true;
        buffered_ -= job.backlog();
        job.release();
    }
    head_ = index;
    workersWait_.notify_all();
}

void ReadAhead::work() {
    // A worker without a producer still ends each input it takes, failed, so the reader never waits
    // on it.
    std::unique_ptr<Producer> producer;
    try {
        producer = makeProducer_();
    } catch (...) {
    }
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
        try {
            if (producer) producer->produce(*this, index);
        } catch (...) {
        }
        // Ends the input if the producer didn't: it had none, or it threw.
        finish(index, true);
    }
}

bool ReadAhead::publish(std::size_t index, const void* bytes, std::size_t count) {
    std::unique_lock lock(mutex_);
    Job& job = jobs_[index];
    workersWait_.wait(lock, [&] {
        if (stopping_ || index < head_) return true;
        return index == head_ ? job.backlog() < bufferLimit_ : buffered_ < bufferLimit_;
    });
    if (stopping_ || index < head_) return false;
    job.pending.append(static_cast<const char*>(bytes), count);
    buffered_ += count;
    if (index == head_) readerWaits_.notify_one();
    return true;
}

void ReadAhead::finish(std::size_t index, bool failed) {
    std::lock_guard lock(mutex_);
    Job& job = jobs_[index];
    if (job.finished) return; // passed by the reader meanwhile
    job.finished = true;
    job.failed = failed;
    if (index == head_) readerWaits_.notify_one();
}

} // namespace velmo
