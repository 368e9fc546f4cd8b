#pragma once

#include <QByteArray>
#include <QString>

// The OSD text box's command record: an 11-byte frame header followed by the payload.
class model_OsdParam {
public:
    unsigned char frameHead[11] = {};
    QString tag;
    unsigned char flag = 0;
    int timeout = 0;
    QByteArray replyData;
    QByteArray payload;
    int counter = 0;
};
