#pragma once

#include <string>
#include <vector>

#include "velmo/foundation/Value.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo::cli {

/// What `velmo tree` says of a view beside its frame: its states, with how many paths each
/// change set touches, and its actions, with kind, events and target. One dictionary per item
/// serves both the JSON form and the lines for a terminal.
Array describeStates(const VDModelView& view);
Array describeActions(const VDModelView& view);
/// The same as lines: `state "compact" (2 paths)`, `action Open "go" on click(this;btn) -> screen login`.
std::vector<std::string> summaryLines(const VDModelView& view);

} // namespace velmo::cli
