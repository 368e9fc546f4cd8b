#include "dalTarsel.h"

#include "block_builder.h"
#include "devices.h"

using blocks::Block;

namespace {

constexpr int kWorkBuffer = 2049;

struct ModeRow {
    int mode;
    int sent;
};
// Not monotonic on purpose; any mode without a row is sent as 0.
const ModeRow kModeTable[] = {{0, 3}, {1, 2}, {6, 1}, {5, 0}, {7, 7}, {8, 8}};

int modeByte(int mode, int deviceType) {
    if (!device::has(deviceType, device::ContainerModes))
        return mode;
    for (const ModeRow& row : kModeTable)
        if (row.mode == mode)
            return row.sent;
    return 0;
}

// The scene's takes when they hold one entry per container; otherwise false, with a warning.
bool takesHeld(const char* operation, const ModelScene& scene) {
    return blocks::holdsCount(operation, "container", scene.getMaxContainerCount(),
                              scene.takes.size());
}

} // namespace

void DalTarsel::setContainerParam(ModelTarsel& model, int deviceType) {
    const int c = model.getMaxContainerCount();
    if (!blocks::holdsCount("setContainerParam", "container", c, model.containerParams.size()))
        return;
    Block block("setContainerParam", kWorkBuffer);
    for (int k = 0; k < c; ++k) {
        const _ContainerParam_Destktop& p = model.containerParams.at(k);
        block.word(p.containerParam0).word(p.containerParam1).word(p.containerParam2);
        block.word(p.containerParam3).word(p.containerParam4);
        block.byte(modeByte(p.containerMode, deviceType));
        block.byte(p.containerParam9).byte(p.containerParam11).byte(p.containerParam12);
    }
    block.sendSized(*this, model.timeout, 0xF0, 0x3B, 0);
}

void DalTarsel::setBlackDuetoContainer(ModelScene scene) {
    if (!takesHeld("setBlackDuetoContainer", scene))
        return;
    Block block("setBlackDuetoContainer", kWorkBuffer);
    for (int k = 0; k < scene.getMaxContainerCount(); ++k)
        block.byte(scene.takes.at(k).blackValue);
    block.sendSized(*this, scene.timeout, 0xF0, 0x39, 0);
}

void DalTarsel::setAlphaTimeDuetoContainer(ModelScene scene) {
    if (!takesHeld("setAlphaTimeDuetoContainer", scene))
        return;
    Block block("setAlphaTimeDuetoContainer", kWorkBuffer);
    for (int k = 0; k < scene.getMaxContainerCount(); ++k) {
        block.word(blocks::alphaMilliseconds(scene.takes.at(k).alphaTime));
    }
    block.sendSized(*this, scene.timeout, 0xF0, 0x3A, 0);
}

void DalTarsel::setTakeDuetoContainer(int value, int selector, ModelScene scene) {
    // Selector 0, 1, 2 and 3 choose the member; 2 and 3 share one.
    static unsigned char _Take_Desktop::*const kSelected[] = {
        &_Take_Desktop::takeValue0, &_Take_Desktop::takeValue1, &_Take_Desktop::takeValue2,
        &_Take_Desktop::takeValue2};
    if (selector < 0 || selector > 3 || !takesHeld("setTakeDuetoContainer", scene))
        return;
    Block block("setTakeDuetoContainer", kWorkBuffer);
    for (int k = 0; k < scene.getMaxContainerCount(); ++k)
        block.byte(scene.takes.at(k).*kSelected[selector]);
    block.sendSized(*this, scene.timeout, 0xF0, 0x38, value);
}

void DalTarsel::setCurrSceneLayerXYWHR(int group, int item, ModelScene scene) {
    if (!blocks::holds("setCurrSceneLayerXYWHR", "group", group, scene.outProperties.size()) ||
        !blocks::holds("setCurrSceneLayerXYWHR", "item", item,
                       scene.outProperties.at(group).size()))
        return;
    const _OutProperty& p = scene.outProperties.at(group).at(item);
    // Members 26, 27, 28 before 24 and 25; member 23 last.
    Block block("setCurrSceneLayerXYWHR", kWorkBuffer);
    block.word(p.outProp26).word(p.outProp27).word(p.outProp28).word(p.outProp24).word(p.outProp25);
    block.byte(p.outProp23);
    block.send(*this, scene.timeout, 0xF0, 0x33, item, 12, 0);
}

void DalTarsel::set4k60InputProperty(ModelTarsel model, int input) {
    if (!blocks::holds("set4k60InputProperty", "input", input, model.inProperty4K60.size()))
        return;
    const int* m = model.inProperty4K60.at(input).member;
    Block block("set4k60InputProperty", kWorkBuffer);
    for (int i = 0; i <= 5; ++i)
        block.byte(m[i]);
    block.word(m[6]).word(m[7]);
    for (int i = 8; i <= 12; ++i)
        block.byte(m[i]);
    block.send(*this, model.timeout, 0xF0, 0x27, input, 16, 0);
}

void DalTarsel::set4k60CropInfo(ModelScene scene, int input) {
    if (!blocks::holds("set4k60CropInfo", "input", input, scene.inPropertyCrops4K60.size()))
        return;
    const int* m = scene.inPropertyCrops4K60.at(input).member;
    Block block("set4k60CropInfo", kWorkBuffer);
    for (int group = 0; group < 4; ++group)
        block.word(m[3 * group]).word(m[3 * group + 1]).byte(m[3 * group + 2]);
    block.send(*this, scene.timeout, 0xF0, 0x2B, input, 21, 0);
}
