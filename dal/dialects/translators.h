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

} // namespace translate
