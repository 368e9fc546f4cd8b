// System settings, pages, scenes, takes, board information and logos: the members written out
// by hand. The one-command rows are in catalog_rows.cpp.
#include "dalTarsel.h"

void DalTarsel::setOutPortEdid([[maybe_unused]] ModelTarsel model) {}

void DalTarsel::getEquipmentClock([[maybe_unused]] ModelTarsel model) {}
