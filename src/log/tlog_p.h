#pragma once

#include <QtGlobal>

namespace DailyLog {

/// The clock from which the log takes its dates and time stamps; tests put one of their own here.
extern qint64 (*millisecondsSinceEpoch)();

} // namespace DailyLog
