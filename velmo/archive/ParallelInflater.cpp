#include "velmo/archive/ParallelInflater.h"

#include <algorithm>

namespace velmo {

namespace {

constexpr std::size_t kChunk = 256u << 10;

} // namespace

class ParallelInflater::Reader : public ReadAhead::Producer {
public:
    Reader(ParallelInflater& owner, ZipInput& input) : owner_(owner), input_(input) {}

    void produce(ReadAhead& ahead, std::size_t index) override {
        ZipResult result = input_.openEntry(index, owner_.password_);
        if (result != ZipResult::Ok) return fail(ahead, index, result);
        for (;;) {
            if (ahead.stopping()) return;
            std::size_t count = 0;
            result = input_.read(buffer_.data(), buffer_.size(), count);
            if (result != ZipResult::Ok) return fail(ahead, index, result);
            if (count == 0) break;
            if (!ahead.publish(index, buffer_.data(), count)) return;
        }
        input_.closeEntry();
        ahead.finish(index, false);
    }

private:
    void fail(ReadAhead& ahead, std::size_t index, ZipResult result) {
        input_.closeEntry();
        owner_.failures_[index] = result;
        owner_.messages_[index] = input_.lastMessage();
        ahead.finish(index, true);
    }

    ParallelInflater& owner_;
    ZipInput& input_;
    std::vector<char> buffer_ = std::vector<char>(kChunk);
};

ParallelInflater::ParallelInflater(std::string archivePath, std::uint64_t entries,
                                   std::optional<std::string> password, unsigned threads,
                                   std::size_t bufferLimit)
    : password_(std::move(password)),
      handles_(openHandles(archivePath, std::min<std::uint64_t>(std::max(threads, 1u), entries))),
      failures_(static_cast<std::size_t>(entries), ZipResult::Ok),
      messages_(static_cast<std::size_t>(entries)),
      // Without a handle, no worker and nothing to read.
      ahead_(
          handles_.empty() ? 0 : static_cast<std::size_t>(entries), static_cast<unsigned>(handles_.size()),
          [this] { return std::make_unique<Reader>(*this, *handles_[handed_++]); }, bufferLimit) {}

std::vector<std::unique_ptr<ZipInput>> ParallelInflater::openHandles(const std::string& path,
                                                                     std::size_t count) {
    std::vector<std::unique_ptr<ZipInput>> handles;
    while (handles.size() < count) {
        auto handle = std::make_unique<ZipInput>();
        if (handle->open(path) != ZipResult::Ok) break;
        handles.push_back(std::move(handle));
    }
    return handles;
}

ZipResult ParallelInflater::read(std::size_t index, char* buffer, std::size_t size, std::size_t& count) {
    count = 0;
    const std::int64_t n = ahead_.read(index, buffer, size);
    if (n >= 0) {
        count = static_cast<std::size_t>(n);
        return ZipResult::Ok;
    }
    if (index < failures_.size() && failures_[index] != ZipResult::Ok) {
        lastMessage_ = messages_[index];
        return failures_[index];
    }
    lastMessage_ = "the entry was given up before it was read";
    return ZipResult::ReadError;
}

} // namespace velmo
