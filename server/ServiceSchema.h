#pragma once

#include <SQLiteCpp/Database.h>

namespace velmo::server {

/// The service's tables. The version lives in the database's `PRAGMA user_version`; each step
/// takes a database from one version to the next, so a data folder of any older velmo opens in
/// a newer one. A folder written by a newer velmo is refused rather than guessed at.
class ServiceSchema {
public:
    /// The version this build writes.
    static int currentVersion();
    /// Brings the database up to `currentVersion()`, each step in its own transaction. Throws
    /// std::runtime_error for a database newer than this build.
    static void migrate(SQLite::Database& db);
};

} // namespace velmo::server
