#pragma once

namespace args {

// The kinds of value dalctl reads and writes: a parameter's, a model member's, a JSON member's,
// a record field's. Each kind's facts stand beside it: its written form as `dalctl list` shows
// it, the word sample calls take, and another word, of another length where the kind has one.
// A colour is a text parameter named `color`. Model and Out take no word: a model record comes from
// the built-in models or --model, and an out-parameter is written by the operation and shown after
// the call.
#define DAL_KINDS(X)                                                                               \
    X(Integer, "integer", "1", "2")                                                                \
    X(Boolean, "true|false", "true", "false")                                                      \
    X(Decimal, "decimal", "1.5", "2.25")                                                           \
    X(Text, "text", "t\u00e9xt \"\u2713\"", "ab")                                                  \
    X(Colour, "colour #rrggbb", "#102030", "#a0b0c0")                                              \
    X(Bytes, "hex bytes", "0102030405060708", "0a0b0c")                                            \
    X(Numbers, "numbers 1,2,3", "1,2", "3,4,5")                                                    \
    X(DashNumbers, "numbers 1-2-3", "1-2", "3-4-5")                                                \
    X(Json, "JSON object", "{}", "{}")                                                             \
    X(Record, "record as JSON", kRecordSample, kRecordSample)                                      \
    X(OsdRecord, "OSD record as JSON", kOsdRecordSample, kOsdRecordSample)                         \
    X(Model, "", "", "")                                                                           \
    X(Out, "", "", "")

constexpr char kRecordSample[] = "{\"head\":\"00006a0300000000\",\"timeout\":3000}";
constexpr char kOsdRecordSample[] =
    "{\"header\":\"0102030405060708090a0b\",\"tag\":\"t\",\"payload\":\"a1b2\"}";

enum class Kind {
#define DAL_KIND_NAME(name, ...) name,
    DAL_KINDS(DAL_KIND_NAME)
#undef DAL_KIND_NAME
};

struct KindInfo {
    const char* written;
    const char* sample;
    const char* second;
};
constexpr KindInfo kKindInfos[] = {
#define DAL_KIND_INFO(name, written, sample, second) {written, sample, second},
    DAL_KINDS(DAL_KIND_INFO)
#undef DAL_KIND_INFO
};
constexpr const KindInfo& infoOf(Kind kind) { return kKindInfos[static_cast<int>(kind)]; }

} // namespace args
