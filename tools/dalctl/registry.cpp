#include "registry.h"

#include "dalTarsel.h"
#include "dal_osd.h"
#include "dal_pommet.h"
#include "json_members.h"
#include "records.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

using registry_detail::makeOperation;

namespace {

QVector<Operation> buildOperations() {
    QVector<Operation> ops;
// Each list undefines DAL_OP at its end, so it is pointed at the one expansion before each.
#define REGISTER(ret, name, params)                                                                \
    ops << makeOperation(CLASS_NAME, #name, #params,                                               \
                         static_cast<ret(CLASS::*) params>(&CLASS::name));
#define CLASS DalTarsel
#define CLASS_NAME "DalTarsel"
#define DAL_OP REGISTER
#include "dalTarsel.def"
#undef CLASS
#undef CLASS_NAME
#define CLASS Dal_Pommet
#define CLASS_NAME "Dal_Pommet"
#define DAL_OP REGISTER
#include "dal_pommet.def"
#undef CLASS
#undef CLASS_NAME
#define CLASS dal_Osd
#define CLASS_NAME "dal_Osd"
#define DAL_OP REGISTER
#include "dal_osd.def"
#undef CLASS
#undef CLASS_NAME
#undef REGISTER
    return ops;
}

} // namespace

int editDistance(QStringView a, QStringView b, Qt::CaseSensitivity cs) {
    // Myers' bit-vector method: a column of the table is held as whether each of a's rows rises or
    // falls from the one above, 64 rows to a word. The engine asks this in its inner loops.
    const auto fold = [cs](QChar c) {
        return (cs == Qt::CaseSensitive ? c : c.toLower()).unicode();
    };
    const int m = int(a.size()), words = (m + 63) / 64;
    thread_local std::vector<int> maskOf(0x10000, -1); // by character: where its rows' bits start
    thread_local std::vector<quint64> masks, rises, falls;
    masks.clear();
    for (int i = 0; i < m; ++i) {
        int& at = maskOf[fold(a[i])];
        if (at < 0) {
            at = int(masks.size());
            masks.resize(masks.size() + size_t(words));
        }
        masks[size_t(at + i / 64)] |= 1ULL << (i % 64);
    }
    rises.assign(size_t(words), ~0ULL);
    falls.assign(size_t(words), 0);
    int distance = m;
    for (QChar c : b) {
        const int at = maskOf[fold(c)];
        int carry = 1; // the top row rises by one a column
        for (int w = 0; w < words; ++w) {
            quint64 eq = at < 0 ? 0 : masks[size_t(at + w)];
            const quint64 up = rises[size_t(w)], xv = eq | falls[size_t(w)];
            if (carry < 0)
                eq |= 1;
            const quint64 xh = (((eq & up) + up) ^ up) | eq;
            quint64 ph = falls[size_t(w)] | ~(xh | up), mh = up & xh;
            const quint64 lastRow = 1ULL << (w == words - 1 ? (m + 63) % 64 : 63);
            const int out = (ph & lastRow) ? 1 : (mh & lastRow) ? -1 : 0;
            ph = ph << 1 | (carry > 0);
            mh = mh << 1 | (carry < 0);
            rises[size_t(w)] = mh | ~(xv | ph);
            falls[size_t(w)] = ph & xv;
            carry = out;
        }
        distance += carry;
    }
    for (QChar c : a)
        maskOf[fold(c)] = -1;
    return distance;
}

const QVector<Operation>& operations() {
    static const QVector<Operation> ops = buildOperations();
    return ops;
}

// Each kind's sample (a buffer's eight bytes hold the one byte a sample `len` names), but a key
// is addressed in the keyboard's flat table (kind 0), where any code is one: kind 1's table
// starts at code 105.
QStringList Operation::sampleWords() const {
    const bool addressesKey =
        std::any_of(arguments.begin(), arguments.end(),
                    [](const Parameter& p) { return p.name == QLatin1String("key"); });
    QStringList words;
    for (const Parameter& p : arguments)
        words << (p.name == QLatin1String("kind") && addressesKey
                      ? QStringLiteral("0")
                      : QString::fromUtf8(args::infoOf(p.kind).sample));
    return words;
}

QStringList Operation::modelRecords() const {
    QStringList records;
    for (const Parameter& p : parameters)
        if (p.kind == args::Kind::Model)
            records << QString(p.type).remove(QLatin1Char('&')).trimmed();
    return records;
}

QVector<const Operation*> findOperations(const QString& name, const QString& preferredClass) {
    QVector<const Operation*> found, preferred;
    for (const Operation& op : operations())
        if (op.name == name || op.qualifiedName() == name)
            (op.className == preferredClass ? preferred : found) << &op;
    return preferred.isEmpty() ? found : preferred;
}

QStringList closestNames(const QString& name, int count) {
    const QString bare = name.section(QStringLiteral("::"), -1);
    QVector<QPair<int, QString>> ranked;
    for (const Operation& op : operations()) {
        int distance = editDistance(bare, op.name, Qt::CaseInsensitive);
        if (op.name.contains(bare, Qt::CaseInsensitive))
            distance = std::min(distance, 1);
        ranked << qMakePair(distance, op.qualifiedName());
    }
    std::sort(ranked.begin(), ranked.end());
    QStringList names;
    for (const auto& entry : ranked) {
        if (names.size() == count || entry.first > std::max(3, int(bare.size()) / 3))
            break;
        if (!names.contains(entry.second))
            names << entry.second;
    }
    return names;
}

namespace registry_detail {

QString describeResult(int value) {
    return QStringLiteral("%1 (0x%2)").arg(value).arg(QString::number(uint(value), 16));
}
QString describeResult(const QByteArray& value) {
    return QStringLiteral("%1 bytes: %2").arg(value.size()).arg(QString::fromLatin1(value.toHex()));
}
QString describeResult(const model_Protocoldata& value) {
    return QLatin1Char('\n') + recordText(value, 1);
}

QStringList splitParameters(const QString& params) {
    QStringList parts;
    const QString inner = params.mid(1, params.size() - 2).trimmed();
    if (inner.isEmpty())
        return parts;
    int depth = 0;
    QString current;
    for (QChar c : inner) {
        if (c == QLatin1Char('<') || c == QLatin1Char('('))
            ++depth;
        else if (c == QLatin1Char('>') || c == QLatin1Char(')'))
            --depth;
        if (c == QLatin1Char(',') && depth == 0) {
            parts << current.trimmed();
            current.clear();
        } else {
            current += c;
        }
    }
    parts << current.trimmed();
    return parts;
}

QVector<QPair<QString, QString>> namesAndTypes(const QString& params) {
    static const QRegularExpression trailingName(QStringLiteral("^(.*[^\\w])(\\w+)$"));
    QVector<QPair<QString, QString>> all;
    for (const QString& parameter : splitParameters(params)) {
        const QRegularExpressionMatch m = trailingName.match(parameter);
        all << qMakePair(m.captured(2), m.captured(1).trimmed());
    }
    return all;
}

QStringList jsonMembersOf(const QString& name) {
    QStringList names;
    for (const dal::json::Member& m : dal::json::membersOf(name))
        names << QString::fromLatin1(m.name);
    return names;
}

void checkWords(const Operation& op, const QStringList& words) {
    for (int i = 0; i < op.arguments.size() && i < words.size(); ++i) {
        if (op.arguments[i].kind == args::Kind::DashNumbers)
            args::parseNumbers(words[i], args::Kind::DashNumbers);
        if (op.arguments[i].kind != args::Kind::Json)
            continue;
        for (const QString& key : args::parseJsonObject(words[i]).keys())
            if (!op.jsonMembers.contains(key))
                throw ArgError(
                    QStringLiteral("%1 reads no member \"%2\" of its object; it reads %3")
                        .arg(op.name, key, op.jsonMembers.join(QStringLiteral(", ")))
                        .toStdString());
    }
}

} // namespace registry_detail
