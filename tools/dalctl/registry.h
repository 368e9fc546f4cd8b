#pragma once

#include "arguments.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>
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

// One public operation of the library, callable with command-line arguments.
struct Operation {
    QString className;
    QString name;
    QString params;            // the declaration's parameter list, "(int p1, ModelTarsel p2)"
    QStringList argumentTypes; // types of the parameters that take an argument, in order
    // Runs the operation; returns what it returned and what it wrote to out-parameters, or
    // throws ArgError.
    std::function<QString(Targets&, const QStringList&, Models&)> run;
    QStringList argumentNames; // names of the parameters that take an argument, in order

    QString qualifiedName() const { return className + QStringLiteral("::") + name; }
    QString usage() const { return qualifiedName() + params; }
};

// Every public operation of DalTarsel, Dal_Pommet and dal_Osd.
const QVector<Operation>& operations();
// The operations named `name` ("op" or "Class::op"), overloads included.
QVector<const Operation*> findOperations(const QString& name);
// Names close to a misspelt one, closest first.
QStringList closestNames(const QString& name, int count);

namespace registry_detail {

QString describeResult(int value);
QString describeResult(bool value);
QString describeResult(const QByteArray& value);
QString describeResult(const QString& value);
QString describeResult(const model_Protocoldata& value);
QStringList splitParameters(const QString& params);
QStringList parameterNames(const QString& params);
QString typeName(const QString& parameter);

template <class P>
QString argumentTypeOf(const QString& declared) {
    return args::Holder<P>::takesArgument ? typeName(declared) : QString();
}

template <class R, class Call, class... P, size_t... I>
QString invoke(Call call, const QStringList& texts, Models& models, std::index_sequence<I...>,
               const QStringList& names) {
    std::tuple<args::Holder<P>...> holders;
    int next = 0;
    [[maybe_unused]] auto take = [&](auto& holder) {
        if constexpr (std::decay_t<decltype(holder)>::takesArgument)
            holder.parse(texts.at(next++), models);
        else
            holder.parse(QString(), models);
    };
    (take(std::get<I>(holders)), ...);

    // A buffer parameter followed by its length must hold that many bytes.
    const std::optional<int> sizes[] = {std::get<I>(holders).bufferSize()..., std::nullopt};
    const std::optional<long long> integers[] = {std::get<I>(holders).integer()..., std::nullopt};
    for (size_t i = 0; i + 1 < sizeof...(P); ++i)
        if (sizes[i] && integers[i + 1] && *integers[i + 1] > *sizes[i])
            throw ArgError(QStringLiteral("%1 is %2 but the buffer holds %3 bytes")
                               .arg(names.value(int(i) + 1))
                               .arg(*integers[i + 1])
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
            shown << names.value(int(i)) + QStringLiteral(": ") + outputs[i];
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

template <class... P>
QStringList argumentTypes(const QString& params) {
    const QStringList declared = splitParameters(params);
    QStringList types;
    int i = 0;
    ((types << argumentTypeOf<P>(declared.value(i++))), ...);
    types.removeAll(QString());
    return types;
}

template <class... P>
QStringList argumentNames([[maybe_unused]] const QStringList& names) {
    QStringList taken;
    [[maybe_unused]] int i = 0;
    ((args::Holder<P>::takesArgument ? void(taken << names.value(i++)) : void(++i)), ...);
    return taken;
}

// An operation's names and types; its run function is set by the caller.
template <class... P>
Operation describe(const char* className, const char* name, const char* params,
                   const QStringList& names) {
    const QString declared = QString::fromLatin1(params);
    return {QString::fromLatin1(className),
            QString::fromLatin1(name),
            declared,
            argumentTypes<P...>(declared),
            nullptr,
            argumentNames<P...>(names)};
}

template <class C, class R, class... P>
Operation makeOperation(const char* className, const char* name, const char* params,
                        R (C::*fn)(P...)) {
    const QStringList names = parameterNames(QString::fromLatin1(params));
    Operation op = describe<P...>(className, name, params, names);
    op.run = [fn, names](Targets& t, const QStringList& texts, Models& models) {
        C& target = targetOf<C>(t);
        auto call = [&](auto&&... a) -> R { return (target.*fn)(std::forward<decltype(a)>(a)...); };
        return invoke<R, decltype(call), P...>(call, texts, models, std::index_sequence_for<P...>{},
                                               names);
    };
    return op;
}

template <class C, class R, class... P>
Operation makeOperation(const char* className, const char* name, const char* params,
                        R (*fn)(P...)) {
    const QStringList names = parameterNames(QString::fromLatin1(params));
    Operation op = describe<P...>(className, name, params, names);
    op.run = [fn, names](Targets&, const QStringList& texts, Models& models) {
        auto call = [&](auto&&... a) -> R { return fn(std::forward<decltype(a)>(a)...); };
        return invoke<R, decltype(call), P...>(call, texts, models, std::index_sequence_for<P...>{},
                                               names);
    };
    return op;
}

} // namespace registry_detail
