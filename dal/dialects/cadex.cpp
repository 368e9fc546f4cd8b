#include "dalTarsel.h"
#include "trace.h"

#include <QDebug>

#include <algorithm>

model_Protocoldata DalTarsel::transformBufToQStringForCadex(model_Protocoldata& rec) {
    model_Protocoldata result = rec;
    // The tunnelled payload, in one allocation: the native head, its data block, the checksum.
    const QByteArray& block = rec.arryDatablock;
    QByteArray payload(5 + block.size() + 1, Qt::Uninitialized);
    char* at = std::copy(rec.cmdHead + 2, rec.cmdHead + 7, payload.data());
    std::copy(block.begin(), block.end(), at);
    setCheckSum(reinterpret_cast<unsigned char*>(payload.data()), payload.size() - 1);
    const int length = payload.size(); // low byte first in DAT3, DAT4
    result.cmdHead[4] = rec.cmdHead[6];
    result.cmdHead[2] = 0xF1;
    result.cmdHead[3] = 0x5D;
    result.cmdHead[5] = static_cast<unsigned char>(length & 0xFF);
    result.cmdHead[6] = static_cast<unsigned char>((length >> 8) & 0xFF);
    // The VantaZ framing's label, shared on purpose.
    if (traceEnabled())
        qDebug() << "------VantaZ-----tmpData.arryDatablock="
                 << QString::fromLatin1(payload.toHex());
    result.arryDatablock = std::move(payload);
    return result;
}
