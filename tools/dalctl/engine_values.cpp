// The values a call reads, and the parts of a record an input says.
#include "engine_detail.h"

#include "json_members.h"

#include <QJsonDocument>

namespace engine {

namespace {

QByteArray headBytes(const model_Protocoldata& rec, int from, int count) {
    return QByteArray(reinterpret_cast<const char*>(rec.cmdHead) + from, count);
}

Part text(const char* name, const QString& value) { return {QLatin1String(name), false, value}; }
Part number(const char* name, long long value) {
    return {QLatin1String(name), false, QString::number(value)};
}
Part bytes(const char* name, const QByteArray& value) {
    return {QLatin1String(name), true, detail::latin1(value)};
}

} // namespace

QVector<Part> partsOf(const model_Protocoldata& rec, const Target& shape) {
    QVector<Part> parts;
    for (const Part& p : shape.parts) {
        const QString& n = p.name;
        if (n == QLatin1String("command"))
            parts << bytes("command", headBytes(rec, 2, 5));
        else if (n == QLatin1String("head"))
            parts << bytes("head", headBytes(rec, 0, 8));
        else if (n == QLatin1String("block"))
            parts << bytes("block", rec.arryDatablock);
        else if (n == QLatin1String("text"))
            parts << text("text", rec.Datablock);
        else if (n == QLatin1String("strAux1"))
            parts << text("strAux1", rec.strAux1);
        else if (n == QLatin1String("deviceType"))
            parts << number("deviceType", rec.deviceType);
        else if (n == QLatin1String("connectType"))
            parts << number("connectType", rec.connectType);
        else if (n == QLatin1String("dataType"))
            parts << number("dataType", rec.dataType);
        else if (n == QLatin1String("msgCode"))
            parts << number("msgCode", rec.msgCode);
        else if (n == QLatin1String("statusByte"))
            parts << number("statusByte", rec.statusByte);
        else if (n == QLatin1String("timeout"))
            parts << number("timeout", rec.timeout);
    }
    return parts;
}

QVector<Part> partsOf(const model_OsdParam& rec, const Target& shape) {
    QVector<Part> parts;
    for (const Part& p : shape.parts) {
        if (p.name == QLatin1String("header"))
            parts << bytes("header", QByteArray(reinterpret_cast<const char*>(rec.frameHead),
                                                int(sizeof rec.frameHead)));
        else if (p.name == QLatin1String("payload"))
            parts << bytes("payload", rec.payload);
        else if (p.name == QLatin1String("tag"))
            parts << text("tag", rec.tag);
        else if (p.name == QLatin1String("timeout"))
            parts << number("timeout", rec.timeout);
    }
    return parts;
}

Target wholeRecord(const model_Protocoldata& rec) {
    Target t;
    for (const char* name : {"deviceType", "connectType", "dataType", "msgCode", "statusByte",
                             "timeout", "strAux1", "head", "text", "block"})
        t.parts << Part{QLatin1String(name), false, QString()};
    t.parts = partsOf(rec, t);
    return t;
}

Target wholeRecord(const model_OsdParam& rec) {
    Target t;
    t.osd = true;
    for (const char* name : {"tag", "timeout", "header", "payload"})
        t.parts << Part{QLatin1String(name), false, QString()};
    t.parts = partsOf(rec, t);
    return t;
}

Target headAndBlock(const QByteArray& head, const QByteArray& block) {
    return {false, {bytes(head.size() == 8 ? "head" : "command", head), bytes("block", block)}};
}

Target traceLine(const QByteArray& head, const QByteArray& block, const QString& value) {
    return {false, {bytes("command", head), bytes("block", block), text("text", value)}};
}

Target textAlone(const QString& value) { return {false, {text("text", value)}}; }

Target frameAlone(const QByteArray& frame) { return {false, {bytes("block", frame)}}; }

Target osdFrame(const QByteArray& frame) {
    return {true, {bytes("header", frame.left(11)), bytes("payload", frame.mid(11))}};
}

// ---- variables ---------------------------------------------------------------------------------

QString Variable::name(const Operation& op) const {
    const QString argument = op.arguments.value(this->argument).name;
    switch (where) {
    case Argument:
        return argument;
    case Element:
        return QStringLiteral("%1[%2]").arg(argument).arg(index);
    case Length:
        return QStringLiteral("length of %1").arg(argument);
    case Member:
        return argument + QLatin1Char('.') + path;
    case Model: {
        // The record's class gives way to the parameter's name: "scene.sceneList[1]...".
        const QString record = path.section(QLatin1Char('.'), 0, 0).section(QLatin1Char('['), 0, 0);
        for (const Parameter& p : op.parameters)
            if (p.kind == args::Kind::Model && p.type.startsWith(record))
                return p.name + path.mid(record.size());
        return path;
    }
    case Utility: {
        const UtilityOption* o = utilityOption(path);
        return o ? QLatin1String(o->name) : path;
    }
    }
    return QString();
}

namespace {

// The words of a list argument's elements.
QStringList elementsOf(const QString& word, args::Kind kind) {
    return word.isEmpty() ? QStringList() : word.split(QLatin1Char(args::separatorOf(kind)));
}

QJsonObject objectOf(const QString& word) {
    return QJsonDocument::fromJson(word.toUtf8()).object();
}

} // namespace

QString valueOf(const Call& call, const Variable& v) {
    const QString word = call.words.value(v.argument);
    switch (v.where) {
    case Variable::Argument:
        return word;
    case Variable::Element:
        return elementsOf(word, call.op->arguments[v.argument].kind)
            .value(v.index, QStringLiteral("0"));
    case Variable::Length:
        return QString::number(elementsOf(word, call.op->arguments[v.argument].kind).size());
    case Variable::Member: {
        const QJsonValue member = objectOf(word).value(v.path);
        return member.isString() ? member.toString()
                                 : QString::number(member.toVariant().toLongLong());
    }
    case Variable::Model:
        return members::get(call.models, v.path);
    case Variable::Utility:
        return utilityOption(v.path)->get(call.utility);
    }
    return QString();
}

bool assign(Call& call, const Variable& v, const QString& value) {
    if (v.where == Variable::Model)
        return members::set(call.models, v.path, value);
    if (v.where == Variable::Utility) {
        utilityOption(v.path)->set(call.utility, value);
        return true;
    }
    QString& word = call.words[v.argument];
    switch (v.where) {
    case Variable::Argument:
        word = value;
        return true;
    case Variable::Element:
    case Variable::Length: {
        const args::Kind kind = call.op->arguments[v.argument].kind;
        QStringList elements = elementsOf(word, kind);
        if (v.where == Variable::Length) {
            const int size = value.toInt();
            if (size < 0)
                return false;
            while (elements.size() < size)
                elements << (elements.isEmpty() ? QStringLiteral("0") : elements.last());
            elements = elements.mid(0, size);
        } else {
            while (elements.size() <= v.index)
                elements << QStringLiteral("0");
            elements[v.index] = value;
        }
        word = elements.join(QLatin1Char(args::separatorOf(kind)));
        return true;
    }
    case Variable::Member: {
        QJsonObject object = objectOf(word);
        object.insert(v.path, v.kind == args::Kind::Text ? QJsonValue(value)
                                                         : QJsonValue(value.toLongLong()));
        word = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
        return true;
    }
    default:
        return false;
    }
}

namespace detail {

bool pastTheEnd(const Call& call, const Variable& v) {
    return v.where == Variable::Element &&
           v.index >=
               elementsOf(call.words[v.argument], call.op->arguments[v.argument].kind).size();
}

QVector<Variable> variablesOf(const Call& call) {
    QVector<Variable> all;
    const Operation& op = *call.op;
    for (int i = 0; i < op.arguments.size(); ++i) {
        const Parameter& p = op.arguments[i];
        switch (p.kind) {
        case args::Kind::Numbers:
        case args::Kind::DashNumbers: {
            // The elements the call may read, beyond those given: a list reads zeros past its
            // end, or is zero-padded.
            const int count = std::max(int(elementsOf(call.words[i], p.kind).size()), 16);
            all << Variable{Variable::Length, i, -1, QString(), args::Kind::Integer, 0, 1024};
            for (int e = 0; e < count; ++e)
                all << Variable{Variable::Element,
                                i,
                                e,
                                QString(),
                                args::Kind::Integer,
                                p.kind == args::Kind::Numbers ? p.min : 0,
                                p.max};
            break;
        }
        case args::Kind::Json:
            for (const dal::json::Member& m : dal::json::membersOf(op.name))
                all << Variable{Variable::Member,
                                i,
                                -1,
                                QLatin1String(m.name),
                                m.kind == dal::json::Kind::Text ? args::Kind::Text
                                                                : args::Kind::Integer,
                                INT_MIN,
                                INT_MAX};
            break;
        default:
            all << Variable{Variable::Argument, i, -1, QString(), p.kind, p.min, p.max};
        }
    }
    for (const UtilityOption& o : utilityOptions())
        all << Variable{Variable::Utility,
                        -1,
                        -1,
                        QLatin1String(o.option),
                        o.text ? args::Kind::Text : args::Kind::Integer,
                        o.min,
                        o.max};
    return all;
}

} // namespace detail

bool explainable(const Operation& op) {
    for (const Parameter& p : op.parameters)
        if (p.name == QLatin1String("cmd") || p.kind == args::Kind::Record ||
            p.kind == args::Kind::OsdRecord)
            return false;
    return true;
}

} // namespace engine
