#pragma once

#include "model_pommetparam.h"
#include "modelbankplayer.h"
#include "modelscene.h"
#include "modeltarsel.h"

#include <QString>

// The model records that dalctl hands to operations taking one: built-in defaults (time-out
// 3000 ms, small counts, every list long enough for them), scalar members overridable from a
// JSON file.
struct Models {
    ModelTarsel tarsel;
    ModelScene scene;
    ModelBankPlayer bankPlayer;
    Model_PommetParam keyboard;

    static Models defaults();
    // Applies {"member": value} to every record with that member and
    // {"RecordClass": {"member": value}} to one record. Returns an error text, empty on success.
    QString override(const QByteArray& json);
    // A copy whose numeric scalar members (those override takes) all hold `value`.
    Models withNumbers(int value) const;
};

// Which record of Models an operation's parameter of type T takes.
template <class T>
struct ModelArg;
template <>
struct ModelArg<ModelTarsel> {
    static ModelTarsel& from(Models& m) { return m.tarsel; }
};
template <>
struct ModelArg<ModelScene> {
    static ModelScene& from(Models& m) { return m.scene; }
};
template <>
struct ModelArg<ModelBankPlayer> {
    static ModelBankPlayer& from(Models& m) { return m.bankPlayer; }
};
template <>
struct ModelArg<Model_PommetParam> {
    static Model_PommetParam& from(Models& m) { return m.keyboard; }
};
