#pragma once

#include "dal_export.h"
#include "model_osdparam.h"

#include <QByteArray>

#include <QObject>
#include <QString>

// The OSD text box's data-access class.
class DAL_EXPORT dal_Osd : public QObject {
    Q_OBJECT
public:
    dal_Osd();

#define DAL_OP(ret, name, params) ret name params;
#include "dal_osd.def"
};
