#pragma once

#include "model_protocoldata.h"

#include <deque>
#include <mutex>

// The business layer's command worker: owns the send and receive queues that its own
// thread drains. The library only appends.
class biz_CMDSWork {
public:
    static std::deque<model_Protocoldata> queueHexCmd;
    static std::deque<model_Protocoldata> receivequeueHexCmd;
    static std::mutex HexCmdlock; // guards queueHexCmd and bRetFlag
    static std::mutex receiveHexCmdlock;
    static bool bRetFlag;
};
