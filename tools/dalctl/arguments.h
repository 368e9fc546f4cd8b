#pragma once

#include "kinds.h"
#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "models.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <limits>
#include <optional>
#include <stdexcept>
#include <type_traits>

// A command-line argument that does not parse as its parameter's type.
struct ArgError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

namespace args {

constexpr bool takesArgument(Kind kind) { return kind != Kind::Model && kind != Kind::Out; }

long long parseInteger(const QString& text, long long min, long long max);
// A finite decimal: nan and inf are refused rather than sent as something else.
double parseDecimal(const QString& text);
bool parseBool(const QString& text);
QByteArray parseHex(const QString& text);
QJsonObject parseJsonObject(const QString& text);
// The separator of a list kind's words: ',' for Numbers, '-' for DashNumbers.
constexpr char separatorOf(Kind kind) { return kind == Kind::DashNumbers ? '-' : ','; }
// The numbers of a list of `kind`, Numbers or DashNumbers.
QVector<int> parseNumbers(const QString& text, Kind kind);

template <class P>
using ValueOf = std::remove_cv_t<std::remove_reference_t<P>>;

template <class T>
constexpr bool isModel = std::is_same_v<T, ModelTarsel> || std::is_same_v<T, ModelScene> ||
                         std::is_same_v<T, ModelBankPlayer> || std::is_same_v<T, Model_PommetParam>;

template <class P>
constexpr bool isOutScalar =
    std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>> &&
    std::is_arithmetic_v<ValueOf<P>>;

// The common part of every holder: no integer value, no buffer, nothing written back.
struct Plain {
    std::optional<long long> integer() const { return std::nullopt; }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

// How one parameter of declared type P is filled from its word.
template <class P, class Enable = void>
struct Holder;

template <class P>
struct Holder<P, std::enable_if_t<std::is_arithmetic_v<ValueOf<P>> && !isOutScalar<P>>> {
    using T = ValueOf<P>;
    static constexpr Kind kind = std::is_same_v<T, bool>       ? Kind::Boolean
                                 : std::is_floating_point_v<T> ? Kind::Decimal
                                                               : Kind::Integer;
    static constexpr long long min =
        std::is_integral_v<T> ? static_cast<long long>(std::numeric_limits<T>::min()) : 0;
    static constexpr long long max =
        std::is_integral_v<T> ? static_cast<long long>(std::numeric_limits<T>::max()) : 0;
    T value{};
    void parse(const QString& text, Models&) {
        if constexpr (kind == Kind::Boolean)
            value = parseBool(text);
        else if constexpr (kind == Kind::Decimal)
            value = static_cast<T>(parseDecimal(text));
        else
            value = static_cast<T>(parseInteger(text, min, max));
    }
    T& get() { return value; }
    std::optional<long long> integer() const {
        if constexpr (kind == Kind::Integer)
            return static_cast<long long>(value);
        return std::nullopt;
    }
    std::optional<int> bufferSize() const { return std::nullopt; }
    QString output() const { return QString(); }
};

template <class P>
struct Holder<P, std::enable_if_t<isOutScalar<P>>> : Plain {
    using T = ValueOf<P>;
    static constexpr Kind kind = Kind::Out;
    static constexpr long long min = 0, max = 0;
    T value{};
    void parse(const QString&, Models&) {}
    T& get() { return value; }
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

// A value parsed from its word by `Parse`.
template <class T, Kind K, T (*Parse)(const QString&)>
struct Parsed : Plain {
    static constexpr Kind kind = K;
    static constexpr long long min = 0, max = 0;
    T value{};
    void parse(const QString& text, Models&) { value = Parse(text); }
    T& get() { return value; }
};

inline QString asText(const QString& text) { return text; }
model_Protocoldata parseRecord(const QString& text);
model_OsdParam parseOsdRecord(const QString& text);

template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QString>>>
    : Parsed<QString, Kind::Text, asText> {};
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QByteArray>>>
    : Parsed<QByteArray, Kind::Bytes, parseHex> {};
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, QJsonObject>>>
    : Parsed<QJsonObject, Kind::Json, parseJsonObject> {};
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, model_Protocoldata>>>
    : Parsed<model_Protocoldata, Kind::Record, parseRecord> {};
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<ValueOf<P>, model_OsdParam>>>
    : Parsed<model_OsdParam, Kind::OsdRecord, parseOsdRecord> {};

// A byte buffer given as hex, and one spare zero for builders that write a checksum just after
// the block. The length an operation reads from it is checked against its size when the call is
// made.
template <class P>
struct Holder<P, std::enable_if_t<std::is_pointer_v<P> && sizeof(*std::declval<P>()) == 1>>
    : Plain {
    static constexpr Kind kind = Kind::Bytes;
    static constexpr long long min = 0, max = 0;
    QByteArray bytes;
    int size = 0;
    void parse(const QString& text, Models&) {
        bytes = parseHex(text);
        size = bytes.size();
        bytes.append('\0');
    }
    P get() { return reinterpret_cast<P>(bytes.data()); }
    std::optional<int> bufferSize() const { return size; }
};

// An int array given as "1,2,3". It is padded with zeros to kIntArrayReserve entries, more
// than any per-container count a block accepts, so that an operation reading one entry per
// container never reads past it.
constexpr int kIntArrayReserve = 4096;
template <class P>
struct Holder<P, std::enable_if_t<std::is_same_v<P, int*>>> : Plain {
    static constexpr Kind kind = Kind::Numbers;
    static constexpr long long min = std::numeric_limits<int>::min();
    static constexpr long long max = std::numeric_limits<int>::max();
    QVector<int> values;
    void parse(const QString& text, Models&) {
        values = parseNumbers(text, kind);
        values.resize(std::max<int>(values.size(), kIntArrayReserve));
    }
    int* get() { return values.data(); }
};

template <class P>
struct Holder<P, std::enable_if_t<isModel<ValueOf<P>>>> : Plain {
    static constexpr Kind kind = Kind::Model;
    static constexpr long long min = 0, max = 0;
    ValueOf<P>* model = nullptr;
    void parse(const QString&, Models& models) { model = &ModelArg<ValueOf<P>>::from(models); }
    ValueOf<P>& get() { return *model; }
};

} // namespace args
