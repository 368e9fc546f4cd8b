#pragma once

#include "records.h"

#include <QTextStream>

// Runs every operation with sample arguments on every device family of its class (or on the
// one given) and prints each request, its trace lines as they are written, and every record it
// queued.
void printSweep(QTextStream& out, const Family* family);
// Prints representative requests as every family of DalTarsel receives them.
void printDemo(QTextStream& out);
