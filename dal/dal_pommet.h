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

#define DAL_SEND(name, params, ...) void name params;
#define DAL_OP(ret, name, params) ret name params;
#define DAL_STATIC(ret, name, params) static ret name params;
#include "dal_pommet.def"
#undef DAL_SEND
#undef DAL_OP
#undef DAL_STATIC
};
