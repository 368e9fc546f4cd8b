#pragma once

// A text quoted as QDebug quotes a string: printable characters as they are, the quote and the
// backslash escaped, the usual control characters by their C escapes, any other character as
// \uXXXX, or \UXXXXXXXX for a non-printable one beyond the 16-bit range. The trace line writes
// its text so, and tools print texts so, that one line can never read as two.
#include <QChar>
#include <QString>

namespace dal {

// The characters written as a C escape, and the letter each is written with after a backslash.
constexpr char kEscapedChars[] = "\"\\\b\f\n\r\t";
constexpr char kEscapeLetters[] = "\"\\bfnrt";

// The letter that escapes `c`, or 0 when `c` has no C escape.
constexpr char escapeLetterOf(char16_t c) {
    for (int i = 0; kEscapedChars[i]; ++i)
        if (c == char16_t(kEscapedChars[i]))
            return kEscapeLetters[i];
    return 0;
}

// The character a C escape's letter stands for, or 0 when it is not one.
constexpr char escapedCharOf(char letter) {
    for (int i = 0; kEscapeLetters[i]; ++i)
        if (letter == kEscapeLetters[i])
            return kEscapedChars[i];
    return 0;
}

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
        const char letter = escapeLetterOf(c);
        if (!letter && QChar::isPrint(c)) {
            put(*p);
        } else if (letter) {
            put('\\');
            put(letter);
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
