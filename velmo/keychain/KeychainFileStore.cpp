#include "velmo/keychain/KeychainFileStore.h"

#include <algorithm>
#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "velmo/foundation/Base64.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/keychain/VPKeychainErrors.h"

namespace velmo {

namespace fs = std::filesystem;

namespace {

constexpr int kPrivateMode = 0600;

double secondsOf(Date date) {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

Date dateOf(double seconds) {
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::duration<double>(seconds)));
}

KeychainMatch exactly(const KeychainItem& item) {
    return {item.service, item.account, item.accessGroup};
}

} // namespace

/// An exclusive lock on "<store>.lock" for one read-change-write.
class KeychainFileStore::Lock {
public:
    explicit Lock(const fs::path& store) {
        std::error_code ec;
        fs::create_directories(store.parent_path(), ec);
        fd_ = ::open((store.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivateMode);
        while (fd_ >= 0 && ::flock(fd_, LOCK_EX) != 0) {
            if (errno == EINTR) continue;
            ::close(fd_);
            fd_ = -1;
        }
    }
    ~Lock() {
        if (fd_ >= 0) ::close(fd_);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    bool held() const { return fd_ >= 0; }

private:
    int fd_ = -1;
};

KeychainFileStore::KeychainFileStore(fs::path path) : path_(std::move(path)) {}

KeychainStatus KeychainFileStore::load(std::vector<KeychainItem>& items) const {
    items.clear();
    std::error_code ec;
    if (!fs::exists(path_, ec)) return {};
    const auto unreadable = [this] {
        return KeychainStatus::failure(
            kVPKeychainErrorDecode,
            fmt::format("The secret store file {} could not be read.", path_.string()));
    };
    const auto text = Files::read(path_);
    if (!text) return unreadable();
    const Value root = Json::tryParse(*text);
    if (!root.isDictionary()) return unreadable();
    for (const Value& entry : root.dictionary().get("items").array()) {
        const Dictionary fields = entry.dictionary();
        const auto data = Base64::decode(fields.get("data").stringView());
        if (fields.isNil() || !data) return unreadable();
        KeychainItem item;
        item.service = fields.get("svce").str();
        item.account = fields.get("acct").str();
        item.label = fields.get("labl").str();
        item.accessGroup = fields.get("agrp").str();
        item.data = *data;
        item.created = dateOf(fields.get("cdat").doubleValue());
        item.modified = dateOf(fields.get("mdat").doubleValue());
        items.push_back(std::move(item));
    }
    return {};
}

KeychainStatus KeychainFileStore::save(const std::vector<KeychainItem>& items) const {
    Array list = Array::create(items.size());
    for (const auto& item : items) {
        list.push_back(Dictionary{{"svce", Value(item.service)},
                                  {"acct", Value(item.account)},
                                  {"labl", Value(item.label)},
                                  {"agrp", Value(item.accessGroup)},
                                  {"cdat", Value(secondsOf(item.created))},
                                  {"mdat", Value(secondsOf(item.modified))},
                                  {"data", Value(Base64::encode(item.data.value_or(std::string())))}});
    }
    if (!Files::writeAtomically(path_, Json::write(Dictionary{{"items", Value(list)}}, true), kPrivateMode)) {
        return KeychainStatus::failure(
            kVPKeychainErrorNotAvailable,
            fmt::format("The secret store file {} could not be written.", path_.string()));
    }
    return {};
}

KeychainStatus KeychainFileStore::find(const KeychainMatch& match, bool withData, KeychainItem& item) {
    std::vector<KeychainItem> found;
    const KeychainStatus status = findAll(match, found);
    if (!status.ok()) return status;
    item = std::move(found.front());
    if (!withData) item.data.reset();
    return {};
}

KeychainStatus KeychainFileStore::findAll(const KeychainMatch& match, std::vector<KeychainItem>& items) {
    std::lock_guard guard(mutex_);
    Lock lock(path_);
    std::vector<KeychainItem> all;
    if (KeychainStatus status = load(all); !status.ok()) return status;
    items.clear();
    std::copy_if(all.begin(), all.end(), std::back_inserter(items),
                 [&match](const KeychainItem& item) { return match.matches(item); });
    if (items.empty()) return KeychainStatus::failure(kVPKeychainErrorItemNotFound);
    return {};
}

KeychainStatus KeychainFileStore::add(const KeychainItem& item) {
    return change([&item](std::vector<KeychainItem>& items) {
        const KeychainMatch same = exactly(item);
        if (std::any_of(items.begin(), items.end(),
                        [&same](const KeychainItem& i) { return same.matches(i); })) {
            return KeychainStatus::failure(kVPKeychainErrorDuplicateItem);
        }
        KeychainItem added = item;
        added.created = added.modified = std::chrono::system_clock::now();
        items.push_back(std::move(added));
        return KeychainStatus();
    });
}

KeychainStatus KeychainFileStore::update(const KeychainMatch& match, std::string_view data) {
    return change([&match, data](std::vector<KeychainItem>& items) {
        bool changed = false;
        for (auto& item : items) {
            if (!match.matches(item)) continue;
            item.data = std::string(data);
            item.modified = std::chrono::system_clock::now();
            changed = true;
        }
        return changed ? KeychainStatus() : KeychainStatus::failure(kVPKeychainErrorItemNotFound);
    });
}

KeychainStatus KeychainFileStore::remove(const KeychainMatch& match) {
    return change([&match](std::vector<KeychainItem>& items) {
        const auto found = std::find_if(items.begin(), items.end(),
                                        [&match](const KeychainItem& item) { return match.matches(item); });
        if (found == items.end()) return KeychainStatus::failure(kVPKeychainErrorItemNotFound);
        items.erase(found);
        return KeychainStatus();
    });
}

KeychainStatus
KeychainFileStore::change(const std::function<KeychainStatus(std::vector<KeychainItem>&)>& edit) {
    std::lock_guard guard(mutex_);
    Lock lock(path_);
    if (!lock.held()) return KeychainStatus::failure(kVPKeychainErrorNotAvailable);
    std::vector<KeychainItem> items;
    if (KeychainStatus status = load(items); !status.ok()) return status;
    if (KeychainStatus status = edit(items); !status.ok()) return status;
    return save(items);
}

} // namespace velmo
