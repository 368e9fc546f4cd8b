#include "biz_cmdswork.h"

std::deque<model_Protocoldata> biz_CMDSWork::queueHexCmd;
std::deque<model_Protocoldata> biz_CMDSWork::receivequeueHexCmd;
std::mutex biz_CMDSWork::HexCmdlock;
std::mutex biz_CMDSWork::receiveHexCmdlock;
bool biz_CMDSWork::bRetFlag = false;
