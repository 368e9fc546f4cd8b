#pragma once

// The bank-player model read by the bank-player loop commands.
class ModelBankPlayer {
public:
    virtual ~ModelBankPlayer() = default;
};
