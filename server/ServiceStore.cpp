#include "server/ServiceStore.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>
#include <fmt/format.h>

#include "server/ServiceError.h"
#include "velmo/foundation/Crypto.h"
#include "velmo/foundation/DateFormatter.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/Uuid.h"

namespace velmo::server {

namespace {

constexpr std::size_t kTokenBytes = 32;

std::string now() {
    return DateFormatter().stringFromDate(std::chrono::system_clock::now());
}

std::string newId() {
    return Uuid::lowercaseString();
}

std::string tokenHash(std::string_view token) {
    return Crypto::hex(Crypto::sha256(token));
}

Value textOrNull(const SQLite::Column& column) {
    return column.isNull() ? Value::null() : Value(column.getString());
}

// The columns every project record is read from, in the order `projectRecord` reads them.
constexpr const char* kProjectColumns =
    "p.id, p.name, p.team_id, p.owner_id, p.slug, p.version, p.is_private, p.is_published, "
    "p.live_project_release_id, p.live_release_version, p.latest_release_version, "
    "p.latest_release_short_id, p.created_at, p.updated_at";

// A project as the service sends it. Besides the keys the flows read ("id", "name", "team",
// absent for a personal project), every key a document's metadata is filled from is there,
// null where the service keeps nothing: filling skips no key, so a missing one would blank it.
Dictionary projectRecord(SQLite::Statement& row) {
    Dictionary record = Dictionary::create(36);
    record.set("id", Value(row.getColumn(0).getString()));
    record.set("name", Value(row.getColumn(1).getString()));
    if (!row.getColumn(2).isNull()) record.set("team", Value(row.getColumn(2).getString()));
    record.set("owner", Value(row.getColumn(3).getString()));
    record.set("slug", Value(row.getColumn(4).getString()));
    record.set("version", Value(row.getColumn(5).getString()));
    record.set("is_private", Value(row.getColumn(6).getInt() != 0));
    record.set("is_published", Value(row.getColumn(7).getInt() != 0));
    record.set("is_custom_slug", Value(false));
    record.set("is_white_label", Value(false));
    record.set("is_portfolio", Value(false));
    record.set("is_meta_enabled_facebook", Value(false));
    record.set("is_meta_enabled_twitter", Value(false));
    record.set("live_project_release", textOrNull(row.getColumn(8)));
    record.set("live_release_version", Value(row.getColumn(9).getInt64()));
    record.set("latest_release_version", Value(row.getColumn(10).getInt64()));
    record.set("latest_release_short_id", textOrNull(row.getColumn(11)));
    record.set("assets_file_version", Value(0));
    for (const char* key : {"assets_file_url", "github_repo_name", "github_repo_owner", "sketch_page_id",
                            "domain", "meta_title", "meta_description", "meta_language", "meta_image_url",
                            "meta_favicon_url", "folder_path", "promotion", "analytics_snippet"})
        record.set(key, Value::null());
    record.set("created_at", Value(row.getColumn(12).getString()));
    record.set("updated_at", Value(row.getColumn(13).getString()));
    return record;
}

Array projectRecords(SQLite::Statement& query) {
    Array records = Array::create();
    while (query.executeStep())
        records.push_back(Value(projectRecord(query)));
    return records;
}

Dictionary readProject(SQLite::Database& db, const std::string& projectId) {
    SQLite::Statement query(db, fmt::format("SELECT {} FROM projects p WHERE p.id = ?", kProjectColumns));
    query.bind(1, projectId);
    if (!query.executeStep())
        throw ServiceError::notFound(fmt::format("No project has the id \"{}\"", projectId));
    return projectRecord(query);
}

bool isMember(SQLite::Database& db, const std::string& userId, const std::string& teamId) {
    SQLite::Statement query(db, "SELECT 1 FROM memberships WHERE team_id = ? AND user_id = ?");
    SQLite::bind(query, teamId, userId);
    return query.executeStep();
}

/// A team the user may act in: 404 when there is no such team, 403 when they aren't in it.
std::string requireTeam(SQLite::Database& db, const ServiceUser& user, const std::string& teamId) {
    SQLite::Statement query(db, "SELECT name FROM teams WHERE id = ?");
    query.bind(1, teamId);
    if (!query.executeStep()) throw ServiceError::notFound(fmt::format("No team has the id \"{}\"", teamId));
    if (!isMember(db, user.id, teamId))
        throw ServiceError::forbidden(fmt::format("You are not a member of the team \"{}\"", teamId));
    return query.getColumn(0).getString();
}

/// A project the user may see: their own, or one of a team of theirs. Its team, if it has one.
std::optional<std::string> requireProject(SQLite::Database& db, const ServiceUser& user,
                                          const std::string& projectId) {
    SQLite::Statement query(db, "SELECT team_id, owner_id FROM projects WHERE id = ?");
    query.bind(1, projectId);
    if (!query.executeStep())
        throw ServiceError::notFound(fmt::format("No project has the id \"{}\"", projectId));
    std::optional<std::string> team;
    if (!query.getColumn(0).isNull()) team = query.getColumn(0).getString();
    const bool allowed = team ? isMember(db, user.id, *team) : query.getColumn(1).getString() == user.id;
    if (!allowed) throw ServiceError::forbidden(fmt::format("The project \"{}\" is not yours", projectId));
    return team;
}

/// Where a project's name must be unique: its team, or its owner's own projects.
std::string scopeOf(const std::optional<std::string>& teamId, const ServiceUser& user) {
    return teamId ? fmt::format("team:{}", *teamId) : fmt::format("user:{}", user.id);
}

/// The projects of a scope, in the order they were made.
Array projectsIn(SQLite::Database& db, const std::string& scope) {
    SQLite::Statement query(
        db, fmt::format("SELECT {} FROM projects p WHERE p.scope = ? ORDER BY p.rowid", kProjectColumns));
    query.bind(1, scope);
    return projectRecords(query);
}

/// A project name no other project of the scope has; `exceptId` is the project being renamed.
void requireNameFree(SQLite::Database& db, const std::string& scope, bool teamScope, const std::string& name,
                     const std::string& exceptId = {}) {
    SQLite::Statement taken(db, "SELECT 1 FROM projects WHERE scope = ? AND name = ? AND id <> ?");
    SQLite::bind(taken, scope, name, exceptId);
    if (!taken.executeStep()) return;
    throw ServiceError::conflict("name_taken", teamScope
                                                   ? fmt::format("The team has a project named \"{}\"", name)
                                                   : fmt::format("You have a project named \"{}\"", name));
}

void requireProjectExists(SQLite::Database& db, const std::string& projectId) {
    SQLite::Statement query(db, "SELECT 1 FROM projects WHERE id = ?");
    query.bind(1, projectId);
    if (!query.executeStep())
        throw ServiceError::notFound(fmt::format("No project has the id \"{}\"", projectId));
}

/// The name's words in lower case, joined by "-": the project's address on the hosted site.
std::string slugOf(std::string_view name) {
    std::string slug;
    for (const char c : name) {
        const bool alnum = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        if (alnum || (c >= 'A' && c <= 'Z')) {
            slug += alnum ? c : static_cast<char>(c - 'A' + 'a');
        } else if (!slug.empty() && slug.back() != '-') {
            slug += '-';
        }
    }
    // Cut first, so that the cut never leaves a trailing "-".
    slug.resize(std::min<std::size_t>(slug.size(), 60));
    while (!slug.empty() && slug.back() == '-')
        slug.pop_back();
    return slug.empty() ? "project" : slug;
}

bool slugTaken(SQLite::Database& db, const std::string& slug) {
    SQLite::Statement query(db, "SELECT 1 FROM projects WHERE slug = ?");
    query.bind(1, slug);
    return query.executeStep();
}

Dictionary teamRecord(const std::string& id, const std::string& name, const std::string& createdAt) {
    return Dictionary{{"id", Value(id)}, {"name", Value(name)}, {"created_at", Value(createdAt)}};
}

/// The database file in the data folder, made with its parents when missing.
std::filesystem::path databaseFile(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    return folder / ServiceStore::kFileName;
}

} // namespace

ServiceStore::ServiceStore(const std::filesystem::path& folder, std::size_t connections,
                           std::size_t maxEvents)
    : database_(databaseFile(folder), connections), maxEvents_(maxEvents) {}

ServiceStore::NewToken ServiceStore::addUser(const std::string& email, const std::string& name,
                                             const TokenHandOver& handOver) {
    const std::string token = Crypto::hex(Crypto::randomBytes(kTokenBytes));
    return database_.write([&](SQLite::Database& db) {
        NewToken result;
        SQLite::Statement find(db, "SELECT id, email, name FROM users WHERE email = ?");
        find.bind(1, email);
        if (find.executeStep()) {
            result.user = {find.getColumn(0).getString(), find.getColumn(1).getString(),
                           find.getColumn(2).getString()};
        } else {
            result.user = {newId(), email, name};
            result.createdUser = true;
            SQLite::Statement insert(db,
                                     "INSERT INTO users (id, email, name, created_at) VALUES (?, ?, ?, ?)");
            SQLite::bind(insert, result.user.id, email, name, now());
            insert.exec();
        }
        SQLite::Statement insert(db, "INSERT INTO tokens (hash, user_id, created_at) VALUES (?, ?, ?)");
        SQLite::bind(insert, tokenHash(token), result.user.id, now());
        insert.exec();
        result.token = token;
        if (handOver && !handOver(result))
            throw std::runtime_error("the token could not be shown, so no user or token was added");
        return result;
    });
}

Dictionary ServiceStore::addTeam(const std::string& name, const std::vector<std::string>& memberEmails,
                                 bool& created) {
    return database_.write([&](SQLite::Database& db) {
        std::string id;
        std::string createdAt;
        SQLite::Statement find(db, "SELECT id, created_at FROM teams WHERE name = ?");
        find.bind(1, name);
        created = !find.executeStep();
        if (created) {
            id = newId();
            createdAt = now();
            SQLite::Statement insert(db, "INSERT INTO teams (id, name, created_at) VALUES (?, ?, ?)");
            SQLite::bind(insert, id, name, createdAt);
            insert.exec();
        } else {
            id = find.getColumn(0).getString();
            createdAt = find.getColumn(1).getString();
        }
        SQLite::Statement user(db, "SELECT id FROM users WHERE email = ?");
        SQLite::Statement insert(db, "INSERT OR IGNORE INTO memberships (id, team_id, user_id, created_at) "
                                     "VALUES (?, ?, ?, ?)");
        for (const std::string& email : memberEmails) {
            user.reset();
            user.bind(1, email);
            if (!user.executeStep())
                throw ServiceError::notFound(
                    fmt::format("No user has the address \"{}\" (add it with --add-user)", email));
            insert.reset();
            SQLite::bind(insert, newId(), id, user.getColumn(0).getString(), now());
            insert.exec();
        }
        return teamRecord(id, name, createdAt);
    });
}

std::size_t ServiceStore::addFonts(const std::vector<std::string>& names) {
    return database_.write([&](SQLite::Database& db) {
        std::size_t added = 0;
        SQLite::Statement insert(db, "INSERT OR IGNORE INTO fonts (name, added_at) VALUES (?, ?)");
        for (const std::string& name : names) {
            SQLite::bind(insert, name, now());
            added += static_cast<std::size_t>(insert.exec());
            insert.reset();
        }
        return added;
    });
}

Dictionary ServiceStore::createRelease(const std::string& projectId) {
    return database_.write([&](SQLite::Database& db) {
        requireProjectExists(db, projectId);
        SQLite::Statement next(db, "SELECT COALESCE(MAX(version), 0) + 1 FROM releases WHERE project_id = ?");
        next.bind(1, projectId);
        next.executeStep();
        const std::int64_t version = next.getColumn(0).getInt64();
        const std::string id = newId();
        const std::string shortId = Crypto::hex(Crypto::randomBytes(6));
        const std::string createdAt = now();
        SQLite::Statement insert(
            db,
            "INSERT INTO releases (id, project_id, version, short_id, created_at) VALUES (?, ?, ?, ?, ?)");
        SQLite::bind(insert, id, projectId, version, shortId, createdAt);
        insert.exec();
        SQLite::Statement update(
            db, "UPDATE projects SET latest_release_version = ?, latest_release_short_id = ?, "
                "updated_at = ? WHERE id = ?");
        SQLite::bind(update, version, shortId, createdAt, projectId);
        update.exec();
        return Dictionary{{"id", Value(id)},
                          {"project", Value(projectId)},
                          {"version", Value(version)},
                          {"short_id", Value(shortId)},
                          {"created_at", Value(createdAt)}};
    });
}

Array ServiceStore::events(std::size_t limit) {
    return database_.read([&](SQLite::Database& db) {
        SQLite::Statement query(db,
                                "SELECT seq, kind, name, client_id, user_id, user_email, body, received_at "
                                "FROM events WHERE seq > (SELECT COALESCE(MAX(seq), 0) FROM events) - ? "
                                "ORDER BY seq");
        query.bind(1, static_cast<std::int64_t>(limit == 0 ? INT64_MAX / 2 : limit));
        Array events = Array::create();
        while (query.executeStep()) {
            Dictionary event = Dictionary::create(8);
            event.set("seq", Value(query.getColumn(0).getInt64()));
            event.set("kind", Value(query.getColumn(1).getString()));
            event.set("name", textOrNull(query.getColumn(2)));
            event.set("client_id", textOrNull(query.getColumn(3)));
            event.set("user_id", textOrNull(query.getColumn(4)));
            event.set("user_email", textOrNull(query.getColumn(5)));
            // Stored as JSON; a body that no longer reads as JSON shows as text rather than not at all.
            const std::string body = query.getColumn(6).getString();
            const Value parsed = Json::tryParse(body);
            event.set("body", parsed.isNil() ? Value(body) : parsed);
            event.set("received_at", Value(query.getColumn(7).getString()));
            events.push_back(Value(event));
        }
        return events;
    });
}

std::optional<ServiceUser> ServiceStore::userForToken(std::string_view token) {
    return database_.read([&](SQLite::Database& db) -> std::optional<ServiceUser> {
        SQLite::Statement query(db,
                                "SELECT u.id, u.email, u.name FROM tokens t JOIN users u ON u.id = t.user_id "
                                "WHERE t.hash = ?");
        query.bind(1, tokenHash(token));
        if (!query.executeStep()) return std::nullopt;
        return ServiceUser{query.getColumn(0).getString(), query.getColumn(1).getString(),
                           query.getColumn(2).getString()};
    });
}

Dictionary ServiceStore::userRecord(const ServiceUser& user) {
    return Dictionary{{"id", Value(user.id)}, {"email", Value(user.email)}, {"name", Value(user.name)}};
}

Array ServiceStore::memberships(const ServiceUser& user) {
    return database_.read([&](SQLite::Database& db) {
        SQLite::Statement query(db, "SELECT m.id, m.team_id, t.name, m.role, m.created_at FROM memberships m "
                                    "JOIN teams t ON t.id = m.team_id WHERE m.user_id = ? ORDER BY m.rowid");
        query.bind(1, user.id);
        Array results = Array::create();
        while (query.executeStep()) {
            results.push_back(Value(Dictionary{{"id", Value(query.getColumn(0).getString())},
                                               {"team", Value(query.getColumn(1).getString())},
                                               {"team_name", Value(query.getColumn(2).getString())},
                                               {"user", Value(user.id)},
                                               {"role", Value(query.getColumn(3).getString())},
                                               {"created_at", Value(query.getColumn(4).getString())}}));
        }
        return results;
    });
}

Array ServiceStore::teamProjects(const ServiceUser& user, const std::string& teamId) {
    return database_.read([&](SQLite::Database& db) {
        requireTeam(db, user, teamId);
        return projectsIn(db, scopeOf(teamId, user));
    });
}

Array ServiceStore::personalProjects(const ServiceUser& user) {
    return database_.read([&](SQLite::Database& db) { return projectsIn(db, scopeOf(std::nullopt, user)); });
}

Dictionary ServiceStore::createProject(const ServiceUser& user, const std::optional<std::string>& teamId,
                                       const std::string& name) {
    return database_.write([&](SQLite::Database& db) {
        if (teamId) requireTeam(db, user, *teamId);
        const std::string scope = scopeOf(teamId, user);
        requireNameFree(db, scope, teamId.has_value(), name);
        const std::string id = newId();
        // Same names in other scopes share the base: the project's own id tells them apart in one step.
        std::string slug = slugOf(name);
        if (slugTaken(db, slug)) slug.append("-").append(id, 0, 8);
        const std::string createdAt = now();
        SQLite::Statement insert(
            db, "INSERT INTO projects (id, name, team_id, owner_id, scope, slug, created_at, "
                "updated_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
        SQLite::bind(insert, id, name);
        if (teamId) insert.bind(3, *teamId);
        insert.bind(4, user.id);
        insert.bind(5, scope);
        insert.bind(6, slug);
        insert.bind(7, createdAt);
        insert.bind(8, createdAt);
        insert.exec();
        return readProject(db, id);
    });
}

Dictionary ServiceStore::project(const ServiceUser& user, const std::string& projectId) {
    return database_.read([&](SQLite::Database& db) {
        requireProject(db, user, projectId);
        return readProject(db, projectId);
    });
}

Dictionary ServiceStore::updateProject(const ServiceUser& user, const std::string& projectId,
                                       const Dictionary& changes) {
    return database_.write([&](SQLite::Database& db) {
        const std::optional<std::string> team = requireProject(db, user, projectId);
        const std::string updatedAt = now();
        if (const Value* name = changes.find("name")) {
            requireNameFree(db, scopeOf(team, user), team.has_value(), name->str(), projectId);
            SQLite::Statement update(db, "UPDATE projects SET name = ?, updated_at = ? WHERE id = ?");
            SQLite::bind(update, name->str(), updatedAt, projectId);
            update.exec();
        }
        if (const Value* live = changes.find("live_project_release")) {
            const std::string liveId = live->str();
            SQLite::Statement find(db, "SELECT r.version FROM project_releases pr JOIN releases r "
                                       "ON r.id = pr.release_id WHERE pr.id = ? AND pr.project_id = ?");
            SQLite::bind(find, liveId, projectId);
            if (!find.executeStep()) {
                throw ServiceError::invalidField(
                    "live_project_release", fmt::format("names \"{}\", no release of this project", liveId));
            }
            SQLite::Statement update(
                db, "UPDATE projects SET live_project_release_id = ?, live_release_version = ?, "
                    "is_published = 1, updated_at = ? WHERE id = ?");
            SQLite::bind(update, liveId, find.getColumn(0).getInt64(), updatedAt, projectId);
            update.exec();
        }
        return readProject(db, projectId);
    });
}

Dictionary ServiceStore::createProjectRelease(const ServiceUser& user, const std::string& projectId,
                                              const std::string& releaseId) {
    return database_.write([&](SQLite::Database& db) {
        requireProject(db, user, projectId);
        SQLite::Statement release(db, "SELECT version FROM releases WHERE id = ? AND project_id = ?");
        SQLite::bind(release, releaseId, projectId);
        if (!release.executeStep()) {
            throw ServiceError::invalidField(
                "release", fmt::format("names \"{}\", no release of this project", releaseId));
        }
        const std::string id = newId();
        const std::string createdAt = now();
        SQLite::Statement insert(
            db, "INSERT INTO project_releases (id, project_id, release_id, user_id, created_at) "
                "VALUES (?, ?, ?, ?, ?)");
        SQLite::bind(insert, id, projectId, releaseId, user.id, createdAt);
        insert.exec();
        return Dictionary{{"id", Value(id)},
                          {"project", Value(projectId)},
                          {"release", Value(releaseId)},
                          {"version", Value(release.getColumn(0).getInt64())},
                          {"created_at", Value(createdAt)}};
    });
}

Dictionary ServiceStore::addInstallation(const ServiceUser& user, const std::string& clientId,
                                         bool& created) {
    return database_.write([&](SQLite::Database& db) {
        const std::string seen = now();
        SQLite::Statement upsert(
            db, "INSERT INTO installations (id, user_id, client_id, created_at, last_seen_at) "
                "VALUES (?, ?, ?, ?, ?) ON CONFLICT (user_id, client_id) DO UPDATE SET "
                "last_seen_at = excluded.last_seen_at, reports = reports + 1");
        SQLite::bind(upsert, newId(), user.id, clientId, seen, seen);
        upsert.exec();
        SQLite::Statement query(db, "SELECT id, created_at, last_seen_at, reports FROM installations "
                                    "WHERE user_id = ? AND client_id = ?");
        SQLite::bind(query, user.id, clientId);
        query.executeStep();
        created = query.getColumn(3).getInt64() == 1;
        return Dictionary{{"id", Value(query.getColumn(0).getString())},
                          {"user", Value(user.id)},
                          {"client_id", Value(clientId)},
                          {"created_at", Value(query.getColumn(1).getString())},
                          {"last_seen_at", Value(query.getColumn(2).getString())},
                          {"reports", Value(query.getColumn(3).getInt64())}};
    });
}

Dictionary ServiceStore::addRating(const ServiceUser& user, const std::optional<RatingSubject>& subject,
                                   int rating, const std::string& comment) {
    return database_.write([&](SQLite::Database& db) {
        if (subject && subject->kind == "projects") {
            requireProject(db, user, subject->id);
        } else if (subject) {
            SQLite::Statement release(db, "SELECT project_id FROM releases WHERE id = ?");
            release.bind(1, subject->id);
            if (!release.executeStep())
                throw ServiceError::notFound(fmt::format("No release has the id \"{}\"", subject->id));
            requireProject(db, user, release.getColumn(0).getString());
        }
        const std::string id = newId();
        const std::string createdAt = now();
        SQLite::Statement insert(
            db, "INSERT INTO preview_ratings (id, user_id, subject_kind, subject_id, rating, "
                "comment, created_at) VALUES (?, ?, ?, ?, ?, ?, ?)");
        SQLite::bind(insert, id, user.id);
        if (subject) {
            insert.bind(3, subject->kind);
            insert.bind(4, subject->id);
        }
        insert.bind(5, rating);
        insert.bind(6, comment);
        insert.bind(7, createdAt);
        insert.exec();
        Dictionary record{{"id", Value(id)},
                          {"user", Value(user.id)},
                          {"rating", Value(rating)},
                          {"comment", Value(comment)},
                          {"created_at", Value(createdAt)}};
        if (subject) record.set(subject->kind == "projects" ? "project" : "release", Value(subject->id));
        return record;
    });
}

Dictionary ServiceStore::availableFonts(const std::vector<std::string>& names) {
    return database_.read([&](SQLite::Database& db) {
        SQLite::Statement query(db, "SELECT 1 FROM fonts WHERE name = ?");
        Dictionary results = Dictionary::create(names.size());
        for (const std::string& name : names) {
            query.bind(1, name);
            results.set(name, Value(query.executeStep() ? 1 : 0));
            query.reset();
        }
        return Dictionary{{"results", Value(results)}};
    });
}

void ServiceStore::addEvent(const std::string& kind, const Dictionary& identity, const std::string& body) {
    database_.write([&](SQLite::Database& db) {
        SQLite::Statement insert(db, "INSERT INTO events (kind, name, client_id, user_id, user_email, body, "
                                     "received_at) VALUES (?, ?, ?, ?, ?, ?, ?)");
        insert.bind(1, kind);
        int index = 2;
        for (const char* key : {"name", "client_id", "user_id", "user_email"}) {
            const Value& value = identity.get(key);
            if (value.isString()) insert.bind(index, value.str());
            ++index;
        }
        insert.bind(6, body);
        insert.bind(7, now());
        insert.exec();
        SQLite::Statement trim(db, "DELETE FROM events WHERE seq <= (SELECT MAX(seq) FROM events) - ?");
        trim.bind(1, static_cast<std::int64_t>(maxEvents_));
        trim.exec();
    });
}

} // namespace velmo::server
