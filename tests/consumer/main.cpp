// The README's sample application, built against the installed package and run by the suite.
#include "biz_cmdswork.h"
#include "biz_osd_cmdswork.h"
#include "dalTarsel.h"
#include "dal_osd.h"
#include "dal_pommet.h"
#include "utility_manage.h"

#include <cstdio>

int main() {
    // What the application's utility library reports; the library asks at every call.
    Utility_Manage::setDeviceType(0x250400); // the attached processor is a T3
    DalTarsel::isConnected = true;           // the links are up; while false, sends are dropped
    Dal_Pommet::isConnected = true;

    DalTarsel dal;
    ModelTarsel device; // the application's device model
    device.timeout = 3000;
    dal.getComBoardVer(device); // 6A 03, rewritten for the T3: "<GVER>"

    Dal_Pommet keyboard;
    Model_PommetParam key;
    key.waitTime = 500;
    keyboard.getKeyBoardVersion(key); // A2 15, to the control keyboard

    dal_Osd osd;
    osd.clearScreen(QStringLiteral("osd-1")); // one frame to the OSD box's own queue

    // The business layer's workers drain each queue under its lock.
    int records = 0;
    {
        std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
        while (!biz_CMDSWork::queueHexCmd.empty()) {
            model_Protocoldata rec = biz_CMDSWork::queueHexCmd.front();
            biz_CMDSWork::queueHexCmd.pop_front();
            // send rec.cmdHead, rec.Datablock or rec.arryDatablock; wait up to rec.timeout ms
            std::printf("device %06x, command %02x %02x, text \"%s\"\n", rec.deviceType,
                        rec.cmdHead[2], rec.cmdHead[3], qPrintable(rec.Datablock));
            ++records;
        }
    }
    {
        std::lock_guard<std::mutex> lock(biz_Osd_CMDSWork::sendQueueLock);
        while (!biz_Osd_CMDSWork::sendQueue.empty()) {
            model_OsdParam rec = biz_Osd_CMDSWork::sendQueue.front();
            biz_Osd_CMDSWork::sendQueue.pop_front();
            // send rec.frameHead and rec.payload
            std::printf("OSD %s, %lld payload bytes\n", qPrintable(rec.tag),
                        static_cast<long long>(rec.payload.size()));
            ++records;
        }
    }
    return records == 3 ? 0 : 1;
}
