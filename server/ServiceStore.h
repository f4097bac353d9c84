#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/ServiceDatabase.h"
#include "velmo/foundation/Value.h"

namespace velmo::server {

/// A user of the service, as a token names them.
struct ServiceUser {
    std::string id;
    std::string email;
    std::string name;
};

/// What a rating is about: a project, a release, or nothing (the preview in general).
struct RatingSubject {
    std::string kind; ///< "projects" or "releases"
    std::string id;
};

/// The service's state and its rules: who may see what, the records the calls answer with, and
/// every change in one transaction. Refusals are `ServiceError`s, with the status to answer.
///
/// Records are dictionaries in the service's wire form. A project record carries every key that
/// a document's metadata is filled from, null where the service keeps no value, since a missing
/// key would blank the document's field.
class ServiceStore {
public:
    /// The store in `folder`/service.sqlite; the folder is made when missing.
    ServiceStore(const std::filesystem::path& folder, std::size_t connections, std::size_t maxEvents);

    static constexpr std::string_view kFileName = "service.sqlite";

    // The operator's side.

    struct NewToken {
        ServiceUser user;
        std::string token;
        bool createdUser = false;
    };
    /// Shows a new token to whoever asked for it; false when it couldn't.
    using TokenHandOver = std::function<bool(const NewToken&)>;
    /// Creates the user when the address is new, and gives them a new token in both cases. The
    /// token is in the answer only; the store keeps its SHA-256. A token is shown only once, so
    /// `handOver` runs before the change is kept: when it fails, nothing is added, and
    /// std::runtime_error says so.
    NewToken addUser(const std::string& email, const std::string& name, const TokenHandOver& handOver = {});
    /// Creates the team when no team has that name, and adds the members (addresses of known
    /// users). Answers the team's record; `created` tells whether it is new.
    Dictionary addTeam(const std::string& name, const std::vector<std::string>& memberEmails, bool& created);
    /// Adds font families to those the service serves; answers how many were new.
    std::size_t addFonts(const std::vector<std::string>& names);
    /// A release of a project, as an upload of it makes one: the next version number.
    Dictionary createRelease(const std::string& projectId);
    /// The kept logging lines and events, oldest first: the last `limit` of them (all with 0).
    Array events(std::size_t limit = 0);

    // The calls.

    std::optional<ServiceUser> userForToken(std::string_view token);
    Dictionary userRecord(const ServiceUser& user);
    Array memberships(const ServiceUser& user);
    Array teamProjects(const ServiceUser& user, const std::string& teamId);
    Array personalProjects(const ServiceUser& user);
    /// In the team, or the user's own without one.
    Dictionary createProject(const ServiceUser& user, const std::optional<std::string>& teamId,
                             const std::string& name);
    Dictionary project(const ServiceUser& user, const std::string& projectId);
    /// "name" and "live_project_release" ({"type": "project_releases", "id"}) may change.
    Dictionary updateProject(const ServiceUser& user, const std::string& projectId,
                             const Dictionary& changes);
    Dictionary createProjectRelease(const ServiceUser& user, const std::string& projectId,
                                    const std::string& releaseId);
    /// The installation of a client on the user's machine; `created` is false when it was known.
    Dictionary addInstallation(const ServiceUser& user, const std::string& clientId, bool& created);
    Dictionary addRating(const ServiceUser& user, const std::optional<RatingSubject>& subject, int rating,
                         const std::string& comment);
    /// {"results": {name: 1 or 0}} for each name asked about.
    Dictionary availableFonts(const std::vector<std::string>& names);
    /// Keeps a logging line ("log") or an analytics event ("event"), and lets the oldest go past
    /// the bound.
    void addEvent(const std::string& kind, const Dictionary& identity, const std::string& body);

    ServiceDatabase& database() { return database_; }

private:
    ServiceDatabase database_;
    std::size_t maxEvents_;
};

} // namespace velmo::server
