#pragma once

#include <QLoggingCategory>

// Whether debug lines of the default category are written; when not, callers skip building
// them, which keeps the send path cheap.
inline bool traceEnabled() { return QLoggingCategory::defaultCategory()->isDebugEnabled(); }
