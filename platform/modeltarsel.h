#pragma once

// The device model of one processor, as far as the data-access library reads it.
// Each count accessor is backed by a public member that the application sets.
class ModelTarsel {
public:
    virtual ~ModelTarsel() = default;

    int timeout = 0; // reply time-out of most commands, in milliseconds

    int maxOutputCount = 0;
    int maxSourceCount = 0;
    int maxOutPutBoardCount = 0;
    int maxLayerCount = 0;
    int maxInputBoardCount = 0;
    int maxContainerCount = 0;

    int getMaxOutputCount() const { return maxOutputCount; }
    int getMaxSourceCount() const { return maxSourceCount; }
    int getMaxOutPutBoardCount() const { return maxOutPutBoardCount; }
    int getMaxLayerCount() const { return maxLayerCount; }
    int getMaxInputBoardCount() const { return maxInputBoardCount; }
    int getMaxContainerCount() const { return maxContainerCount; }
};
