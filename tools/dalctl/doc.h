#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

// The protocol reference: every registered operation, called with its sample arguments (each
// with its written form), and every record it queues on every family, each byte of its head and
// block marked with the names of what produced it (as explain and decode learn them).
QJsonObject referenceData();
// The page that shows it: one self-contained HTML file, the data embedded as JSON.
QByteArray referencePage();
// Writes the page to `path` whole or not at all; false with `error` set when it cannot.
bool writeReferencePage(const QString& path, QString& error);
