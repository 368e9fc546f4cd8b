#include "dalTarsel.h"
#include "trace.h"

#include <QDebug>

#include <algorithm>

model_Protocoldata DalTarsel::transformBufToQStringForVantaZ(model_Protocoldata& rec) {
    static const char kLead[] = {0x68, 0x00, 0x00, 0x00, 0x01, 0x68, 0x0C};
    static const char kAddress[] = {0x00, 0x00, 0x00, 0x01};
    model_Protocoldata result = rec;
    const QByteArray& block = rec.arryDatablock;
    // Lead, length, address, block, checksum and end byte, written into one allocation. The
    // length counts the four address bytes with the data block, high byte first.
    const int length = block.size() + int(sizeof kAddress);
    QByteArray frame(int(sizeof kLead) + 2 + length + 2, Qt::Uninitialized);
    char* at = std::copy(std::begin(kLead), std::end(kLead), frame.data());
    *at++ = static_cast<char>((length >> 8) & 0xFF);
    *at++ = static_cast<char>(length & 0xFF);
    at = std::copy(std::begin(kAddress), std::end(kAddress), at);
    at = std::copy(block.begin(), block.end(), at);
    setCheckSum(reinterpret_cast<unsigned char*>(frame.data()), int(at - frame.data()));
    at[1] = '\x16';
    result.arryDatablock = std::move(frame);
    if (traceEnabled())
        qDebug() << "------VantaZ-----tmpData.arryDatablock="
                 << QString::fromLatin1(result.arryDatablock.toHex());
    return result;
}
