// System settings, pages, scenes, takes, board information and logos: one native command each.
#include "modeltarsel.h"

namespace {

// The stored work mode of an H.264 input; an input the model does not list reads as mode 0.
int h264InputWorkModeOf(const ModelTarsel& model, int input) {
    return model.h264InputWorkModes.value(input);
}

} // namespace

#include "catalog_rows.h"

#include "system.def"

void DalTarsel::setOutPortEdid(ModelTarsel) {}

void DalTarsel::getEquipmentClock(ModelTarsel) {}
