#pragma once

#include "model_protocoldata.h"

#include <QString>
#include <QStringList>

#include <optional>

// The T3 value notations, shared by the T3 translator and the T3-style texts of VM6S.
namespace t3 {

// The values that fill a text's %1, %2, ...; no value means the command has no text, as
// when a letter or fraction is looked up outside its list.
using Values = std::optional<QStringList> (*)(const model_Protocoldata& rec);

inline int cmdOf(const model_Protocoldata& rec) { return rec.cmdHead[2]; }
inline int dat1Of(const model_Protocoldata& rec) { return rec.cmdHead[3]; }
inline int dat2Of(const model_Protocoldata& rec) { return rec.cmdHead[4]; }
inline int dat3Of(const model_Protocoldata& rec) { return rec.cmdHead[5]; }
inline int dat4Of(const model_Protocoldata& rec) { return rec.cmdHead[6]; }

// Replaces %1 .. %99 in one pass, so that a value is never scanned for placeholders.
QString fill(const QString& pattern, const QStringList& values);

// One-based input number the device shows for a port code; `kind` is the lookup's second
// argument (0 for the board-version query, 1 elsewhere).
int inputNumber(int code, int kind);
// The port letter "A".."F"; none outside the list.
std::optional<QString> letter(int index);

std::optional<QStringList> inputOfDat2(const model_Protocoldata& rec);      // in(DAT2)
std::optional<QStringList> boardInputOfDat2(const model_Protocoldata& rec); // inP(DAT2)
std::optional<QStringList> dat2PlusOne(const model_Protocoldata& rec);      // n(DAT2 + 1)
std::optional<QStringList> tallyOfDat2(const model_Protocoldata& rec);      // "1" L[DAT2]

} // namespace t3
