#pragma once

#include <filesystem>
#include <mutex>
#include <string_view>

#include "velmo/foundation/Value.h"

namespace velmo {

/// The per-user key-value store: one JSON file of plain values under `$VELMO_HOME`.
///
/// Every write re-reads the file under an advisory lock, applies its one change and replaces the
/// file atomically, so two processes writing at once lose nothing of each other's keys, the last
/// complete write of a key wins, and the file is never left half-written. A file that can't be
/// read as JSON is reported once to the system log and treated as empty; it is kept aside as
/// "<file>.corrupt" before the next write replaces it.
class UserDefaults {
public:
    /// The store at `Files::velmoHome() / "defaults.json"`, resolved at first use.
    static UserDefaults& standardUserDefaults();

    explicit UserDefaults(std::filesystem::path file);

    /// The value under the key, or nil.
    Value objectForKey(std::string_view key);
    /// setObject:forKey: — nil removes the key. Returns false when the file couldn't be written.
    bool setObject(const Value& value, std::string_view key);
    bool removeObjectForKey(std::string_view key) { return setObject(Value(), key); }
    /// Writes go through at once; kept for callers that flush.
    bool synchronize() { return true; }

    const std::filesystem::path& file() const { return file_; }

private:
    Dictionary load();

    std::filesystem::path file_;
    std::mutex mutex_;
    bool reportedCorrupt_ = false;
    bool corrupt_ = false;
};

} // namespace velmo
