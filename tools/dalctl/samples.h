#pragma once

#include "registry.h"

#include <QString>
#include <QStringList>

// A command-line argument of the given parameter type, for calls with sample values.
QString sampleArgument(const QString& type);
// Another argument of the type, of another length where it has one: what a byte that only the
// sample's value or length decides does with a second value.
QString otherArgument(const QString& type);
// The operation's qualified name followed by one sample argument per parameter.
QStringList sampleCall(const Operation& op);
