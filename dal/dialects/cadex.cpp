#include "bytes.h"
#include "dalTarsel.h"
#include "trace.h"
#include "translators.h"

#include <QDebug>

void translate::cadex(model_Protocoldata& rec) {
    // The tunnelled payload, built in place: the native head, its data block, the checksum.
    QByteArray& payload = rec.arryDatablock;
    payload.prepend(reinterpret_cast<const char*>(rec.cmdHead + 2), 5);
    payload.append('\0');
    dal::writeCheckSum(reinterpret_cast<unsigned char*>(payload.data()), payload.size() - 1);
    const int length = payload.size(); // low byte first in DAT3, DAT4
    rec.cmdHead[4] = rec.cmdHead[6];
    rec.cmdHead[2] = 0xF1;
    rec.cmdHead[3] = 0x5D;
    rec.cmdHead[5] = static_cast<unsigned char>(length & 0xFF);
    rec.cmdHead[6] = static_cast<unsigned char>((length >> 8) & 0xFF);
    // The VantaZ framing's label, shared on purpose.
    if (traceEnabled())
        qDebug() << "------VantaZ-----tmpData.arryDatablock="
                 << QString::fromLatin1(payload.toHex());
}

model_Protocoldata DalTarsel::transformBufToQStringForCadex(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::cadex(out);
    return out;
}
