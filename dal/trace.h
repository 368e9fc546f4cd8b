#pragma once

#include <QLoggingCategory>

// Whether debug lines of the default category are written; when not, callers skip building
// them, which keeps the send path cheap.
inline bool traceEnabled() { return QLoggingCategory::defaultCategory()->isDebugEnabled(); }

namespace dal {

// The generic send's trace line, as qDebug() writes its items: labels and values separated by
// single spaces, each value in double quotes; the head bytes in lowercase hex without leading
// zeros, the block as hex pairs, and last the text, quoted as dal::writeQuoted quotes it:
//   ---addToQueue----CMD= "f0" ---DAT1= "1" ---DAT2= "0" ---DAT3= "3" ---DAT4= "0"
//   ---arryDatablock= "0102ab" ---Datablock= "text"
// (one line, broken here for width).
// The labels of CMD and DAT1 .. DAT4, in the line's order; the first one starts the line.
inline constexpr const char* kTraceHeadLabels[] = {
    "---addToQueue----CMD=", "---DAT1=", "---DAT2=", "---DAT3=", "---DAT4="};
inline constexpr char kTraceBlockLabel[] = "---arryDatablock=";
inline constexpr char kTraceTextLabel[] = "---Datablock=";

} // namespace dal
