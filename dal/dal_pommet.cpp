#include "dal_pommet.h"

bool Dal_Pommet::isConnected = false;

Dal_Pommet::Dal_Pommet() : QObject(nullptr) {}
