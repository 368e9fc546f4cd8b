#include "dalTarsel.h"
#include "trace.h"

#include <QDebug>

model_Protocoldata DalTarsel::transformBufToQStringForCadex(model_Protocoldata& rec) {
    model_Protocoldata result = rec;
    // The tunnelled payload: the native head, its data block, then the checksum.
    QByteArray payload(reinterpret_cast<const char*>(rec.cmdHead + 2), 5);
    payload.append(rec.arryDatablock);
    payload.append('\0');
    setCheckSum(reinterpret_cast<unsigned char*>(payload.data()), payload.size() - 1);
    result.arryDatablock = payload;
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
    return result;
}
