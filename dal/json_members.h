#pragma once

// The members that each operation taking a JSON object reads from it, and the name each
// travels under. The operations build their texts and blocks from these tables, and tools
// refuse an object holding a member that no table names, since the device would never see it.
#include <QString>
#include <QVector>

#include <cstddef>

namespace dal::json {

enum class Kind { Number, Text };

struct Member {
    const char* name;   // in the caller's object
    Kind kind;          // a missing number reads as 0, a missing text as empty
    const char* sentAs; // in the device's object; null where the block carries the value
};

// setOsdTextForT9: the screen range travels as one array, the rest under the device's names.
inline constexpr Member kOsdTextRange[] = {{"posX", Kind::Number, nullptr},
                                           {"posY", Kind::Number, nullptr},
                                           {"posW", Kind::Number, nullptr},
                                           {"posH", Kind::Number, nullptr}};
inline constexpr Member kOsdText[] = {
    {"groupIndex", Kind::Number, "ScrGroup"},     {"bgAlpha", Kind::Number, "Alpha"},
    {"bgColor", Kind::Number, "BgColor"},         {"fontSize", Kind::Number, "FontSize"},
    {"fontColor", Kind::Number, "TextColor"},     {"scrollDir", Kind::Number, "ScrollDir"},
    {"scrollSpeed", Kind::Number, "ScrollSpeed"}, {"topPostion", Kind::Number, "TopPostion"},
    {"sendBits", Kind::Number, "SendBits"},       {"textLine", Kind::Number, "TextLine"},
    {"rowHeight", Kind::Number, "RowHeight"},     {"fileName", Kind::Text, "Name"},
    {"fontName", Kind::Text, "FontName"},         {"osdText", Kind::Text, "Text"}};
inline constexpr Member kFindIpc[] = {{"authMode", Kind::Number, "IsNeedUser"},
                                      {"userName", Kind::Text, "UserName"},
                                      {"pwd", Kind::Text, "Password"}};
inline constexpr Member kIpcInfo[] = {{"group", Kind::Number, "Group"},
                                      {"authMode", Kind::Number, "AuthMode"},
                                      {"transMode", Kind::Number, "TransferMode"},
                                      {"width", Kind::Number, "Width"},
                                      {"height", Kind::Number, "Height"},
                                      {"auxWidth", Kind::Number, "AuxWidth"},
                                      {"auxHeight", Kind::Number, "AuxHeight"},
                                      {"ipcName", Kind::Text, "Name"},
                                      {"userName", Kind::Text, "AuthName"},
                                      {"pwd", Kind::Text, "AuthPwd"},
                                      {"url", Kind::Text, "Url"},
                                      {"auxUrl", Kind::Text, "AuxUrl"}};
// The block setters: one byte per member, in this order ("color" gives three).
inline constexpr Member kSourceFrame[] = {{"status", Kind::Number, nullptr},
                                          {"color", Kind::Text, nullptr},
                                          {"size", Kind::Number, nullptr}};
inline constexpr Member kDanteAudio[] = {
    {"hdmi1", Kind::Number, nullptr},   {"hdmi2", Kind::Number, nullptr},
    {"lan1", Kind::Number, nullptr},    {"lan2", Kind::Number, nullptr},
    {"lan3", Kind::Number, nullptr},    {"lan4", Kind::Number, nullptr},
    {"loopIn1", Kind::Number, nullptr}, {"loopIn2", Kind::Number, nullptr},
    {"loopIn3", Kind::Number, nullptr}, {"loopIn4", Kind::Number, nullptr}};
inline constexpr Member kOutBoardAudio[] = {
    {"switch1", Kind::Number, nullptr}, {"switch2", Kind::Number, nullptr},
    {"switch3", Kind::Number, nullptr}, {"switch4", Kind::Number, nullptr},
    {"source1", Kind::Number, nullptr}, {"source2", Kind::Number, nullptr},
    {"source3", Kind::Number, nullptr}, {"source4", Kind::Number, nullptr}};

struct Table {
    const Member* first = nullptr;
    const Member* last = nullptr;
    const Member* begin() const { return first; }
    const Member* end() const { return last; }
};

template <std::size_t N>
constexpr Table table(const Member (&members)[N]) {
    return {members, members + N};
}

// The members an operation reads, by the operation's name; none for any other.
inline QVector<Member> membersOf(const QString& operation) {
    struct Reader {
        const char* operation;
        Table tables[2];
    };
    static const Reader kReaders[] = {
        {"setOsdTextForT9", {table(kOsdTextRange), table(kOsdText)}},
        {"findIPC", {table(kFindIpc), {}}},
        {"updateIPCInfo", {table(kIpcInfo), {}}},
        {"setSourceFrameInfo", {table(kSourceFrame), {}}},
        {"setDanteAudioInfo", {table(kDanteAudio), {}}},
        {"setOutBoardAudioInfo", {table(kOutBoardAudio), {}}},
    };
    QVector<Member> members;
    for (const Reader& reader : kReaders)
        if (operation == QLatin1String(reader.operation))
            for (const Table& t : reader.tables)
                for (const Member& member : t)
                    members << member;
    return members;
}

} // namespace dal::json
