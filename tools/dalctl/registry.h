#pragma once

#include "arguments.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <tuple>
#include <utility>

class DalTarsel;
class Dal_Pommet;
class dal_Osd;

// The three classes' objects that operations run on.
struct Targets {
    DalTarsel& tarsel;
    Dal_Pommet& pommet;
    dal_Osd& osd;
};

// One parameter of an operation, as its list declares it.
struct Parameter {
    QString name;
    QString type; // as declared: "int", "QString const&", "DashNumbers"
    args::Kind kind;
    long long min = 0; // an integer's range
    long long max = 0;

    bool takesArgument() const { return args::takesArgument(kind); }
};

// One public operation of the library, callable with command-line words.
struct Operation {
    QString className;
    QString name;
    QString params; // the declaration's parameter list, "(int timeout, ModelTarsel model)"
    QVector<Parameter> parameters;
    QVector<Parameter> arguments; // the parameters that take a word, in order
    QStringList jsonMembers;      // what a JSON argument may hold: the members the call reads
    // Runs the operation with one word per argument; returns what it returned and what it
    // wrote to out-parameters, or throws ArgError.
    std::function<QString(Targets&, const QStringList&, Models&)> run;

    QString qualifiedName() const { return className + QStringLiteral("::") + name; }
    QString usage() const { return qualifiedName() + params; }
    QStringList sampleWords() const;
    // Which model records the operation reads: ModelTarsel, ModelScene...
    QStringList modelRecords() const;
};

// Every public operation of DalTarsel, Dal_Pommet and dal_Osd.
const QVector<Operation>& operations();
// The operations named `name` ("op" or "Class::op"), overloads included; only those of
// `preferredClass` where it has one of that name.
QVector<const Operation*> findOperations(const QString& name,
                                         const QString& preferredClass = QString());
// Names close to a misspelt one, closest first.
QStringList closestNames(const QString& name, int count);
// The fewest single-character insertions, deletions and changes that turn `a` into `b`.
int editDistance(QStringView a, QStringView b, Qt::CaseSensitivity cs);

namespace registry_detail {

QString describeResult(int value);
QString describeResult(const QByteArray& value);
QString describeResult(const model_Protocoldata& value);
QStringList splitParameters(const QString& params);
// Name and declared type of each parameter in a declaration's list.
QVector<QPair<QString, QString>> namesAndTypes(const QString& params);
QStringList jsonMembersOf(const QString& name);
// Refuses a word that its parameter's declared form does not allow.
void checkWords(const Operation& op, const QStringList& words);

template <class R, class Call, class... P, size_t... I>
QString invoke(Call call, const QStringList& texts, Models& models, std::index_sequence<I...>,
               const QVector<Parameter>& parameters) {
    std::tuple<args::Holder<P>...> holders;
    int next = 0;
    [[maybe_unused]] auto take = [&](auto& holder) {
        if constexpr (args::takesArgument(std::decay_t<decltype(holder)>::kind))
            holder.parse(texts.at(next++), models);
        else
            holder.parse(QString(), models);
    };
    (take(std::get<I>(holders)), ...);

    // A buffer must hold the bytes its length, the `len` after it, says are read.
    const std::optional<int> sizes[] = {std::get<I>(holders).bufferSize()..., std::nullopt};
    const std::optional<long long> integers[] = {std::get<I>(holders).integer()..., std::nullopt};
    for (size_t i = 0; i < sizeof...(P); ++i)
        for (size_t j = i + 1; sizes[i] && j < sizeof...(P); ++j)
            if (parameters.value(int(j)).name == QLatin1String("len") && integers[j] &&
                *integers[j] > *sizes[i])
                throw ArgError(QStringLiteral("len is %1 but the buffer holds %2 bytes")
                                   .arg(*integers[j])
                                   .arg(*sizes[i])
                                   .toStdString());

    QStringList shown;
    if constexpr (std::is_void_v<R>)
        call(std::get<I>(holders).get()...);
    else
        shown << QStringLiteral("returned: ") + describeResult(call(std::get<I>(holders).get()...));
    const QString outputs[] = {std::get<I>(holders).output()..., QString()};
    for (size_t i = 0; i < sizeof...(P); ++i)
        if (!outputs[i].isEmpty())
            shown << parameters.value(int(i)).name + QStringLiteral(": ") + outputs[i];
    return shown.join(QLatin1Char('\n'));
}

template <class C>
C& targetOf(Targets& t) {
    if constexpr (std::is_same_v<C, DalTarsel>)
        return t.tarsel;
    else if constexpr (std::is_same_v<C, Dal_Pommet>)
        return t.pommet;
    else
        return t.osd;
}

// An operation's parameters, each with its holder's kind; a text declared DashNumbers takes
// the numbers the library splits at dashes.
template <class... P>
Operation describe(const char* className, const char* name, const char* params) {
    Operation op;
    op.className = QString::fromLatin1(className);
    op.name = QString::fromLatin1(name);
    op.params = QString::fromLatin1(params);
    const auto declared = namesAndTypes(op.params);
    int i = 0;
    ((op.parameters << Parameter{declared.value(i).first, declared.value(i).second,
                                 args::Holder<P>::kind, args::Holder<P>::min, args::Holder<P>::max},
      ++i),
     ...);
    for (Parameter& p : op.parameters) {
        if (p.type == QLatin1String("DashNumbers"))
            p.kind = args::Kind::DashNumbers;
        if (p.kind == args::Kind::Text && p.name == QLatin1String("color"))
            p.kind = args::Kind::Colour;
        if (p.takesArgument())
            op.arguments << p;
    }
    op.jsonMembers = jsonMembersOf(op.name);
    return op;
}

template <class C, class R, class... P>
Operation makeOperation(const char* className, const char* name, const char* params,
                        R (C::*fn)(P...)) {
    Operation op = describe<P...>(className, name, params);
    op.run = [fn, op](Targets& t, const QStringList& texts, Models& models) {
        checkWords(op, texts);
        C& target = targetOf<C>(t);
        auto call = [&](auto&&... a) -> R { return (target.*fn)(std::forward<decltype(a)>(a)...); };
        return invoke<R, decltype(call), P...>(call, texts, models, std::index_sequence_for<P...>{},
                                               op.parameters);
    };
    return op;
}

} // namespace registry_detail
