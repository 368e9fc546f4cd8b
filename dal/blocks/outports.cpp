#include "dalTarsel.h"

#include "block_builder.h"

using blocks::Block;

namespace {

constexpr int kWorkBuffer = 2049;

// True when the per-output list holds one entry for each output; otherwise a warning.
template <class List>
bool perOutput(const char* operation, const ModelTarsel& model, const List& list) {
    return blocks::holdsCount(operation, "output", model.getMaxOutputCount(), list.size());
}

} // namespace

void DalTarsel::setOutPortRotate(ModelTarsel model) {
    if (!perOutput("setOutPortRotate", model, model.outPortParams))
        return;
    Block block("setOutPortRotate", kWorkBuffer);
    for (int i = 0; i < model.getMaxOutputCount(); ++i)
        block.byte(model.outPortParams.at(i).portRotation);
    block.sendSized(*this, model.timeout, 0xF0, 0x0D, 0);
}

void DalTarsel::setOutPortCfgMs(ModelTarsel model) {
    if (!perOutput("setOutPortCfgMs", model, model.outPortParams))
        return;
    const int c = model.getMaxOutputCount();
    Block block("setOutPortCfgMs", kWorkBuffer);
    for (int i = 0; i < c; ++i) {
        const _OutPortParam_Desktop& p = model.outPortParams.at(i);
        block.word(p.portParam1).word(p.portParam2).word(p.portParam3).word(p.portParam4);
    }
    // The first member goes after all the 16-bit groups.
    for (int i = 0; i < c; ++i)
        block.byte(model.outPortParams.at(i).portParam0);
    block.sendSized(*this, model.timeout, 0xF0, 0x05, 0);
}

void DalTarsel::setOutPortCfg(ModelTarsel model) {
    ModelTarsel copy = model;
    setOutPortCfgMs(copy);
}

void DalTarsel::setLcdBorderSetting(ModelTarsel model) {
    if (!perOutput("setLcdBorderSetting", model, model.lcdBorders))
        return;
    Block block("setLcdBorderSetting", kWorkBuffer);
    for (int i = 0; i < model.getMaxOutputCount(); ++i) {
        const _LcdBorderSetting& b = model.lcdBorders.at(i);
        block.word(b.border0).word(b.border1).word(b.border2).word(b.border3);
    }
    block.sendSized(*this, model.timeout, 0xF0, 0x16, 0);
}
