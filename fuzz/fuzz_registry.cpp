// Arbitrary argument lists through dalctl's registry: every operation, every device family.
// Input: one byte choosing the device, then lines: any number of "--OPTION" lines, each
// followed by its value, setting what the utility library reports (as dalctl's options of the
// same names do); then the operation's name and its arguments, one a line. "raw" runs the
// generic send with its words (and "--timeout", "--text" lines) as `dalctl raw` does. A name
// that names no operation still picks one, and its words are cut or padded to the count it
// takes, so that mutations keep reaching the operations' argument parsing and bodies.
#include "pacing.h"
#include "records.h"
#include "registry.h"
#include "session.h"

#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>

namespace {

const int kDevices[] = {0x700000, 0x250300, 0x250310, 0x250400, 0x250502, 0x2D0000, 0x900000,
                        0x900001, 0x2C0103, 0x2C0104, 0x260000, 0x2C0201, 0x400000, 0x2C0105};

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

void runRawWords(QStringList words, const UtilityValues& utility) {
    int timeout = 3000;
    QString text;
    for (int i = 0; i + 1 < words.size();) {
        if (words[i] == QLatin1String("--timeout")) {
            timeout = words[i + 1].toInt(nullptr, 0);
            words.erase(words.begin() + i, words.begin() + i + 2);
        } else if (words[i] == QLatin1String("--text")) {
            text = words[i + 1];
            words.erase(words.begin() + i, words.begin() + i + 2);
        } else {
            ++i;
        }
    }
    runRaw(words, timeout, text, utility);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        // The keyboard's pacing and the probes' pause say nothing about what is queued.
        dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
        return true;
    }();
    (void)silenced;
    if (size < 1)
        return 0;

    UtilityValues utility;
    utility.deviceType = kDevices[data[0] % (sizeof kDevices / sizeof kDevices[0])];
    QStringList lines = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), int(size - 1))
                            .split(QLatin1Char('\n'));
    while (lines.size() >= 2 && lines.first().startsWith(QLatin1String("--"))) {
        if (const UtilityOption* o = utilityOption(lines.first().mid(2)))
            o->set(utility, lines.at(1));
        lines.erase(lines.begin(), lines.begin() + 2);
    }
    const QString name = lines.value(0);
    const QStringList words = lines.mid(1);
    try {
        if (name == QLatin1String("raw")) {
            runRawWords(words, utility);
            return 0;
        }
        Call call;
        call.models = Models::defaults();
        call.utility = utility;
        call.words = words;
        if (!findOperations(name).isEmpty()) {
            call.op = &operationFor(name, words);
        } else {
            const QVector<Operation>& ops = operations();
            call.op = &ops.at(int(qHash(name) % uint(ops.size())));
            const QStringList samples = call.op->sampleWords();
            while (call.words.size() > samples.size())
                call.words.removeLast();
            while (call.words.size() < samples.size())
                call.words << samples.at(call.words.size());
        }
        run(call);
    } catch (const UsageError&) {
    } catch (const ArgError&) {
    }
    return 0;
}
