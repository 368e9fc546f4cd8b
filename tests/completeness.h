#pragma once

#include <QVector>

// One operation as its operation list declares it: the class, "name(params)" and, for an
// operation that sends one fixed command, the CMD and DAT1 cells as written in its row.
struct ListedOperation {
    const char* className;
    const char* signature;
    const char* cmd = nullptr;
    const char* dat1 = nullptr;
};

// Every operation of every .def list, in list order.
const QVector<ListedOperation>& listedOperations();

// Calls the operation once through the dalctl registry, with sample arguments and the default
// models, on a native device, and verifies that it is registered, queues at least one record
// (or is one of the few known to queue none) and, for a fixed command, that its first record
// carries the row's CMD and DAT1.
void verifyListed(const ListedOperation& listed);
