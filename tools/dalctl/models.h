#pragma once

#include "kinds.h"
#include "model_pommetparam.h"
#include "modelbankplayer.h"
#include "modelscene.h"
#include "modeltarsel.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>

// The model records that dalctl hands to operations taking one: built-in defaults (time-out
// 3000 ms, small counts, every list long enough for them, distinct values so that a member read
// from the wrong place shows), changed from JSON by --model.
struct Models {
    ModelTarsel tarsel;
    ModelScene scene;
    ModelBankPlayer bankPlayer;
    Model_PommetParam keyboard;
    // The keyboard's fixed label length, a static member of its record: set before each call.
    int oledLength = 4;
    // What was changed since the built-in models, in order: records equal in their changes are
    // equal, which lets runs of calls be kept by what they were called with.
    QString changes;

    static const Models& defaults();
    // Applies {"ModelScene": {...}, ...}: whole records or any part of them, lists included (an
    // array changes the entries it names and keeps the others, adding those past the end), and
    // {"member": value} for every record with that top-level member, which a record's own
    // object overrides. Returns an error text, empty on success.
    QString apply(const QByteArray& json);
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

// The records' members by path: "ModelScene.sceneList[1].layerList[2].regionA.x". One
// description of each record and element type drives reading and writing JSON and this access.
namespace members {

enum class Node { Struct, List, Array, Value, Missing };

struct Leaf {
    Node node = Node::Missing;
    args::Kind kind = args::Kind::Integer; // a value's: Integer, Boolean, Decimal or Text
    long long min = 0;                     // an integer's range
    long long max = 0;
};

// What lies at `path`: a record, element, list or array, or a value and its range.
Leaf at(const Models& m, const QString& path);
// The paths one level below `path`: the members of a record or element, the entries of a list
// or array; none below a value.
QStringList children(const Models& m, const QString& path);
// A value as a word: a number in decimal, a text as it stands. Empty when there is none.
QString get(const Models& m, const QString& path);
// Sets a value from its word; false when the path holds no value or the word does not fit.
bool set(Models& m, const QString& path, const QString& word);
// Gives the list at `path` `size` entries; new ones copy the last (or are default-made).
bool resize(Models& m, const QString& path, int size);
// Changes every value at or below `path` by `step` (a text gains a digit, or for an even
// step becomes another).
void shift(Models& m, const QString& path, int step);
// Every list at or below `path`.
QStringList lists(const Models& m, const QString& path);
// The values at the given paths as the JSON that --model reads: one object per record.
QJsonObject json(const Models& m, const QStringList& paths);

} // namespace members
