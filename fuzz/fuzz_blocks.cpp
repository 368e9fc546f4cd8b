// Arbitrary model counts, list sizes and arguments through every data-block operation.
// Input: one byte choosing the operation, one choosing the family of DalTarsel it runs on, one
// giving how many model changes follow (three bytes each: which count or list of the records
// the operation reads, and its new value or size); then, for each argument the operation takes,
// a byte choosing its sample word or a word built from the bytes after it for the argument's
// kind (an integer near its range's edges, a text, hex bytes, a list of numbers, a JSON object
// of the members the operation reads). Where the input runs out, the sample words stand.
#include "pacing.h"
#include "records.h"
#include "registry.h"
#include "session.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdint>
#include <map>

namespace {

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

class Input {
public:
    Input(const uint8_t* data, size_t size) : data(data), size(size) {}
    bool empty() const { return at >= size; }
    int byte() { return at < size ? data[at++] : 0; }
    // A small signed value, so that counts and indexes land near the lists' edges.
    int small() {
        if (at >= size)
            return 0;
        const int value = int8_t(data[at++]);
        return value * (at % 3 == 0 ? 3 : 1);
    }
    int word16() { return int(int16_t(uint16_t(byte() | byte() << 8))); }

private:
    const uint8_t* data;
    size_t size;
    size_t at = 0;
};

// The operations of the data-block lists, and every other operation written out by hand that
// reads a model record or a buffer.
QVector<const Operation*> blockOperations() {
    const QStringList blocks = QStringList()
#define DAL_SEND(name, params, ...) << QStringLiteral(#name #params)
#define DAL_OP(ret, name, params) << QStringLiteral(#name #params)
#include "blocks/containers.def"
#include "blocks/dsk.def"
#include "blocks/outports.def"
#include "blocks/outputs.def"
#include "blocks/scenes.def"
#include "catalog/setters.def"
#undef DAL_OP
#undef DAL_SEND
        ;
    const QStringList handWritten = QStringList()
#define DAL_SEND(...)
#define DAL_OP(ret, name, params) << QStringLiteral(#name #params)
#include "dalTarsel.def"
        ;
    QVector<const Operation*> ops;
    for (const Operation& op : operations()) {
        if (op.className != QLatin1String("DalTarsel"))
            continue;
        const QString declared = op.name + op.params;
        const bool readsBlock =
            !op.modelRecords().isEmpty() ||
            std::any_of(op.arguments.begin(), op.arguments.end(), [](const Parameter& p) {
                return p.kind == args::Kind::Bytes || p.kind == args::Kind::Numbers;
            });
        if (blocks.contains(declared) || (handWritten.contains(declared) && readsBlock))
            ops << &op;
    }
    return ops;
}

// What a model change may reach in one record: its numbers (the counts among them) and its
// lists, scenes beyond the built-in ones included.
struct Reach {
    QStringList numbers;
    QStringList lists;
};

const Reach& reachOf(const QString& record) {
    static std::map<QString, Reach> all;
    auto it = all.find(record);
    if (it != all.end())
        return it->second;
    const Models defaults = Models::defaults();
    Reach reach;
    for (const QString& path : members::children(defaults, record)) {
        const members::Leaf leaf = members::at(defaults, path);
        if (leaf.node == members::Node::Value && leaf.kind == args::Kind::Integer)
            reach.numbers << path;
    }
    reach.lists = members::lists(defaults, record);
    if (record == QLatin1String("ModelScene"))
        for (int scene = 0; scene < 8; ++scene)
            reach.lists << QStringLiteral("ModelScene.sceneList[%1].layerList").arg(scene);
    reach.lists.removeDuplicates();
    return all[record] = reach;
}

void change(Models& models, const Operation& op, Input& in) {
    const QStringList records = op.modelRecords();
    const int changes = in.byte() % 16;
    for (int i = 0; i < changes && !records.isEmpty(); ++i) {
        const Reach& reach = reachOf(records.at(in.byte() % records.size()));
        const int which = in.byte();
        const int value = in.small();
        if (which & 1 && !reach.lists.isEmpty())
            members::resize(models, reach.lists.at((which >> 1) % reach.lists.size()),
                            qBound(0, value + 4, 300));
        else if (!reach.numbers.isEmpty())
            members::set(models, reach.numbers.at((which >> 1) % reach.numbers.size()),
                         QString::number(value));
    }
}

QString integerWord(const Parameter& p, Input& in) {
    long long value = 0;
    switch (in.byte() % 4) {
    case 0:
        value = in.small();
        break;
    case 1:
        value = p.min + in.byte() % 4;
        break;
    case 2:
        value = p.max - in.byte() % 4;
        break;
    default:
        value = in.word16();
        break;
    }
    if (p.max > p.min)
        value = qBound(p.min, value, p.max);
    return QString::number(value);
}

QString textWord(Input& in) {
    static const QString kCharacters = QStringLiteral("x\"\\<>&=,()\u00e9\u2713 \t0");
    const int length = in.byte() * 8;
    QString text;
    for (int i = 0; i < 4 && text.size() < length; ++i)
        text += QString(length / 4 + 1, kCharacters.at(in.byte() % kCharacters.size()));
    return text.left(length);
}

QString bytesWord(Input& in) {
    QByteArray bytes(in.byte() * 4, '\0');
    const int seed = in.byte();
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(seed * (i + 1));
    return QString::fromLatin1(bytes.toHex());
}

QString numbersWord(Input& in, QChar separator, bool negative) {
    QStringList numbers;
    const int count = in.byte() % 64;
    for (int i = 0; i < count; ++i)
        numbers << QString::number(negative ? in.small() : in.byte());
    return numbers.join(separator);
}

QString jsonWord(const Operation& op, Input& in) {
    QJsonObject object;
    for (const QString& member : op.jsonMembers)
        switch (in.byte() % 4) {
        case 0:
            break;
        case 1:
            object.insert(member, in.small());
            break;
        case 2:
            object.insert(member, in.word16() * 1000);
            break;
        default:
            object.insert(member, textWord(in));
            break;
        }
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QStringList wordsFor(const Operation& op, Input& in) {
    QStringList words = op.sampleWords();
    for (int i = 0; i < op.arguments.size() && !in.empty(); ++i) {
        const Parameter& p = op.arguments[i];
        if (in.byte() % 4 == 0)
            continue; // the sample word
        switch (p.kind) {
        case args::Kind::Integer:
            words[i] = integerWord(p, in);
            break;
        case args::Kind::Boolean:
            words[i] = in.byte() & 1 ? QStringLiteral("true") : QStringLiteral("false");
            break;
        case args::Kind::Decimal:
            words[i] = QString::number(in.small() / 7.0);
            break;
        case args::Kind::Text:
            words[i] = textWord(in);
            break;
        case args::Kind::Bytes:
            words[i] = bytesWord(in);
            break;
        case args::Kind::Numbers:
            words[i] = numbersWord(in, QLatin1Char(','), true);
            break;
        case args::Kind::DashNumbers:
            words[i] = numbersWord(in, QLatin1Char('-'), false);
            break;
        case args::Kind::Json:
            words[i] = jsonWord(op, in);
            break;
        default:
            break; // records keep their sample
        }
    }
    return words;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
        return true;
    }();
    (void)silenced;
    static const QVector<const Operation*> ops = blockOperations();
    static const QVector<const Family*> routed = [] {
        QVector<const Family*> found;
        for (const Family& f : families())
            if (f.className == QLatin1String("DalTarsel"))
                found << &f;
        return found;
    }();
    if (size < 1 || ops.isEmpty())
        return 0;

    Input in(data, size);
    Call call;
    call.op = ops[in.byte() % ops.size()];
    call.utility.deviceType = routed[in.byte() % routed.size()]->code;
    call.models = Models::defaults();
    change(call.models, *call.op, in);
    call.words = wordsFor(*call.op, in);
    try {
        run(call);
    } catch (const ArgError&) {
    }
    return 0;
}
