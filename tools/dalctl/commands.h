#pragma once

#include <QStringList>

// Runs dalctl's command line, the program's name first, and returns its exit code: 0 for an
// answer, 1 for nothing found or nothing queued, 2 for bad input.
int runCommandLine(const QStringList& arguments);
