#include "dalTarsel.h"

#include "block_builder.h"

using blocks::Block;

namespace {

constexpr int kEntryBuffer = 11;
constexpr int kAllLayersBuffer = 1024;
constexpr int kAllLayers = 0xFF;

void appendEntry(Block& block, const _DSKInfo& entry) {
    for (int value : entry.member)
        block.byte(value);
}

} // namespace

void DalTarsel::setDskInfo(int index, ModelTarsel model) {
    if (!blocks::holds("setDskInfo", "DSK entry", index, model.dskInfoList.size()))
        return;
    Block block("setDskInfo", kEntryBuffer);
    appendEntry(block, model.dskInfoList.at(index));
    block.send(*this, model.timeout, 0xF0, 0x0B, index, 11, 0);
}

void DalTarsel::setLayerDSKInfo(int layer, ModelTarsel model) {
    if (!blocks::holds("setLayerDSKInfo", "layer", layer, model.layerDskInfos.size()))
        return;
    Block block("setLayerDSKInfo", kEntryBuffer);
    appendEntry(block, model.layerDskInfos.at(layer));
    block.send(*this, model.timeout, 0xF0, 0x44, layer, 11, 0);
}

void DalTarsel::setMultiLayerDSKInfo(ModelTarsel model) {
    const int c = model.getMaxLayerCount();
    if (!blocks::holdsCount("setMultiLayerDSKInfo", "layer", c, model.layerDskInfos.size()))
        return;
    Block block("setMultiLayerDSKInfo", kAllLayersBuffer);
    for (int k = 0; k < c; ++k)
        appendEntry(block, model.layerDskInfos.at(k));
    block.sendSized(*this, model.timeout, 0xF0, 0x44, kAllLayers);
}
