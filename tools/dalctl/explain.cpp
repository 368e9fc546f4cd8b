#include "explain.h"

#include "engine.h"
#include "trace.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

const char* const kTraceLabel = dal::kTraceHeadLabels[0];
const int kTraceLabelSize = int(std::strlen(kTraceLabel));
const char kNote[] = "  # dal: ";

// The fields after the line's first label: the five head bytes, the block and the quoted text,
// which closes the line.
const QRegularExpression& traceFields() {
    static const QRegularExpression pattern = [] {
        const QString hex = QStringLiteral("\"([0-9a-f]{1,2})\"");
        const auto label = [](const char* text) {
            return QRegularExpression::escape(QLatin1String(text));
        };
        QString fields = QLatin1Char(' ') + hex;
        for (const char* next : dal::kTraceHeadLabels)
            if (next != kTraceLabel)
                fields += QStringLiteral(" %1 %2").arg(label(next), hex);
        return QRegularExpression(
            QStringLiteral("\\A%1 %2 \"([0-9a-f]*)\" %3 ([\\s\\S]*)\\z")
                .arg(fields, label(dal::kTraceBlockLabel), label(dal::kTraceTextLabel)));
    }();
    return pattern;
}

// The record a trace line carries, from what follows its first label.
TracedRecord tracedOf(const char* fields, int size) {
    TracedRecord traced;
    traced.status = TracedRecord::Garbled;
    const QRegularExpressionMatch m = traceFields().match(QString::fromUtf8(fields, size));
    if (!m.hasMatch() || m.capturedLength(6) % 2 || !unquote(m.captured(7), traced.text))
        return traced;
    for (int i = 1; i <= 5; ++i)
        traced.head += char(m.captured(i).toInt(nullptr, 16));
    traced.block = QByteArray::fromHex(m.captured(6).toLatin1());
    traced.status = TracedRecord::Read;
    return traced;
}

// What explain appends to a trace line, and whether it names an operation.
struct Note {
    QByteArray text; // empty for a garbled line
    bool answered = false;
};

// What explain appends to a trace line whose fields `traced` holds.
Note noteOf(const TracedRecord& traced, const Device* device, bool json) {
    const QVector<Device> searched = device
                                         ? QVector<Device>{*device}
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
    QVector<QStringList> where; // each text's families
    for (const engine::Answer& a : result.answers) {
        int at = int(texts.indexOf(a.text()));
        if (at < 0) {
            at = int(texts.size());
            texts << a.text();
            where << QStringList();
        }
        where[at] << a.device.name();
    }
    for (int i = 0; !device && i < texts.size(); ++i)
        texts[i] += QStringLiteral(" [") + where[i].join(' ') + ']';
    if (!texts.isEmpty())
        return {texts.join(QStringLiteral(" | ")).toUtf8(), true};
    const QByteArray none = "no operation sends " + traced.head.toHex(' ');
    return {result.closest ? none + "; " + result.closest->text().toUtf8() : none, false};
}

// The note for a trace line, by what follows its label; kept per distinct line, so that a log
// repeating itself is proven once per line.
const Note& cachedNote(const QByteArray& traceLine, const Device* device, bool json) {
    static std::map<std::pair<const Device*, bool>, QHash<QByteArray, Note>> caches;
    constexpr int kLimit = 4096;
    QHash<QByteArray, Note>& cache = caches[{device, json}];
    const auto it = cache.constFind(traceLine); // looked up in place, copied when kept
    if (it != cache.constEnd())
        return *it;
    if (cache.size() > kLimit) // bounded, so that memory does not grow with the log
        cache.clear();
    const QByteArray key(traceLine.constData(), traceLine.size());
    const TracedRecord traced = tracedOf(traceLine.constData(), int(traceLine.size()));
    return cache[key] = traced.status == TracedRecord::Read ? noteOf(traced, device, json) : Note();
}

} // namespace

TracedRecord readTraceLine(const QByteArray& line) {
    const int from = int(line.indexOf(kTraceLabel)) + kTraceLabelSize;
    return from < kTraceLabelSize ? TracedRecord()
                                  : tracedOf(line.constData() + from, int(line.size()) - from);
}

namespace {

// Writes one line as explain writes it, in pieces, through `put`; whether an operation was
// named for it.
template <class Put>
bool annotate(const char* line, int size, const Device* device, bool json, long long number,
              Put&& put) {
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
    const Note& note = cachedNote(QByteArray::fromRawData(line + from, body - from), device, json);
    static const QByteArray garbled = "cut or garbled trace line";
    const QByteArray said =
        json ? "{\"line\":" + QByteArray::number(number) + ',' +
                   (note.text.isEmpty() ? "\"error\":\"" + garbled + '"' : note.text) + "}\n"
             : kNote + (note.text.isEmpty() ? garbled : note.text) + ending;
    if (!json)
        put(line, body);
    put(said.constData(), int(said.size()));
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
    // What a chunk's lines make, written in one go: a write per line costs more than the proofs.
    std::string written;
    long long number = 0, answered = 0;
    const auto write = [&written](const char* bytes, int size) {
        written.append(bytes, std::size_t(size));
    };
    const auto flush = [&written, out] {
        std::fwrite(written.data(), 1, written.size(), out);
        std::fflush(out);
        written.clear();
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
        flush();
    }
    if (!buffer.isEmpty()) // the last line, without its line end
        answered += annotate(buffer.constData(), buffer.size(), device, json, ++number, write);
    flush();
    return answered;
}
