#pragma once

#include <memory>

#include "velmo/foundation/Value.h"
#include "velmo/service/VVAPIClientInterface.h"

namespace velmo {

// Posted after each setter has stored its value, with the new value as the object (a
// `ValueObject`), or no object when the value was cleared.
inline constexpr const char* kVPCachedProjectsUpdateNotifKey = "VPCachedProjectsUpdateNotifKey";
inline constexpr const char* kVPCachedTeamsUpdateNotifKey = "VPCachedTeamsUpdateNotifKey";
inline constexpr const char* kVPCachedUserUpdateNotifKey = "VPCachedUserUpdateNotifKey";

/// The process's memory of what the service last said about the user: the address, the projects
/// and the team memberships, as the service's own records. Nothing is kept on disk.
///
/// A project record has "id", "name" and "team" (the team's id; none for a personal project); a
/// membership has "id", "team" and "team_name". Lists are replaced, never changed in place.
///
/// Main queue only, as the client's completions and the flows' controllers are: no lock. Every
/// operation runs inside the catch-all guard and gives nothing, false or no change when it fails.
class VPAccountData {
public:
    /// The one instance, made at the first call, which takes the client from "VVAPIClientInterface"
    /// in `VVDI` for good: the shared client must exist by then.
    static VPAccountData& shared();

    VPAccountData(const VPAccountData&) = delete;
    VPAccountData& operator=(const VPAccountData&) = delete;

    /// The user's e-mail address, or nil.
    Value cachedUser() const { return cachedUser_; }
    void setCachedUser(Value user);
    /// Empty until first filled; nil once cleared.
    Array cachedProjects() const { return cachedProjects_; }
    void setCachedProjects(Array projects);
    Array cachedTeams() const { return cachedTeams_; }
    void setCachedTeams(Array teams);
    /// The client taken at creation; held weakly.
    std::shared_ptr<VVAPIClientInterface> apiClient() const { return apiClient_.lock(); }

    /// isValidProjectId:
    bool isValidProjectId(const Value& projectId) const;
    /// True with no projects, also with no list at all.
    bool cachedProjectsEmpty() const;
    bool cachedTeamsEmpty() const;
    /// "name" of `projectWithId`.
    /// nameOfProjectWithId:
    Value nameOfProjectWithId(const Value& projectId) const;
    /// The first project whose "id" equals the id; nil for none or no id.
    /// projectWithId:
    Dictionary projectWithId(const Value& projectId) const;
    /// Adds a project the user just made or changed: a changed one replaces its old record and
    /// moves to the end, a new one goes to the front, once its team is known (after asking the
    /// service for the teams when it isn't).
    /// cacheProject:
    void cacheProject(const Dictionary& project);
    /// Each membership's "team" to its "team_name", "" for either when absent.
    Dictionary teamNames() const;
    /// The first membership whose "id" (not "team") equals the id.
    /// teamWithId:
    Dictionary teamWithId(const Value& teamId) const;
    /// Always nil: memberships carry no slug.
    /// teamWithSlug:
    Dictionary teamWithSlug(const Value& slug) const;
    /// Puts a membership not yet known in front of the others.
    /// cacheTeam:
    void cacheTeam(const Dictionary& team);
    /// Clears projects, teams and user, in this order, each with its notification.
    void clearCache();

private:
    VPAccountData();

    Value cachedUser_;
    Array cachedProjects_ = Array::create();
    Array cachedTeams_ = Array::create();
    std::weak_ptr<VVAPIClientInterface> apiClient_;
};

} // namespace velmo
