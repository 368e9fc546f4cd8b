#pragma once

#include <QVector>

// The bank-player model read by the bank-player loop commands.
class ModelBankPlayer {
public:
    virtual ~ModelBankPlayer() = default;

    // Read by setBankPlayLoopTiming and setBankPlayLoopTimes.
    QVector<unsigned char> loopTimings; // 144 bytes
    QVector<unsigned char> loopTimes;   // 128 bytes
    int timeout = 0;                    // reply time-out of the bank-player commands, in ms
};
