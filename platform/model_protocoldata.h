#pragma once

#include <QByteArray>
#include <QString>

// The protocol command record handed to the business layer's worker. Fields the library
// never writes default to zero or empty and travel on the wire as they stand.
class model_Protocoldata {
public:
    QString strAux1;
    unsigned char connectType = 0;
    unsigned char dataType = 0;
    QString strAux2;
    unsigned short auxWord1 = 0;
    unsigned short auxWord2 = 0;
    unsigned char auxByte = 0;
    unsigned short msgCode = 0;
    unsigned short auxWord4 = 0;
    unsigned short auxWord5 = 0;
    // address, reserved, CMD, DAT1, DAT2, DAT3, DAT4, spare
    unsigned char cmdHead[8] = {};
    int timeout = 0;
    QString Datablock;
    QByteArray arryDatablock;
    unsigned char statusByte = 0;
    int deviceType = 0;
};
