#include "dalTarsel.h"
#include "trace.h"

#include <QDebug>

model_Protocoldata DalTarsel::transformBufToQStringForVantaZ(model_Protocoldata& rec) {
    static const QByteArray kLead = QByteArray::fromHex("68 00 00 00 01 68 0C");
    static const QByteArray kAddress = QByteArray::fromHex("00 00 00 01");
    model_Protocoldata result = rec;
    // The length counts the four address bytes with the data block, high byte first.
    const int length = rec.arryDatablock.size() + kAddress.size();
    QByteArray frame = kLead;
    frame.append(static_cast<char>((length >> 8) & 0xFF));
    frame.append(static_cast<char>(length & 0xFF));
    frame.append(kAddress);
    frame.append(rec.arryDatablock);
    frame.append('\0'); // room for the checksum
    setCheckSum(reinterpret_cast<unsigned char*>(frame.data()), frame.size() - 1);
    frame.append('\x16');
    result.arryDatablock = frame;
    if (traceEnabled())
        qDebug() << "------VantaZ-----tmpData.arryDatablock=" << QString::fromLatin1(frame.toHex());
    return result;
}
