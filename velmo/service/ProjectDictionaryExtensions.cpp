#include "velmo/service/ProjectDictionaryExtensions.h"

#include "velmo/service/VPAccountData.h"

namespace velmo {

Value _projectDic_teamID(const Dictionary& project) {
    return project.get("team");
}

Value _projectDic_projectName(const Dictionary& project) {
    return project.get("name");
}

std::string _projectDic_teamName(const Dictionary& project) {
    const Value& team = project.get("team");
    if (team.isNone()) return "Personal";
    for (const Value& membership : VPAccountData::shared().cachedTeams()) {
        const Dictionary record = membership.dictionary();
        if (record.get("team") == team) return record.get("team_name").str();
    }
    return std::string();
}

} // namespace velmo
