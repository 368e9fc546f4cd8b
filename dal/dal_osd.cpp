#include "dal_osd.h"

dal_Osd::dal_Osd() : QObject(nullptr) {}
