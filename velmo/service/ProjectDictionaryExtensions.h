#pragma once

#include <string>

#include "velmo/foundation/Value.h"

namespace velmo {

// Operations on a project record of the service that the flows call by name. They live beside
// the account cache, whose memberships name the teams. The record is the first argument.

/// The record's "team": the id of its team.
Value _projectDic_teamID(const Dictionary& project);
/// The record's "name".
Value _projectDic_projectName(const Dictionary& project);
/// "Personal" without a team; otherwise the "team_name" of the first cached membership whose
/// "team" equals it; "" when no cached membership matches.
std::string _projectDic_teamName(const Dictionary& project);

} // namespace velmo
