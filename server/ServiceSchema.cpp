#include "server/ServiceSchema.h"

#include <stdexcept>

#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

namespace velmo::server {

namespace {

// Step N takes the schema from version N to N + 1. Steps are never edited once released: a
// change is a new step.
constexpr const char* kSteps[] = {
    // 0 -> 1: users and their tokens, teams, projects and their releases, what clients report.
    R"sql(
CREATE TABLE users (
    id TEXT PRIMARY KEY,
    email TEXT NOT NULL UNIQUE COLLATE NOCASE,
    name TEXT NOT NULL DEFAULT '',
    created_at TEXT NOT NULL
);
-- Only a SHA-256 of each token is kept: the token itself is shown once, when it is made.
CREATE TABLE tokens (
    hash TEXT PRIMARY KEY,
    user_id TEXT NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    created_at TEXT NOT NULL
);
CREATE TABLE teams (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL UNIQUE,
    created_at TEXT NOT NULL
);
CREATE TABLE memberships (
    id TEXT PRIMARY KEY,
    team_id TEXT NOT NULL REFERENCES teams(id) ON DELETE CASCADE,
    user_id TEXT NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    role TEXT NOT NULL DEFAULT 'member',
    created_at TEXT NOT NULL,
    UNIQUE (team_id, user_id)
);
CREATE INDEX memberships_by_user ON memberships(user_id);
-- A project belongs to a team, or to its owner alone (no team). Names are unique within that
-- scope: "team:<id>" or "user:<id>".
CREATE TABLE projects (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL,
    team_id TEXT REFERENCES teams(id),
    owner_id TEXT NOT NULL REFERENCES users(id),
    scope TEXT NOT NULL,
    slug TEXT NOT NULL UNIQUE,
    version TEXT NOT NULL DEFAULT '1.0',
    is_private INTEGER NOT NULL DEFAULT 1,
    is_published INTEGER NOT NULL DEFAULT 0,
    live_project_release_id TEXT,
    live_release_version INTEGER NOT NULL DEFAULT 0,
    latest_release_version INTEGER NOT NULL DEFAULT 0,
    latest_release_short_id TEXT,
    created_at TEXT NOT NULL,
    updated_at TEXT NOT NULL,
    UNIQUE (scope, name)
);
CREATE INDEX projects_by_scope ON projects(scope);
CREATE TABLE releases (
    id TEXT PRIMARY KEY,
    project_id TEXT NOT NULL REFERENCES projects(id) ON DELETE CASCADE,
    version INTEGER NOT NULL,
    short_id TEXT NOT NULL UNIQUE,
    created_at TEXT NOT NULL,
    UNIQUE (project_id, version)
);
CREATE TABLE project_releases (
    id TEXT PRIMARY KEY,
    project_id TEXT NOT NULL REFERENCES projects(id) ON DELETE CASCADE,
    release_id TEXT NOT NULL REFERENCES releases(id) ON DELETE CASCADE,
    user_id TEXT NOT NULL REFERENCES users(id),
    created_at TEXT NOT NULL
);
CREATE INDEX project_releases_by_project ON project_releases(project_id);
CREATE TABLE installations (
    id TEXT PRIMARY KEY,
    user_id TEXT NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    client_id TEXT NOT NULL,
    created_at TEXT NOT NULL,
    last_seen_at TEXT NOT NULL,
    reports INTEGER NOT NULL DEFAULT 1,
    UNIQUE (user_id, client_id)
);
-- A rating is about a project, a release, or the preview in general (no subject).
CREATE TABLE preview_ratings (
    id TEXT PRIMARY KEY,
    user_id TEXT NOT NULL REFERENCES users(id) ON DELETE CASCADE,
    subject_kind TEXT CHECK (subject_kind IN ('projects', 'releases')),
    subject_id TEXT,
    rating INTEGER NOT NULL,
    comment TEXT NOT NULL,
    created_at TEXT NOT NULL
);
-- The font families the service can serve itself, filled by the operator.
CREATE TABLE fonts (
    name TEXT PRIMARY KEY COLLATE NOCASE,
    added_at TEXT NOT NULL
);
-- Logging lines and analytics events, kept up to a bound: the oldest go first.
CREATE TABLE events (
    seq INTEGER PRIMARY KEY AUTOINCREMENT,
    kind TEXT NOT NULL,
    name TEXT,
    client_id TEXT,
    user_id TEXT,
    user_email TEXT,
    body TEXT NOT NULL,
    received_at TEXT NOT NULL
);
)sql",
};

constexpr int kStepCount = static_cast<int>(std::size(kSteps));

} // namespace

int ServiceSchema::currentVersion() {
    return kStepCount;
}

void ServiceSchema::migrate(SQLite::Database& db) {
    for (;;) {
        SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
        // Read inside the write transaction: two processes opening one folder migrate once.
        const int version = db.execAndGet("PRAGMA user_version").getInt();
        if (version > kStepCount) {
            throw std::runtime_error(fmt::format(
                "the data was written by a newer velmo (schema version {}; this one knows up to {})", version,
                kStepCount));
        }
        if (version == kStepCount) return;
        db.exec(kSteps[version]);
        db.exec(fmt::format("PRAGMA user_version = {}", version + 1));
        transaction.commit();
    }
}

} // namespace velmo::server
