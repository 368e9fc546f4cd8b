#pragma once

#include "model_protocoldata.h"
#include "models.h"
#include "records.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <type_traits>

// A command-line argument that does not parse as its parameter's type.
struct ArgError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

namespace args {

long long parseInteger(const QString& text, long long min, long long max);
double parseDecimal(const QString& text);
bool parseBool(const QString& text);
QByteArray parseHex(const QString& text);
QJsonObject parseJsonObject(const QString& text);

template <class T>
constexpr bool isModel = std::is_same_v<T, ModelTarsel> || std::is_same_v<T, ModelScene> ||
                         std::is_same_v<T, ModelBankPlayer> || std::is_same_v<T, Model_PommetParam>;

// How one parameter of declared type P is filled. Parameters that take a command-line
// argument parse it; model records come from Models; scalar out-parameters (non-const
// references) take nothing and are shown after the call.
template <class P, class Enable = void>
struct Holder;

template <class P>
using ValueOf = std::remove_cv_t<std::remove_reference_t<P>>;

template <class P>
constexpr bool isOutScalar =
    std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>> &&
    std::is_arithmetic_v<ValueOf<P>>;

template <class P>
struct Holder<P, std::enable_if_t<std::is_arithmetic_v<ValueOf<P>> && !isOutScalar<P>>> {
    using T = ValueOf<P>;
    static constexpr bool takesArgument = true;
    T value{};
    void parse(const QString& text, Models&) {
        if constexpr (std::is_same_v<T, bool>)
            value = parseBool(text);
        else if constexpr (std::is_floating_point_v<T>)
            value = static_cast<T>(parseDecimal(text));
        else
            value = static_cast<T>(
                parseInteger(text, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
    T& get() { return value; }
    std::optional<long long> integer() const {
        if constexpr (std::is_integral_v<T>)
            return static_cast<long long>(value);
        return std::nullopt;
    }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

template <class P>
struct Holder<P, std::enable_if_t<isOutScalar<P>>> {
    using T = ValueOf<P>;
    static constexpr bool takesArgument = false;
    T value{};
    void parse(const QString&, Models&) {}
    T& get() { return value; }
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const {
        if constexpr (std::is_floating_point_v<T>)
            return QString::number(value);
        else
            return QStringLiteral("%1 (0x%2)")
                .arg(static_cast<long long>(value))
                .arg(static_cast<unsigned long long>(value) &
                         ((sizeof(T) >= 8) ? ~0ULL : ((1ULL << (8 * sizeof(T))) - 1)),
                     0, 16);
    }
};

// Plain values parsed from one argument.
template <class T>
struct ValueHolder {
    static constexpr bool takesArgument = true;
    T value{};
    T& get() { return value; }
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QString>>> : ValueHolder<QString> {
    void parse(const QString& text, Models&) { value = text; }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QByteArray>>>
    : ValueHolder<QByteArray> {
    void parse(const QString& text, Models&) { value = parseHex(text); }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QJsonObject>>>
    : ValueHolder<QJsonObject> {
    void parse(const QString& text, Models&) { value = parseJsonObject(text); }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QStringList>>>
    : ValueHolder<QStringList> {
    void parse(const QString& text, Models&) { value = text.split(QLatin1Char(',')); }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QList<int>> ||
                                  std::is_same_v<ValueOf<P>, QVector<int>>>>
    : ValueHolder<ValueOf<P>> {
    void parse(const QString& text, Models&) {
        this->value.clear();
        if (text.isEmpty())
            return;
        for (const QString& item : text.split(QLatin1Char(',')))
            this->value.append(static_cast<int>(parseInteger(
                item.trimmed(), std::numeric_limits<int>::min(), std::numeric_limits<int>::max())));
    }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, model_Protocoldata>>>
    : ValueHolder<model_Protocoldata> {
    void parse(const QString& text, Models&) {
        QString error;
        if (!recordFromJson(parseJsonObject(text), value, error))
            throw ArgError(error.toStdString());
    }
};

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, model_OsdParam>>>
    : ValueHolder<model_OsdParam> {
    void parse(const QString& text, Models&) {
        QString error;
        if (!osdRecordFromJson(parseJsonObject(text), value, error))
            throw ArgError(error.toStdString());
    }
};

// A byte buffer given as hex. Zeros follow the bytes given: one spare byte for builders that
// write a checksum just after the block, and at least kByteBufferReserve bytes in all, since an
// operation whose length parameter does not follow the buffer (setInputPortEdid) escapes the
// length check below and reads up to its own 1023-byte limit.
constexpr int kByteBufferReserve = 1024;
template <class P>
struct Holder<P, std::enable_if_t<std::is_pointer_v<P> && sizeof(*std::declval<P>()) == 1>> {
    static constexpr bool takesArgument = true;
    QByteArray bytes;
    int size = 0;
    void parse(const QString& text, Models&) {
        bytes = parseHex(text);
        size = bytes.size();
        bytes.append(QByteArray(std::max(1, kByteBufferReserve - size), '\0'));
    }
    P get() { return reinterpret_cast<P>(bytes.data()); }
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return size; }
    QString output() const { return QString(); }
};

// An int array given as "1,2,3". It is padded with zeros to kIntArrayReserve entries, more
// than any per-container count a block accepts, so that an operation reading one entry per
// container never reads past it.
constexpr int kIntArrayReserve = 4096;
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<P, int*>>> {
    static constexpr bool takesArgument = true;
    QVector<int> values;
    void parse(const QString& text, Models&) {
        values.clear();
        if (!text.isEmpty())
            for (const QString& item : text.split(QLatin1Char(',')))
                values.append(
                    static_cast<int>(parseInteger(item.trimmed(), std::numeric_limits<int>::min(),
                                                  std::numeric_limits<int>::max())));
        values.resize(std::max<qsizetype>(values.size(), kIntArrayReserve));
    }
    int* get() { return values.data(); }
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

template <class P>
struct Holder<P, std::enable_if_t<isModel<ValueOf<P>>>> {
    static constexpr bool takesArgument = false;
    ValueOf<P>* model = nullptr;
    void parse(const QString&, Models& models) { model = &ModelArg<ValueOf<P>>::from(models); }
    ValueOf<P>& get() { return *model; }
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

} // namespace args
