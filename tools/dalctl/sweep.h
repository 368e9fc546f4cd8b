#pragma once

#include <QString>
#include <QTextStream>

// Runs every operation with sample arguments on every device family (or on the one named)
// and prints each request, its trace lines as they are written, and every record it queued.
// Returns false when `family` names no family.
bool printSweep(QTextStream& out, const QString& family);
