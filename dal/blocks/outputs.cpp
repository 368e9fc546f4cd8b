#include "dalTarsel.h"

#include "../catalog/catalog_rows.h"
#include "block_builder.h"

#include <algorithm>

using blocks::Block;

namespace {

constexpr int kPreviewBuffer = 1024;
constexpr int kLoopTimingBytes = 144;
constexpr int kLoopTimesBytes = 128;

// DAT4 of a DE command: nothing, the high byte of the same member, or a second member.
enum class High { None, SameMember, Polarity2 };

void sendDe(DalTarsel& dal, const char* operation, int output, const ModelTarsel& model, int dat1,
            int _DeInfo::*member, High high) {
    if (!blocks::holds(operation, "output", output, model.deInfos.size()))
        return;
    const _DeInfo& de = model.deInfos.at(output);
    const int value = de.*member;
    const int dat4 = high == High::SameMember  ? (value >> 8) & 0xFF
                     : high == High::Polarity2 ? de.dePolarity2
                                               : 0;
    dal.f_SendCmd(model.timeout, 0x86, dat1, rows::outputSelector(output, model), value, dat4,
                  nullptr, 0, QString());
}

// A fixed-length bank-player block: DAT3 and DAT4 stay 0.
void sendLoopBlock(DalTarsel& dal, const char* operation, const QVector<unsigned char>& bytes,
                   int length, int dat1, int timeout) {
    if (!blocks::holdsCount(operation, "loop byte", length, bytes.size()))
        return;
    Block block(operation, length + 1);
    for (int i = 0; i < length; ++i)
        block.byte(bytes.at(i));
    block.send(dal, timeout, 0x8B, dat1, 1, 0, 0);
}

} // namespace

// Y has sub-command 0x02 and X 0x04, although X precedes Y in the record.
void DalTarsel::setDeSwitch(int output, ModelTarsel model) {
    sendDe(*this, "setDeSwitch", output, model, 0x00, &_DeInfo::deSwitch, High::None);
}
void DalTarsel::setDeY(int output, ModelTarsel model) {
    sendDe(*this, "setDeY", output, model, 0x02, &_DeInfo::deY, High::SameMember);
}
void DalTarsel::setDeX(int output, ModelTarsel model) {
    sendDe(*this, "setDeX", output, model, 0x04, &_DeInfo::deX, High::SameMember);
}
void DalTarsel::setDeWidth(int output, ModelTarsel model) {
    sendDe(*this, "setDeWidth", output, model, 0x06, &_DeInfo::deWidth, High::SameMember);
}
void DalTarsel::setDeHeight(int output, ModelTarsel model) {
    sendDe(*this, "setDeHeight", output, model, 0x08, &_DeInfo::deHeight, High::SameMember);
}
void DalTarsel::setDeOutputMode(int output, ModelTarsel model) {
    sendDe(*this, "setDeOutputMode", output, model, 0x0A, &_DeInfo::deOutputMode, High::None);
}
void DalTarsel::setDePolarity(int output, ModelTarsel model) {
    sendDe(*this, "setDePolarity", output, model, 0x0C, &_DeInfo::dePolarity1, High::Polarity2);
}
void DalTarsel::setDeDataRange(int output, ModelTarsel model) {
    sendDe(*this, "setDeDataRange", output, model, 0x0E, &_DeInfo::deDataRange, High::None);
}
void DalTarsel::setDeColorSpace(int output, ModelTarsel model) {
    sendDe(*this, "setDeColorSpace", output, model, 0x12, &_DeInfo::deColorSpace, High::None);
}
void DalTarsel::setDeOutputSignal(int output, ModelTarsel model) {
    sendDe(*this, "setDeOutputSignal", output, model, 0x14, &_DeInfo::deOutputSignal, High::None);
}

void DalTarsel::setTPMode(int output, ModelTarsel model) {
    if (!blocks::holds("setTPMode", "output", output, model.testPatternModes.size()))
        return;
    f_SendCmd(model.timeout, 0x7D, 0x00, output, model.testPatternModes.at(output), 0, nullptr, 0,
              QString());
}

void DalTarsel::setTPColor(int output, ModelTarsel model) {
    const int held = std::min({model.testPatternColor1.size(), model.testPatternColor2.size(),
                               model.testPatternColor3.size()});
    if (!blocks::holds("setTPColor", "output", output, held))
        return;
    // The output index is not sent: DAT2 to DAT4 carry the colours, the last list first.
    f_SendCmd(model.timeout, 0x7D, 0x02, model.testPatternColor3.at(output),
              model.testPatternColor2.at(output), model.testPatternColor1.at(output), nullptr, 0,
              QString());
}

void DalTarsel::setOutPutBrightness(int output, ModelTarsel model) {
    const bool all = output == model.getMaxOutputCount();
    if (!all &&
        !blocks::holds("setOutPutBrightness", "output", output, model.outputBrightness.size()))
        return;
    const int value = all ? model.allOutputsBrightness : model.outputBrightness.at(output);
    f_SendCmd(model.timeout, 0x76, 0x20, rows::outputSelector(output, model), value, 0, nullptr, 0,
              QString());
}

void DalTarsel::setOutput3DState(ModelTarsel model, int output) {
    if (output < 0 || output >= model.getMaxOutputCount() ||
        !blocks::holds("setOutput3DState", "output", output, model.output3DStates.size()))
        return;
    f_SendCmd(model.timeout, 0x76, 0x22, output, model.output3DStates.at(output), 0, nullptr, 0,
              QString());
}

void DalTarsel::setPreviewPort(ModelTarsel model) {
    const int c = model.getMaxOutputCount();
    if (!blocks::holdsCount("setPreviewPort", "output", c, model.previewPorts.size()))
        return;
    Block block("setPreviewPort", kPreviewBuffer);
    for (int i = 0; i < c; ++i)
        block.byte(model.previewPorts.at(i));
    block.sendSized(*this, model.timeout, 0xF0, 0x14, 0);
}

void DalTarsel::setBankPlayLoopTiming(ModelBankPlayer player) {
    sendLoopBlock(*this, "setBankPlayLoopTiming", player.loopTimings, kLoopTimingBytes, 0x04,
                  player.timeout);
}

void DalTarsel::setBankPlayLoopTimes(ModelBankPlayer player) {
    sendLoopBlock(*this, "setBankPlayLoopTimes", player.loopTimes, kLoopTimesBytes, 0x08,
                  player.timeout);
}

// Two probes from one record, queued directly: no routing, trace or connect type.
void DalTarsel::searchDeivce(ModelTarsel model) {
    model_Protocoldata rec;
    rec.timeout = model.timeout;
    rec.statusByte = 1;
    rec.cmdHead[2] = 0x68;
    rec.cmdHead[3] = 0x01;
    addToQueue(rec);
    rec.cmdHead[2] = 0x6A;
    rec.cmdHead[3] = 0x11;
    addToQueue(rec);
}
