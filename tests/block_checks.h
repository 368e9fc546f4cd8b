#pragma once

// Checks shared by the data-block tests: the warnings an operation writes, and a refusal
// (nothing queued, exactly one warning line naming the operation).

#include "testsupport.h"

#include <QStringList>
#include <QtTest>

#include <functional>

class WarningCapture {
public:
    WarningCapture() {
        captured().clear();
        previous = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext&, const QString& message) {
                if (type == QtWarningMsg)
                    captured() << message;
            });
    }
    ~WarningCapture() { qInstallMessageHandler(previous); }
    QStringList lines() const { return captured(); }

private:
    static QStringList& captured() {
        static QStringList lines;
        return lines;
    }
    QtMessageHandler previous = nullptr;
};

// Runs `call` and verifies that it queued nothing and wrote one warning naming `operation`
// and mentioning `limit`.
inline void verifyRefused(const std::function<void()>& call, const QString& operation,
                          const QString& limit) {
    QStringList lines;
    {
        WarningCapture warnings;
        call();
        lines = warnings.lines();
    }
    QVERIFY2(takeQueued().isEmpty(), qPrintable(operation + QStringLiteral(" queued a record")));
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(operation + QLatin1Char(':')), qPrintable(lines.first()));
    QVERIFY2(lines.first().contains(limit), qPrintable(lines.first()));
}

// The one record `call` queued; fails the test when it queued another number.
#define TAKE_ONE(rec)                                                                              \
    const QVector<model_Protocoldata> rec##s = takeQueued();                                       \
    QCOMPARE(rec##s.size(), 1);                                                                    \
    const model_Protocoldata& rec = rec##s.first()
