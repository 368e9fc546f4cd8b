#include "bytes.h"
#include "dalTarsel.h"
#include "trace.h"
#include "translators.h"

#include <QDebug>

#include <algorithm>

void translate::vantaz(model_Protocoldata& rec) {
    static const char kLead[] = {0x68, 0x00, 0x00, 0x00, 0x01, 0x68, 0x0C};
    static const char kAddress[] = {0x00, 0x00, 0x00, 0x01};
    QByteArray& frame = rec.arryDatablock;
    // The length counts the four address bytes with the data block, high byte first.
    const int length = frame.size() + int(sizeof kAddress);
    char head[sizeof kLead + 2 + sizeof kAddress];
    char* at = std::copy(std::begin(kLead), std::end(kLead), head);
    *at++ = static_cast<char>((length >> 8) & 0xFF);
    *at++ = static_cast<char>(length & 0xFF);
    std::copy(std::begin(kAddress), std::end(kAddress), at);
    frame.prepend(head, int(sizeof head)); // in place: the block arrives with room for it
    frame.append('\0');                    // the checksum's place
    dal::writeCheckSum(reinterpret_cast<unsigned char*>(frame.data()), frame.size() - 1);
    frame.append('\x16');
    if (traceEnabled())
        qDebug() << "------VantaZ-----tmpData.arryDatablock=" << QString::fromLatin1(frame.toHex());
}

model_Protocoldata DalTarsel::transformBufToQStringForVantaZ(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::vantaz(out);
    return out;
}
