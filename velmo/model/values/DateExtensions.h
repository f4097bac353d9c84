#pragma once

#include "velmo/foundation/DateFormatter.h"

namespace velmo {

/// `+daysBetweenDate:andDate:`: the signed number of calendar days, in the local calendar,
/// between the days that hold the two dates; the time of day doesn't count.
long daysBetweenDate(Date from, Date to);
/// True when the receiver is the earlier of the two; equal dates are both earlier and later.
bool isEarlierThan(Date receiver, Date other);
bool isLaterThan(Date receiver, Date other);

} // namespace velmo
