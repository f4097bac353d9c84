#include "velmo/foundation/UserDefaults.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo {

namespace {

// Holds an exclusive advisory lock on "<file>.lock" while alive; writers of other processes wait.
class FileLock {
public:
    explicit FileLock(const std::filesystem::path& file) {
        std::error_code ec;
        std::filesystem::create_directories(file.parent_path(), ec);
        const std::string lockPath = file.string() + ".lock";
        fd_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd_ >= 0) {
            while (::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
            }
        }
    }
    ~FileLock() {
        if (fd_ >= 0) ::close(fd_);
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int fd_ = -1;
};

} // namespace

UserDefaults& UserDefaults::standardUserDefaults() {
    static UserDefaults* defaults = new UserDefaults(Files::velmoHome() / "defaults.json");
    return *defaults;
}

UserDefaults::UserDefaults(std::filesystem::path file) : file_(std::move(file)) {}

Dictionary UserDefaults::load() {
    corrupt_ = false;
    const auto text = Files::read(file_);
    if (!text) return Dictionary::create();
    JsonParseError error("", 0);
    const Value parsed = Json::tryParse(*text, Json::ReadOptions{}, &error);
    if (parsed.isDictionary()) return parsed.dictionary();
    corrupt_ = true;
    if (!reportedCorrupt_) {
        reportedCorrupt_ = true;
        SystemLog::log(fmt::format("User defaults at {} can't be read ({}); using empty defaults",
                                   file_.string(), parsed.isNil() ? error.what() : "not a dictionary"));
    }
    return Dictionary::create();
}

Value UserDefaults::objectForKey(std::string_view key) {
    std::lock_guard lock(mutex_);
    return load().get(key);
}

bool UserDefaults::setObject(const Value& value, std::string_view key) {
    std::lock_guard lock(mutex_);
    FileLock fileLock(file_);
    Dictionary all = load();
    if (corrupt_) {
        // Keep what can't be read, so nothing of it is lost to the rewrite.
        std::error_code ec;
        std::filesystem::copy_file(file_, file_.string() + ".corrupt",
                                   std::filesystem::copy_options::overwrite_existing, ec);
    }
    all.set(key, value.isNull() ? Value::null() : value);
    try {
        return Files::writeAtomically(file_, Json::write(Value(all), true), 0600);
    } catch (const JsonWriteError& e) {
        SystemLog::log(fmt::format("User defaults: the value for {} can't be stored: {}", key, e.what()));
        return false;
    }
}

} // namespace velmo
