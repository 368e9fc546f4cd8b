#include "explain.h"

#include "engine.h"
#include "trace.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <map>
#include <vector>

#include <unistd.h>

namespace {

const char* const kTraceLabel = dal::kTraceHeadLabels[0];
const int kTraceLabelSize = int(std::strlen(kTraceLabel));
const char kNote[] = "  # dal: ";

struct Cursor {
    const char* at;
    const char* end;
    bool take(const char* literal) {
        const std::size_t n = std::strlen(literal);
        if (std::size_t(end - at) < n || std::memcmp(at, literal, n) != 0)
            return false;
        at += n;
        return true;
    }
    // A label between the single spaces that part it from the values around it.
    bool label(const char* text) { return take(" ") && take(text) && take(" "); }
    // A quoted run of lowercase hex digits.
    bool hex(const char*& from, const char*& to) {
        if (!take("\""))
            return false;
        from = at;
        while (at < end && ((*at >= '0' && *at <= '9') || (*at >= 'a' && *at <= 'f')))
            ++at;
        to = at;
        return take("\"");
    }
};

int hexValue(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

// The fields after the line's first label: the five head bytes, the block and the quoted text,
// which closes the line.
bool parseTrace(Cursor c, TracedRecord& traced) {
    for (const char* label : dal::kTraceHeadLabels) {
        const char *from, *to;
        if (!(label == kTraceLabel ? c.take(" ") : c.label(label)) || !c.hex(from, to) ||
            to == from || to - from > 2)
            return false;
        traced.head +=
            char(to - from == 1 ? hexValue(*from) : hexValue(*from) * 16 + hexValue(from[1]));
    }
    const char *block, *blockEnd;
    if (!c.label(dal::kTraceBlockLabel) || !c.hex(block, blockEnd) || (blockEnd - block) % 2 ||
        !c.label(dal::kTraceTextLabel))
        return false;
    traced.block = QByteArray::fromHex(QByteArray(block, int(blockEnd - block)));
    return unquote(QString::fromUtf8(c.at, int(c.end - c.at)), traced.text);
}

// What explain appends to a trace line, and whether it names an operation.
struct Note {
    QByteArray text; // empty for a garbled line
    bool answered = false;
};

// The annotation of one distinct trace line, kept so that a log repeating itself is proven
// once per line.
class Annotations {
public:
    // The note for a trace line, by what follows its label.
    const Note& of(const QByteArray& traceLine, const Device* device, bool json) {
        QHash<QByteArray, Note>& cache = caches[{device, json}];
        const auto it = cache.constFind(traceLine); // looked up in place, copied when kept
        if (it != cache.constEnd())
            return *it;
        if (cache.size() > kLimit) // bounded, so that memory does not grow with the log
            cache.clear();
        const QByteArray key(traceLine.constData(), traceLine.size());
        TracedRecord traced;
        traced.status =
            parseTrace(Cursor{traceLine.constData(), traceLine.constData() + traceLine.size()},
                       traced)
                ? TracedRecord::Read
                : TracedRecord::Garbled;
        return cache[key] =
                   traced.status == TracedRecord::Read ? build(traced, device, json) : Note();
    }

private:
    static constexpr int kLimit = 4096;

    static Note build(const TracedRecord& traced, const Device* device, bool json) {
        const QVector<Device> searched =
            device ? QVector<Device>{*device}
                   : devicesWhere([](const Family& f) { return f.routed(); });
        const engine::Result result =
            engine::prove(engine::traceLine(traced.head, traced.block, traced.text), searched);
        if (json) {
            QJsonArray answers;
            for (const engine::Answer& a : result.answers)
                answers << a.json();
            QJsonObject object{{QStringLiteral("head"), QString::fromLatin1(traced.head.toHex())},
                               {QStringLiteral("candidates"), answers}};
            if (result.closest)
                object.insert(QStringLiteral("closest"), result.closest->json());
            const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Compact);
            // members, to follow the line number
            return {text.mid(1, text.size() - 2), !answers.isEmpty()};
        }
        // The same answer on several families is written once, with the families.
        QStringList texts;
        QStringList seen;
        QVector<QStringList> where;
        for (const engine::Answer& a : result.answers) {
            const int at = int(seen.indexOf(a.text()));
            if (at >= 0) {
                where[at] << a.device.name();
                continue;
            }
            seen << a.text();
            where << QStringList{a.device.name()};
        }
        for (int i = 0; i < seen.size(); ++i)
            texts << (device ? seen[i] : seen[i] + QStringLiteral(" [") + where[i].join(' ') + ']');
        if (!texts.isEmpty())
            return {texts.join(QStringLiteral(" | ")).toUtf8(), true};
        const QByteArray none = "no operation sends " + traced.head.toHex(' ');
        return {result.closest ? none + "; " + result.closest->text().toUtf8() : none, false};
    }

    std::map<std::pair<const Device*, bool>, QHash<QByteArray, Note>> caches;
};

} // namespace

TracedRecord readTraceLine(const QByteArray& line) {
    TracedRecord traced;
    const auto label = line.indexOf(kTraceLabel);
    if (label < 0)
        return traced;
    const Cursor cursor{line.constData() + label + kTraceLabelSize, line.constData() + line.size()};
    traced.status = parseTrace(cursor, traced) ? TracedRecord::Read : TracedRecord::Garbled;
    return traced;
}

namespace {

// Writes one line as explain writes it, in pieces, through `put`; whether an operation was
// named for it.
template <class Put>
bool annotate(const char* line, int size, const Device* device, bool json, long long number,
              Put&& put) {
    static Annotations annotations;
    int body = size;
    while (body > 0 && (line[body - 1] == '\n' || line[body - 1] == '\r'))
        --body;
    const QByteArray content = QByteArray::fromRawData(line, body);
    const QByteArray ending = QByteArray::fromRawData(line + body, size - body);
    const auto label = content.indexOf(kTraceLabel);
    if (label < 0) {
        if (!json)
            put(line, size);
        return false;
    }
    const int from = int(label + kTraceLabelSize);
    const Note& note =
        annotations.of(QByteArray::fromRawData(line + from, body - from), device, json);
    static const QByteArray garbled = "cut or garbled trace line";
    if (json) {
        const QByteArray prefix = "{\"line\":" + QByteArray::number(number) + ',';
        put(prefix.constData(), prefix.size());
        const QByteArray rest = note.text.isEmpty() ? QByteArray("\"error\":\"" + garbled + "\"}\n")
                                                    : note.text + "}\n";
        put(rest.constData(), rest.size());
        return note.answered;
    }
    put(line, body);
    put(kNote, int(sizeof kNote - 1));
    const QByteArray& said = note.text.isEmpty() ? garbled : note.text;
    put(said.constData(), said.size());
    put(ending.constData(), ending.size());
    return note.answered;
}

} // namespace

QByteArray explainLine(const QByteArray& line, const Device* device, bool json, long long number) {
    QByteArray written;
    annotate(line.constData(), line.size(), device, json, number,
             [&](const char* bytes, int size) { written.append(bytes, size); });
    return written;
}

long long explainStream(int in, std::FILE* out, const Device* device, bool json) {
    constexpr int kChunk = 1 << 16;
    std::vector<char> chunk(kChunk);
    QByteArray buffer; // the unfinished line, then the chunk read after it
    long long number = 0, answered = 0;
    const auto write = [out](const char* bytes, int size) {
        std::fwrite(bytes, 1, std::size_t(size), out);
    };
    for (;;) {
        const ssize_t n = ::read(in, chunk.data(), chunk.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        buffer.append(chunk.data(), int(n));
        int start = 0;
        for (int end; (end = int(buffer.indexOf('\n', start))) >= 0; start = end + 1)
            answered += annotate(buffer.constData() + start, end + 1 - start, device, json,
                                 ++number, write);
        buffer.remove(0, start);
        // What was read is written before waiting for more: a pipe is followed as it grows.
        std::fflush(out);
    }
    if (!buffer.isEmpty()) // the last line, without its line end
        answered += annotate(buffer.constData(), buffer.size(), device, json, ++number, write);
    std::fflush(out);
    return answered;
}
