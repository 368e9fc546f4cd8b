// Queues one command through the installed library and checks what reached the queue.
#include "biz_cmdswork.h"
#include "dalTarsel.h"

#include <cstdio>

int main() {
    DalTarsel::isConnected = true;
    DalTarsel().f_SendCmd(3000, 0x6A, 3, 0, 0, 0, nullptr, 0, QString());
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    if (biz_CMDSWork::queueHexCmd.size() != 1 ||
        biz_CMDSWork::queueHexCmd.front().cmdHead[2] != 0x6A) {
        std::puts("consumer: unexpected queue");
        return 1;
    }
    std::puts("consumer: queued 6a/03");
    return 0;
}
