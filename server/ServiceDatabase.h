#pragma once

#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Transaction.h>

namespace velmo::server {

/// The service's SQLite file and a bounded pool of connections to it, one per worker at most:
/// SQLite serves each connection on one thread at a time, and WAL lets the readers go on while
/// one writer writes. Every write is one IMMEDIATE transaction, so two writers never deadlock
/// on upgrading a read lock; a busy database is waited for rather than failed.
class ServiceDatabase {
public:
    /// Opens (creating when missing) the file, switches it to WAL and migrates it. Throws
    /// SQLite::Exception or std::runtime_error with the reason when it can't.
    ServiceDatabase(const std::filesystem::path& file, std::size_t connections);
    ~ServiceDatabase();
    ServiceDatabase(const ServiceDatabase&) = delete;
    ServiceDatabase& operator=(const ServiceDatabase&) = delete;

    /// A connection of the pool, back in it when the lease ends.
    class Lease {
    public:
        Lease(ServiceDatabase& owner, std::unique_ptr<SQLite::Database> db);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        SQLite::Database& db() { return *db_; }

    private:
        ServiceDatabase& owner_;
        std::unique_ptr<SQLite::Database> db_;
    };

    /// Waits for a free connection when all are out.
    Lease lease();

    /// Runs `work` with a connection, without a transaction of its own: a read.
    template <class Work> auto read(Work&& work) {
        Lease lease = this->lease();
        return work(lease.db());
    }

    /// Runs `work` in a write transaction, committed when it returns and rolled back when it throws.
    /// Writers of this process take turns here: SQLite has one writer at a time anyway, and its own
    /// wait for a busy database sleeps in steps of up to 100 ms, which only other processes (the
    /// operator's commands) should ever meet.
    template <class Work> auto write(Work&& work) {
        Lease lease = this->lease();
        std::lock_guard turn(writeTurn_);
        SQLite::Transaction transaction(lease.db(), SQLite::TransactionBehavior::IMMEDIATE);
        if constexpr (std::is_void_v<decltype(work(lease.db()))>) {
            work(lease.db());
            transaction.commit();
        } else {
            auto result = work(lease.db());
            transaction.commit();
            return result;
        }
    }

    const std::filesystem::path& file() const { return file_; }

private:
    std::unique_ptr<SQLite::Database> open() const;
    void giveBack(std::unique_ptr<SQLite::Database> db);

    std::filesystem::path file_;
    std::size_t capacity_;
    std::mutex writeTurn_;
    std::mutex mutex_;
    std::condition_variable returned_;
    std::vector<std::unique_ptr<SQLite::Database>> idle_;
    std::size_t opened_ = 0;
};

} // namespace velmo::server
