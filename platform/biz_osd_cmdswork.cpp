#include "biz_osd_cmdswork.h"

std::deque<model_OsdParam> biz_Osd_CMDSWork::sendQueue;
std::mutex biz_Osd_CMDSWork::sendQueueLock;

void biz_Osd_CMDSWork::addToSendQueue(model_OsdParam rec) {
    std::lock_guard<std::mutex> lock(sendQueueLock);
    sendQueue.push_back(std::move(rec));
}
