#pragma once

#include "model_protocoldata.h"

// Each family's translation, done in place on the record being sent. The public
// DalTarsel::transformBufToQStringFor* and convertCheckSumForVMS return a translated copy and
// leave their argument as it was.
namespace translate {

void t9(model_Protocoldata& rec);
void t3(model_Protocoldata& rec);
void kr2(model_Protocoldata& rec);
void nv(model_Protocoldata& rec);
void h40(model_Protocoldata& rec);
void h40b(model_Protocoldata& rec);
void vm6s(model_Protocoldata& rec);
void vm6sFinish(model_Protocoldata& rec);
// The VM6S frame, then its finish: what a VM6S device is sent.
void vm6sFramed(model_Protocoldata& rec);
void vantaz(model_Protocoldata& rec);
void cadex(model_Protocoldata& rec);

// What the generic send makes of a native record for `device`: its family's translation (the
// tunnel's under CMD 0x90 and 0x91) and tag, without the refusal of a block too long for the
// family's frame. A device without a family keeps the record as it is.
void forDevice(model_Protocoldata& rec, int device);

} // namespace translate
