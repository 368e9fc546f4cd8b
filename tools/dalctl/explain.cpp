#include "explain.h"

#include "engine.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char kTraceLabel[] = "---addToQueue----CMD=";
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

// Parses the trace fields after the label: the five head bytes and the data block.
bool parseTrace(Cursor c, unsigned char head[kHeadSize], const char*& block,
                const char*& blockEnd) {
    static const char* const kLabels[] = {" ",
                                          " ---DAT1= ", " ---DAT2= ", " ---DAT3= ", " ---DAT4= "};
    for (int i = 0; i < kHeadSize; ++i) {
        const char *from, *to;
        if (!c.take(kLabels[i]) || !c.hex(from, to) || to == from || to - from > 2)
            return false;
        head[i] = static_cast<unsigned char>(
            to - from == 1 ? hexValue(*from) : hexValue(*from) * 16 + hexValue(from[1]));
    }
    if (!c.take(" ---arryDatablock= ") || !c.hex(block, blockEnd) || (blockEnd - block) % 2 ||
        !c.take(" ---Datablock= \""))
        return false;
    // The text is quoted with backslash escapes and closes the line.
    if (c.end == c.at)
        return false;
    const char* last = c.end - 1;
    int backslashes = 0;
    for (const char* p = last - 1; p >= c.at && *p == '\\'; --p)
        ++backslashes;
    return *last == '"' && backslashes % 2 == 0;
}

// The annotation of one native head, in text or as a JSON member list; kept per head.
class Annotations {
public:
    const QByteArray& of(int device, const QByteArray& native, bool tunnel, bool json) {
        const QByteArray key =
            QByteArray::number(device) + native.left(kHeadSize) + char(tunnel) + char(json);
        auto it = cache.find(key.toStdString());
        if (it != cache.end())
            return it->second;
        if (cache.size() > kLimit) // bounded, so that memory does not grow with the log
            cache.clear();
        return cache[key.toStdString()] = build(device, native, tunnel, json);
    }

private:
    static constexpr std::size_t kLimit = 4096;

    static QByteArray build(int device, const QByteArray& native, bool tunnel, bool json) {
        const QVector<Candidate> found = engine::byHead(device, native);
        const QByteArray head = native.left(kHeadSize).toHex(' ');
        if (json) {
            QJsonArray list;
            for (const Candidate& c : found)
                list << c.json();
            return "\"native\":\"" + native.left(kHeadSize).toHex() +
                   "\",\"tunnel\":" + (tunnel ? "true" : "false") +
                   ",\"candidates\":" + QJsonDocument(list).toJson(QJsonDocument::Compact);
        }
        QStringList texts;
        for (const Candidate& c : found)
            texts << c.text();
        QByteArray note = tunnel ? "tunnelled " + head + ": " : QByteArray();
        return note + (texts.isEmpty() ? "no operation sends " + head
                                       : texts.join(QStringLiteral(" | ")).toUtf8());
    }

    std::unordered_map<std::string, QByteArray> cache;
};

void writeLine(const QByteArray& line, std::FILE* out, int device, bool json, long long number) {
    const QByteArray written = explainLine(line, device, json, number);
    if (!written.isEmpty() || !json) {
        std::fwrite(written.constData(), 1, std::size_t(written.size()), out);
        std::fputc('\n', out);
    }
}

// Waits until the file behind `in` may have grown: until inotify reports a change, or a
// moment where inotify is not to be had.
void waitForGrowth(int watch) {
    constexpr int kPollMs = 250;
    if (watch < 0) {
        ::usleep(kPollMs * 1000);
        return;
    }
    pollfd ready{watch, POLLIN, 0};
    if (::poll(&ready, 1, kPollMs) > 0) {
        char events[4096];
        while (::read(watch, events, sizeof events) > 0) {
        }
    }
}

// A follower starts over when the log is truncated under it, as `tail -f` does.
bool truncated(int in, off_t offset) {
    struct stat st {};
    return ::fstat(in, &st) == 0 && S_ISREG(st.st_mode) && st.st_size < offset;
}

} // namespace

TracedRecord readTraceLine(const QByteArray& line) {
    TracedRecord traced;
    const auto label = line.indexOf(kTraceLabel);
    if (label < 0)
        return traced;
    unsigned char head[kHeadSize];
    const char *block = nullptr, *blockEnd = nullptr;
    const Cursor cursor{line.constData() + label + int(sizeof kTraceLabel) - 1,
                        line.constData() + line.size()};
    traced.status = TracedRecord::Garbled;
    if (!parseTrace(cursor, head, block, blockEnd))
        return traced;
    traced.status = TracedRecord::Read;
    const QByteArray native(reinterpret_cast<const char*>(head), kHeadSize);
    const QByteArray bytes = QByteArray::fromHex(QByteArray(block, int(blockEnd - block)));
    traced.tunnel = isTunnel(native, bytes);
    traced.native = nativeBytes(native, bytes);
    return traced;
}

QByteArray explainLine(const QByteArray& line, int deviceType, bool json, long long number) {
    static Annotations annotations;
    const TracedRecord traced = readTraceLine(line);
    if (traced.status == TracedRecord::NotTrace)
        return json ? QByteArray() : line;
    const QByteArray prefix = json ? "{\"line\":" + QByteArray::number(number) + ',' : line + kNote;
    if (traced.status == TracedRecord::Garbled)
        return prefix +
               (json ? "\"error\":\"cut or garbled trace line\"}" : "cut or garbled trace line");
    const QByteArray& note = annotations.of(deviceType, traced.native, traced.tunnel, json);
    return json ? prefix + note + '}' : prefix + note;
}

bool explainStream(int in, std::FILE* out, int deviceType, bool json, bool follow) {
    constexpr int kChunk = 1 << 16;
    const int watch = follow ? ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK) : -1;
    if (watch >= 0) {
        const std::string path = "/proc/self/fd/" + std::to_string(in);
        ::inotify_add_watch(watch, path.c_str(), IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE);
    }
    std::vector<char> chunk(kChunk);
    QByteArray buffer; // the unfinished line, then the chunk read after it
    long long number = 0;
    off_t offset = 0;
    bool failed = false;
    for (;;) {
        const ssize_t n = ::read(in, chunk.data(), chunk.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            failed = true;
            break;
        }
        buffer.append(chunk.data(), int(n));
        offset += n;
        int start = 0;
        for (int end; (end = buffer.indexOf('\n', start)) >= 0; start = end + 1) {
            int length = end - start;
            while (length > 0 && buffer[start + length - 1] == '\r')
                --length;
            writeLine(QByteArray::fromRawData(buffer.constData() + start, length), out, deviceType,
                      json, ++number);
        }
        buffer.remove(0, start);
        if (n > 0)
            continue;
        if (!follow) {
            if (!buffer.isEmpty()) // the last line, without its line end
                writeLine(buffer, out, deviceType, json, ++number);
            break;
        }
        std::fflush(out);
        if (truncated(in, offset)) {
            ::lseek(in, 0, SEEK_SET);
            offset = 0;
            buffer.clear();
        }
        waitForGrowth(watch);
    }
    if (watch >= 0)
        ::close(watch);
    std::fflush(out);
    return !failed;
}
