#pragma once

#include "dal_export.h"
#include "model_pommetparam.h"
#include "model_protocoldata.h"

#include <QByteArray>

#include <QObject>
#include <QString>

#include <mutex>

// The control keyboard's data-access class.
class DAL_EXPORT Dal_Pommet : public QObject {
    Q_OBJECT
public:
    Dal_Pommet();

    // Set by the application while the keyboard link is up.
    static bool isConnected;
    // Serialises the discovery probes so that their records never interleave.
    static std::mutex mute;

#define DAL_OP(ret, name, params) ret name params;
#include "dal_pommet.def"
};
