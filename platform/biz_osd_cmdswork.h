#pragma once

#include "model_osdparam.h"

#include <deque>
#include <mutex>

// The business layer's OSD worker: owns the OSD box's send queue and its lock.
class biz_Osd_CMDSWork {
public:
    static void addToSendQueue(model_OsdParam rec);

    static std::deque<model_OsdParam> sendQueue;
    static std::mutex sendQueueLock;
};
