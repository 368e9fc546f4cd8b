#pragma once

#include <QString>
#include <QStringList>

// The signatures ("name(params)") of the operations a .def file lists, in order, e.g.
//   const QStringList ops = QStringList() DAL_SIGNATURES_OF("catalog/system.def");
// is spelt out as
//   const QStringList ops = QStringList()
//   #include "group_signatures_begin.h"
//   #include "catalog/system.def"
//   #include "group_signatures_end.h"
//   ;

// Calls every operation of `signatures` once through the dalctl registry, with sample
// arguments and the default models, on a native device, and compares what it queued with
// the rows of `expectationFile` (under tests/expected/):
//   name records CMD DAT1      one row per operation; CMD and DAT1 of the first record in hex
//   name/N records CMD DAT1    for overloads: the one taking N command-line arguments
//   name 0                     an operation that queues nothing
// Fails when an operation has no row, a row names no operation of the group, or a call
// queues other records than its row says.
void verifyGroup(const QStringList& signatures, const QString& expectationFile);
