#include "dalTarsel.h"

#include "block_builder.h"
#include "devices.h"
#include "utility_manage.h"

using blocks::Block;

namespace {

constexpr int kLayerBuffer = 2049;
constexpr int kSceneBuffer = 4096;
constexpr int kContainerIndexBuffer = 1024;
constexpr int kBankBytes = 16;
constexpr int kFixedTimeout = 3000;

// The 19-byte layer head: the second rectangle goes first.
void appendLayerHead(Block& block, const _LayerParam_Desktop& layer) {
    block.word(layer.regionB.x)
        .word(layer.regionB.y)
        .word(layer.regionB.width)
        .word(layer.regionB.height);
    block.word(layer.regionA.x)
        .word(layer.regionA.y)
        .word(layer.regionA.width)
        .word(layer.regionA.height);
    block.byte(layer.layerParam8).byte(layer.layerParam9).byte(layer.layerParam10);
}

// The scene `sceneIndex`, or null (with a warning) when the model does not hold it.
const _Scene_Layer* sceneOf(const char* operation, int sceneIndex, const ModelScene& scene) {
    if (!blocks::holds(operation, "scene", sceneIndex, scene.sceneList.size()))
        return nullptr;
    return &scene.sceneList.at(sceneIndex);
}

// The scene's layers when it holds getMaxLayerCount() of them; null (with a warning) otherwise.
const QVector<_LayerParam_Desktop>* layersOf(const char* operation, int sceneIndex,
                                             const ModelScene& scene) {
    const _Scene_Layer* s = sceneOf(operation, sceneIndex, scene);
    if (!s ||
        !blocks::holdsCount(operation, "layer", scene.getMaxLayerCount(), s->layerList.size()))
        return nullptr;
    return &s->layerList;
}

// One byte per layer, then the checksum.
template <class Member>
void sendPerLayer(DalTarsel& dal, const char* operation, int capacity, int timeout, int dat1,
                  int sceneIndex, const ModelScene& scene, Member member) {
    const auto* layers = layersOf(operation, sceneIndex, scene);
    if (!layers)
        return;
    Block block(operation, capacity);
    for (int i = 0; i < scene.getMaxLayerCount(); ++i)
        block.byte((*layers)[i].*member);
    block.sendSized(dal, timeout, 0xF0, dat1, sceneIndex);
}

// The scene-plan records go straight to the queue, without routing or trace.
void queueDirectly(DalTarsel& dal, int cmd, int dat1, int dat2, const QString& tag,
                   const ModelTarsel& model) {
    model_Protocoldata rec;
    rec.cmdHead[1] = 0;
    rec.cmdHead[2] = static_cast<unsigned char>(cmd);
    rec.cmdHead[3] = static_cast<unsigned char>(dat1);
    rec.cmdHead[4] = static_cast<unsigned char>(dat2);
    rec.cmdHead[5] = 0;
    rec.cmdHead[6] = 0;
    rec.timeout = model.timeout;
    rec.Datablock = tag;
    rec.statusByte = 0;
    dal.addToQueue(rec);
}

} // namespace

void DalTarsel::setLayerDate(int sceneIndex, int layerIndex, ModelScene scene) {
    const _Scene_Layer* s = sceneOf("setLayerDate", sceneIndex, scene);
    if (!s || !blocks::holds("setLayerDate", "layer", layerIndex, s->layerList.size()))
        return;
    const _LayerParam_Desktop& layer = s->layerList.at(layerIndex);
    Block block("setLayerDate", kLayerBuffer);
    appendLayerHead(block, layer);
    if (device::has(scene.deviceType, device::LayerExtraBytes))
        block.byte(layer.extraByte0).byte(layer.extraByte1).byte(layer.extraByte2);
    const int length = block.size() + 1;
    block.send(*this, scene.timeout, 0xF0, 0x01, layerIndex, length, 0);
}

void DalTarsel::setLayerDateMs(int sceneIndex, int layerIndex, ModelScene scene) {
    const _Scene_Layer* s = sceneOf("setLayerDateMs", sceneIndex, scene);
    if (!s || !blocks::holds("setLayerDateMs", "layer", layerIndex, s->layerList.size()))
        return;
    const _LayerParam_Desktop& layer = s->layerList.at(layerIndex);
    Block block("setLayerDateMs", kLayerBuffer);
    appendLayerHead(block, layer);
    block.byte(layer.containerIndex);
    block.send(*this, scene.timeout, 0xF0, 0x01, layerIndex, 21, 0);
}

void DalTarsel::setSceneDate(int sceneIndex, ModelScene scene) {
    const auto* layers = layersOf("setSceneDate", sceneIndex, scene);
    if (!layers || !blocks::holdsCount("setSceneDate", "bank", scene.getMaxBankCount(), kBankBytes))
        return;
    const _Scene_Layer& s = scene.sceneList.at(sceneIndex);
    Block block("setSceneDate", kSceneBuffer);
    for (int i = 0; i < scene.getMaxLayerCount(); ++i) {
        const _LayerParam_Desktop& layer = (*layers)[i];
        appendLayerHead(block, layer);
        block.byte(layer.alpha).byte(layer.order);
    }
    for (int j = 0; j < scene.getMaxBankCount(); ++j)
        block.byte(s.bankValues[j]);
    block.byte(s.backgroundIndex);
    block.sendSized(*this, scene.timeout, 0xF0, 0x08, sceneIndex);
}

void DalTarsel::setLayerAlphaAndOrder(int sceneIndex, ModelScene scene) {
    const auto* layers = layersOf("setLayerAlphaAndOrder", sceneIndex, scene);
    if (!layers)
        return;
    const int n = scene.getMaxLayerCount();
    // All alphas first, then all orders.
    Block block("setLayerAlphaAndOrder", kLayerBuffer);
    for (int i = 0; i < n; ++i)
        block.byte((*layers)[i].alpha);
    for (int i = 0; i < n; ++i)
        block.byte((*layers)[i].order);
    block.sendSized(*this, scene.timeout, 0xF0, 0x02, sceneIndex);
}

void DalTarsel::setSceneLayerLocked(int sceneIndex, ModelScene& scene) {
    sendPerLayer(*this, "setSceneLayerLocked", kLayerBuffer, kFixedTimeout, 0x17, sceneIndex, scene,
                 &_LayerParam_Desktop::locked);
}

void DalTarsel::setSceneLayerGroupNum(int sceneIndex, ModelScene& scene) {
    sendPerLayer(*this, "setSceneLayerGroupNum", kLayerBuffer, scene.timeout, 0x1A, sceneIndex,
                 scene, &_LayerParam_Desktop::groupNum);
}

void DalTarsel::setLayerContainerIndex(int timeout, int sceneIndex, ModelScene scene) {
    if (!device::has(Utility_Manage::getDeviceType(), device::ContainerIndexes))
        return;
    sendPerLayer(*this, "setLayerContainerIndex", kContainerIndexBuffer, timeout, 0x1D, sceneIndex,
                 scene, &_LayerParam_Desktop::containerIndex);
}

void DalTarsel::setSaveCurrentBlackground(int sceneIndex, ModelScene& scene) {
    scene.timeout = kFixedTimeout; // the caller's scene keeps it, as the application expects
    const _Scene_Layer* s = sceneOf("setSaveCurrentBlackground", sceneIndex, scene);
    if (!s)
        return;
    f_SendCmd(kFixedTimeout, 0x68, 0x1C, s->backgroundIndex, 0, 0, nullptr, 0, QString());
}

void DalTarsel::setCurrentSceneIndexForSysPlan(int sceneIndex, QString tag, ModelTarsel model) {
    queueDirectly(*this, 0x68, 0x18, sceneIndex, tag, model);
}

void DalTarsel::doTakeForSysPlan(int value, QString tag, ModelTarsel model) {
    queueDirectly(*this, 0x78, 0x00, value, tag, model);
}
