#include "server/ServiceDatabase.h"

#include "server/ServiceSchema.h"

namespace velmo::server {

namespace {

// How long a writer waits for another writer before it gives up with "database is locked".
constexpr int kBusyTimeoutMs = 10000;

} // namespace

ServiceDatabase::ServiceDatabase(const std::filesystem::path& file, std::size_t connections)
    : file_(file), capacity_(connections == 0 ? 1 : connections) {
    auto first = open();
    // WAL is a property of the file, kept across opens; it must be set outside a transaction.
    first->exec("PRAGMA journal_mode = WAL");
    ServiceSchema::migrate(*first);
    idle_.push_back(std::move(first));
    opened_ = 1;
}

ServiceDatabase::~ServiceDatabase() = default;

std::unique_ptr<SQLite::Database> ServiceDatabase::open() const {
    auto db = std::make_unique<SQLite::Database>(
        file_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_NOMUTEX, kBusyTimeoutMs);
    db->exec("PRAGMA foreign_keys = ON");
    // In WAL, NORMAL loses nothing when the process dies; only a power cut can take the last
    // commits, and never corrupts the file.
    db->exec("PRAGMA synchronous = NORMAL");
    return db;
}

ServiceDatabase::Lease ServiceDatabase::lease() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (!idle_.empty()) {
            auto db = std::move(idle_.back());
            idle_.pop_back();
            return Lease(*this, std::move(db));
        }
        if (opened_ < capacity_) {
            ++opened_;
            lock.unlock();
            try {
                return Lease(*this, open());
            } catch (...) {
                lock.lock();
                --opened_;
                throw;
            }
        }
        returned_.wait(lock);
    }
}

void ServiceDatabase::giveBack(std::unique_ptr<SQLite::Database> db) {
    {
        std::lock_guard lock(mutex_);
        idle_.push_back(std::move(db));
    }
    returned_.notify_one();
}

ServiceDatabase::Lease::Lease(ServiceDatabase& owner, std::unique_ptr<SQLite::Database> db)
    : owner_(owner), db_(std::move(db)) {}

ServiceDatabase::Lease::~Lease() {
    if (db_) owner_.giveBack(std::move(db_));
}

} // namespace velmo::server
