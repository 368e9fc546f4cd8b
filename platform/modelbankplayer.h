#pragma once

#include <QList>
#include <QVector>

// The bank-player model read by the bank-player loop commands.
class ModelBankPlayer {
public:
    virtual ~ModelBankPlayer() = default;

    // Clock, time-out and loop settings of the bank player (CMD 0x8B setters)
    int timeout = 0; // reply time-out, in milliseconds
    int year = 0;
    int month = 0;
    int day = 0;
    int weekday = 0;
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int clockSwitch = 0;
    QList<int> autoLoopTimes; // one loop count per bank, sent as 16-bit values
    // Read by setBankPlayLoopTiming and setBankPlayLoopTimes.
    QVector<unsigned char> loopTimings; // 144 bytes
    QVector<unsigned char> loopTimes;   // 128 bytes
};
