#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

// The protocol reference: every registered operation, called with its sample arguments, and
// every record it queues on every family, the head bytes its arguments reach marked with their
// names (as explain and decode learnt them).
QJsonObject referenceData();
// The page that shows it: one self-contained HTML file, the data embedded as JSON.
QByteArray referencePage();
// Writes the page to `path` whole or not at all; false with `error` set when it cannot.
bool writeReferencePage(const QString& path, QString& error);
