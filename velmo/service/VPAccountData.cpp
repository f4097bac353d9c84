#include "velmo/service/VPAccountData.h"

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/model/values/ArrayExtensions.h"
#include "velmo/runtime/VPLogging.h"
#include "velmo/runtime/VVDI.h"
#include "velmo/service/ValueObject.h"

namespace velmo {

namespace {

/// The first record of the list whose key equals the value; nil for none, or when there's no value.
Dictionary firstWith(const Array& records, std::string_view key, const Value& value) {
    if (value.isNone()) return Dictionary();
    for (const Value& record : records) {
        const Dictionary dictionary = record.dictionary();
        if (dictionary.get(key) == value) return dictionary;
    }
    return Dictionary();
}

/// A key of `teamNames`: the team's id as text.
std::string keyText(const Value& value) {
    if (value.isString()) return value.str();
    if (value.isNone()) return {};
    return value.description();
}

void post(const char* name, Value value) {
    NotificationCenter::defaultCenter().post(name, ValueObject::make(std::move(value)));
}

} // namespace

VPAccountData& VPAccountData::shared() {
    // Never destroyed: completions on the main queue may still reach it at exit.
    static VPAccountData* shared = new VPAccountData();
    return *shared;
}

VPAccountData::VPAccountData() {
    VP_TRY
    apiClient_ = VVDI::shared().instanceFor<VVAPIClientInterface>(kVVAPIClientInterface);
    VP_CATCH()
}

void VPAccountData::setCachedUser(Value user) {
    VP_TRY
    cachedUser_ = user;
    post(kVPCachedUserUpdateNotifKey, std::move(user));
    VP_CATCH()
}

void VPAccountData::setCachedProjects(Array projects) {
    VP_TRY
    cachedProjects_ = projects;
    post(kVPCachedProjectsUpdateNotifKey, Value(projects));
    VP_CATCH()
}

void VPAccountData::setCachedTeams(Array teams) {
    VP_TRY
    cachedTeams_ = teams;
    post(kVPCachedTeamsUpdateNotifKey, Value(teams));
    VP_CATCH()
}

bool VPAccountData::isValidProjectId(const Value& projectId) const {
    VP_TRY
    return !projectWithId(projectId).isNil();
    VP_CATCH(false)
}

bool VPAccountData::cachedProjectsEmpty() const {
    VP_TRY
    return cachedProjects_.empty();
    VP_CATCH(false)
}

bool VPAccountData::cachedTeamsEmpty() const {
    VP_TRY
    return cachedTeams_.empty();
    VP_CATCH(false)
}

Value VPAccountData::nameOfProjectWithId(const Value& projectId) const {
    VP_TRY
    return projectWithId(projectId).get("name");
    VP_CATCH(Value())
}

Dictionary VPAccountData::projectWithId(const Value& projectId) const {
    VP_TRY
    return firstWith(cachedProjects_, "id", projectId);
    VP_CATCH(Dictionary())
}

void VPAccountData::cacheProject(const Dictionary& project) {
    VP_TRY
    if (cachedProjects_.empty()) {
        setCachedProjects(Array{Value(project)});
        return;
    }
    if (!projectWithId(project.get("id")).isNil()) {
        setCachedProjects(vp_arrayByAddingUniqueObjectsFromArray(cachedProjects_, Array{Value(project)}));
        return;
    }
    if (!teamWithId(project.get("team")).isNil()) {
        setCachedProjects(arrayByInsertingObject(cachedProjects_, Value(project), 0));
        return;
    }
    // A project of a team we don't know yet: the flows show it once the service was asked.
    if (const auto client = apiClient()) {
        client->refreshTeams([project](const Value&, VPErrorPtr) {
            VP_TRY
            VPAccountData& account = shared();
            account.setCachedProjects(arrayByInsertingObject(account.cachedProjects_, Value(project), 0));
            VP_CATCH()
        });
    }
    VP_CATCH()
}

Dictionary VPAccountData::teamNames() const {
    VP_TRY
    Dictionary names = Dictionary::create();
    for (const Value& membership : cachedTeams_) {
        const Dictionary record = membership.dictionary();
        const Value& name = record.get("team_name");
        names.set(keyText(record.get("team")), name.isNone() ? Value("") : name);
    }
    return names;
    VP_CATCH(Dictionary())
}

Dictionary VPAccountData::teamWithId(const Value& teamId) const {
    VP_TRY
    return firstWith(cachedTeams_, "id", teamId);
    VP_CATCH(Dictionary())
}

Dictionary VPAccountData::teamWithSlug(const Value&) const {
    return Dictionary();
}

void VPAccountData::cacheTeam(const Dictionary& team) {
    VP_TRY
    if (cachedTeams_.empty()) {
        setCachedTeams(Array{Value(team)});
        return;
    }
    if (!teamWithId(team.get("id")).isNil()) return;
    setCachedTeams(arrayByInsertingObject(cachedTeams_, Value(team), 0));
    VP_CATCH()
}

void VPAccountData::clearCache() {
    VP_TRY
    setCachedProjects(Array());
    setCachedTeams(Array());
    setCachedUser(Value());
    VP_CATCH()
}

} // namespace velmo
