#pragma once

// A text quoted as QDebug quotes a string: printable characters as they are, the quote and the
// backslash escaped, the usual control characters by their C escapes, any other character as
// \uXXXX, or \UXXXXXXXX for a non-printable one beyond the 16-bit range. The trace line writes
// its text so, and tools print texts so, that one line can never read as two.
#include <QChar>
#include <QString>

namespace dal {

// Writes the quoted text through `put`, which takes a QChar or a char.
template <class Put>
void writeQuoted(const QString& text, Put&& put) {
    auto escaped = [&](char kind, unsigned value, int digits) {
        put('\\');
        put(kind);
        for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
            put("0123456789ABCDEF"[(value >> shift) & 0xF]);
    };
    put('"');
    const QChar* const last = text.constData() + text.size();
    for (const QChar* p = text.constData(); p != last; ++p) {
        const char16_t c = p->unicode();
        const char* escape = c == u'"'    ? "\\\""
                             : c == u'\\' ? "\\\\"
                             : c == u'\b' ? "\\b"
                             : c == u'\f' ? "\\f"
                             : c == u'\n' ? "\\n"
                             : c == u'\r' ? "\\r"
                             : c == u'\t' ? "\\t"
                                          : nullptr;
        if (!escape && QChar::isPrint(c)) {
            put(*p);
        } else if (escape) {
            for (; *escape; ++escape)
                put(*escape);
        } else if (QChar::isHighSurrogate(c) && p + 1 != last && p[1].isLowSurrogate()) {
            const char32_t ucs4 = QChar::surrogateToUcs4(p[0], p[1]);
            if (QChar::isPrint(ucs4)) {
                put(p[0]);
                put(p[1]);
            } else {
                escaped('U', ucs4, 8);
            }
            ++p;
        } else {
            escaped('u', c, 4);
        }
    }
    put('"');
}

} // namespace dal
