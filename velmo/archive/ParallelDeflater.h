#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "velmo/archive/ReadAhead.h"

namespace velmo {

/// Deflates a sequence of inputs (files or bytes) on worker threads, ahead of a single reader that
/// takes each one's compressed bytes in order, as they come. The output is raw deflate at the
/// input's level, as an archive entry holds it, with the input's CRC-32 and sizes.
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
    static constexpr std::size_t kDefaultBufferLimit = ReadAhead::kDefaultBufferLimit;

    /// Starts min(`threads`, inputs) workers, at least one.
    ParallelDeflater(std::vector<Input> inputs, unsigned threads,
                     std::size_t bufferLimit = kDefaultBufferLimit);

    /// Up to `length` compressed bytes of input `index`, waiting for them; 0 once they are all
    /// read, -1 if the input failed (see `failure`). Reading an input gives up those before it.
    std::int64_t read(std::size_t index, void* buffer, std::size_t length) {
        return ahead_.read(index, buffer, length);
    }
    /// The input's CRC-32 and sizes, after `read` returned 0 for it.
    Result result(std::size_t index) const;
    /// Why `read` returned -1 for the input.
    Failure failure(std::size_t index) const;

private:
    /// A worker's compressor and buffers, kept from one input to the next.
    class Compressor;

    std::vector<Input> inputs_;
    std::vector<Result> results_;
    std::vector<Failure> failures_;
    /// Last, so that its workers stop before what they read and write goes.
    ReadAhead ahead_;
};

} // namespace velmo
