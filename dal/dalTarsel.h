#pragma once

#include "dal_export.h"
#include "model_protocoldata.h"
#include "modelbankplayer.h"
#include "modelscene.h"
#include "modeltarsel.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

// Numbers written with a dash between them, "1-0-1": how some data-block setters take a list.
using DashNumbers = QString;

// The processor families' data-access class: every operation turns one request of the
// business layer into the command the attached device family understands and appends it to
// biz_CMDSWork::queueHexCmd. Objects hold no state; any number may exist.
class DAL_EXPORT DalTarsel : public QObject {
    Q_OBJECT
public:
    DalTarsel();

    // Set by the application while a device link is up; every send is dropped while false.
    static bool isConnected;

    // The container the KR2 family was last told to work on.
    int curContainerIndex = 0;

#define DAL_OP(ret, name, params) ret name params;
#include "dalTarsel.def"

signals:
    void showMessage(QString strInfo);
};
