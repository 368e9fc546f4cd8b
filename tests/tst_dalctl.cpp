// dalctl run as a process: exit codes, messages, help pages, the printout's quoting read back
// by decode, explain on a pipe, sweep and the bash completion.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run {
    int exitCode;
    QByteArray out;
    QByteArray err;
};

Run dalctl(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    process.start(QStringLiteral(DALCTL_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

// The library's trace line for CMD 68, DAT1 12, DAT2 3 (savePage of page 3), as dalctl
// --trace shows it.
QByteArray traceLine() {
    const Run run = dalctl({"--trace", "raw", "68", "12", "3", "0", "0"});
    for (const QByteArray& line : run.out.split('\n'))
        if (line.startsWith("trace: "))
            return line.mid(7);
    return QByteArray();
}

// `bytes` in a new file of `folder`; its path.
QString fileOf(const QTemporaryDir& folder, const QByteArray& bytes) {
    QFile file(folder.filePath(QString::number(qHash(bytes))));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? file.fileName()
                                                                                : QString();
}

// A text quoted by the printout, read as JSON reads a string (the escapes are JSON's).
QString unquoted(const QString& quoted) {
    const QJsonDocument doc = QJsonDocument::fromJson('[' + quoted.toUtf8() + ']');
    return doc.isArray() ? doc.array().at(0).toString() : QStringLiteral("<unreadable>");
}

} // namespace

class tst_dalctl : public QObject {
    Q_OBJECT
private slots:
    void badInput_data();
    void badInput();
    void answers_data();
    void answers();
    void helpPerCommand();
    void version();
    void quotedTextReadsBack();
    void explainKeepsLineEndings();
    void explainAnswersBeforeInputEnds();
    void sweepSaysReturnedOnce();
    void completion();
    void manualPage();
    void decodeDropsFinalLineEnding();
};

// Bad input: exit 2, nothing on standard output, the problem named on standard error.
void tst_dalctl::badInput_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("nothing") << QStringList{} << "no operation given";
    QTest::newRow("unknown option") << QStringList{"--bogus", "list"} << "Unknown option 'bogus'";
    QTest::newRow("unknown operation")
        << QStringList{"getComBoardVor"}
        << "unknown operation getComBoardVor; did you mean: DalTarsel::getComBoardVer";
    QTest::newRow("not an integer")
        << QStringList{"saveScene", "3000", "x"} << "\"x\" is not an integer";
    QTest::newRow("raw's option on an operation")
        << QStringList{"getComBoardVer", "--timeout", "5"}
        << "--timeout is an option of raw, not of an operation";
    QTest::newRow("unknown family")
        << QStringList{"--device", "T99", "getComBoardVer"}
        << "unknown device T99: the families are native, T9, T3, KR2, NV, H40, H40B, VM6S, VantaZ, "
           "Cadex, keyboard, OSD";
    QTest::newRow("processor operation on the keyboard")
        << QStringList{"--device", "keyboard", "getComBoardVer"}
        << "never sends to the keyboard family; its families: native, T9, T3,";
    QTest::newRow("keyboard operation on a processor")
        << QStringList{"--device", "native", "setKeyLed", "1", "1", "1"}
        << "never sends to the native family; its families: keyboard";
    QTest::newRow("raw to the OSD box")
        << QStringList{"--device", "OSD", "raw", "1", "2", "3", "4", "5"}
        << "never sends to the OSD family";
    QTest::newRow("raw, more than a byte") << QStringList{"raw", "0x168", "0", "0", "0", "0"}
                                           << "0x168 is not one byte in hex (00 to ff)";
    QTest::newRow("raw, negative")
        << QStringList{"raw", "68", "12", "-1", "0", "0"} << "-1 is not one byte in hex";
    QTest::newRow("JSON member not read")
        << QStringList{"setOsdTextForT9", "3000", R"({"Text":"hello"})"}
        << "reads no member \"Text\" of its object; it reads posX, posY,";
    QTest::newRow("not a boolean") << QStringList{"searchDeviceForVM6S", "3000", "maybe"}
                                   << "\"maybe\" is not a boolean (true, false, 1 or 0)";
    QTest::newRow("integer below its range") << QStringList{"f_RGBtoInt", "-2147483649", "0", "0"}
                                             << "-2147483649 is outside -2147483648..2147483647";
    QTest::newRow("record, unknown field") << QStringList{"addToQueue", R"({"nope":1})"}
                                           << "addToQueue: record has no field named nope";
    QTest::newRow("record, a head not hex")
        << QStringList{"addToQueue", R"({"head":"0000f01d0105000g"})"}
        << "addToQueue: record head must be 8 bytes of hex";
    QTest::newRow("record, a number past 64 bits")
        << QStringList{"decode", R"({"head":"00006a0300000000","timeout":1e19})"}
        << "JSON record (line 1): record timeout must be a number";
    QTest::newRow("OSD record, a number for a text")
        << QStringList{"--device", "OSD", "addToQueue", R"({"tag":5})"}
        << "addToQueue: OSD record tag must be a text";
    QTest::newRow("decode, a text longer than any sent")
        << QStringList{"decode", QString(70000, 'y')}
        << "a text of 70000 characters is longer than any a family is sent";
    QTest::newRow("dash list with commas") << QStringList{"setLayerBlackWhiteEffect", "1,0,1"}
                                           << "\"1,0,1\" is not numbers written 1-0-1";
    QTest::newRow("comma list with dashes")
        << QStringList{"setContainerAndBankArr", "3000", "1", "1-2"}
        << "\"1-2\" is not numbers written 1,2,3";
    QTest::newRow("explain, keyboard")
        << QStringList{"explain", "--device", "keyboard", "-"}
        << "trace lines come from DalTarsel's families, not keyboard";
    QTest::newRow("demo, a word") << QStringList{"demo", "x"}
                                  << "demo takes no arguments; extra: x";
    QTest::newRow("man, a word") << QStringList{"man", "x"} << "man takes no arguments; extra: x";
    QTest::newRow("--version, a word")
        << QStringList{"--version", "x"} << "--version takes no arguments; extra: x";
    QTest::newRow("sweep, unknown family")
        << QStringList{"sweep", "XX"} << "unknown family XX: the families are native, T9, T3,";
    QTest::newRow("model file unread") << QStringList{"--model", "/nonexistent.json", "getSN"}
                                       << "cannot read /nonexistent.json: ";
    QTest::newRow("model, an array")
        << QStringList{"--model", "[]", "getSN"} << "--model JSON: the models are a JSON object";
    QTest::newRow("model, not JSON")
        << QStringList{"--model", "{", "getSN"} << "--model JSON: not JSON: ";
    QTest::newRow("model, a fraction for an integer")
        << QStringList{"--model", R"({"ModelTarsel":{"timeout":1.5}})", "getComBoardVer"}
        << "ModelTarsel.timeout is 1.5, not an integer";
    QTest::newRow("model, unknown member")
        << QStringList{"--model", R"({"previewPort":[1]})", "getSN"}
        << "no model record has a member named previewPort";
    QTest::newRow("printed text, a broken escape")
        << QStringList{"decode", "  head: 00 00 6a 03 00 00 00 00\n  Datablock: \"<GV\\u00zzER>\""}
        << "head (line 1) is garbled in its Datablock text";
    QTest::newRow("decimal, nan") << QStringList{"setHdrGamma", "3000", "1", "nan"}
                                  << "\"nan\" is not a decimal number";
    QTest::newRow("decimal, inf") << QStringList{"setHdrGamma", "3000", "1", "inf"}
                                  << "\"inf\" is not a decimal number";
}

void tst_dalctl::badInput() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Run run = dalctl(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.out.isEmpty(), run.out.constData());
    QVERIFY2(QString::fromUtf8(run.err).contains(message), run.err.constData());
}

// Requests that are read: an answer exits 0, nothing found or queued exits 1.
void tst_dalctl::answers_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("error"); // what standard error holds, all of it
    const QString rawHead = "head: 00 00 68 12 03 00 00 00";
    QTest::newRow("raw, hex bytes")
        << QStringList{"raw", "68", "12", "3", "0", "0"} << 0 << rawHead << "";
    QTest::newRow("raw, 0x") << QStringList{"raw", "0x68", "0X12", "0x3", "00", "0"} << 0 << rawHead
                             << "";
    QTest::newRow("family by code, option last")
        << QStringList{"getComBoardVer", "--device", "0x250400"} << 0 << "device 0x250400 (T3)"
        << "";
    // A code of no family runs as the native family, without a note that the record went
    // elsewhere.
    QTest::newRow("a code of no family") << QStringList{"--device", "0x123456", "getComBoardVer"}
                                         << 0 << "record 1: device 0x700000 (native)"
                                         << "dalctl: 0x123456: no family's code; native records\n";
    QTest::newRow("family by decimal code, leading zero")
        << QStringList{"--device", "02425616", "getComBoardVer"} << 0 << "device 0x250310 (T3)"
        << "";
    QTest::newRow("negative number is a value")
        << QStringList{"f_RGBtoInt", "-1", "2", "3"} << 0 << "returned: -65021 (0xffff0203)"
        << "";
    QTest::newRow("returned, as JSON") << QStringList{"--json", "f_RGBtoInt", "-1", "2", "3"} << 0
                                       << "{\"returned\":\"returned: -65021 (0xffff0203)\"}\n"
                                       << "";
    QTest::newRow("integers at their range's ends")
        << QStringList{"f_RGBtoInt", "2147483647", "-2147483648", "0"} << 0
        << "returned: -65536 (0xffff0000)"
        << "";
    QTest::newRow("queues nothing")
        << QStringList{"setKeyLed", "1", "1", "1"} << 1 << "no record queued"
        << "warning: setKeyLed: key 1 of kind 1, group 1 is outside the table: its key codes run "
           "89..168\n";
    QTest::newRow("list, a wildcard")
        << QStringList{"list", "getComBoard*"} << 0 << "DalTarsel::getComBoardVerForH7("
        << "";
    QTest::newRow("list, nothing matches") << QStringList{"list", "nothingmatches"} << 1 << ""
                                           << "dalctl: no operation matches nothingmatches\n";
    QTest::newRow("OSD by name") << QStringList{"--device", "OSD", "clearScreen", "tag1"} << 0
                                 << "OSD record 1: tag \"tag1\""
                                 << "";
    QTest::newRow("sent to another family than named")
        << QStringList{"--device", "native", "setEDIDForT9", "3000", "1", "2", "3"} << 0
        << "record 1: device 0x250300 (T9)"
        << "dalctl: note: setEDIDForT9 sends to T9 whatever the device; native was named\n";
    QTest::newRow("sent to the family named")
        << QStringList{"--device", "T9", "setEDIDForT9", "3000", "1", "2", "3"} << 0
        << "record 1: device 0x250300 (T9)"
        << "";
    QTest::newRow("list, dash list")
        << QStringList{"list", "setLayerBlackWhiteEffect"} << 0
        << "DalTarsel::setLayerBlackWhiteEffect(DashNumbers effects)    # effects: numbers 1-2-3"
        << "";
    QTest::newRow("list, comma list")
        << QStringList{"list", "setContainerAndBankArr"} << 0 << "# banks: numbers 1,2,3"
        << "";
    // A board that packs the source apart from the native records is read apart.
    QTest::newRow("decode, a code the library treats apart")
        << QStringList{"decode", "0000f1255b000000"} << 0
        << "8-byte head on 0x220000: geth264inputrtsp(source=5, channel=11)"
        << "";
    QTest::newRow("decode, a text one character past the closest")
        << QStringList{"decode", R"({"Datablock":"Command=GetVersionx","dataType":2,)"
                                 R"("deviceType":"0x250300","head":"00006a0300000000"})"}
        << 1 << "on T9, whose text ends sooner; 1 more characters here"
        << "";
    QTest::newRow("decode, an OSD frame on its family")
        << QStringList{"decode", "0000fedc02000000000d0a"} << 0
        << "  OSD frame on OSD: dal_Osd::clearScreen()"
        << "";
    QTest::newRow("decode, codes alike in one line")
        << QStringList{"decode", "0000f01d010500000001020306"} << 0
        << " 0x240000 0x240100 0x240200 0x910000: setLayerContainerIndex(sceneIndex=1,"
        << "";
    QTest::newRow("decode, a number no operation sends")
        << QStringList{"decode", R"({"deviceType":"0x700000","head":"00006a0300000000",)"
                                 R"("msgCode":5,"timeout":3000})"}
        << 1 << "closest: DalTarsel::getComBoardVer on native, msgCode is 5 here, 0 sent"
        << "";
    QTest::newRow("decode, a head byte that is the block's length")
        << QStringList{"decode", "--device", "native", "0000f01d010500000001020306"} << 0
        << "    head 4: index = 1\n    head 5: length\n"
        << "";
    QTest::newRow("decode, values carried in a byte")
        << QStringList{"decode", "--device", "native", "0000f01d010500000001020306"} << 0
        << "carried in part: sub (low byte), index (low byte)\n"
        << "";
    QTest::newRow("decode, a head with a block it never sends")
        << QStringList{"decode", "00006a0300000000deadbeef"} << 1
        << "closest: DalTarsel::getComBoardVer on native, head as sent, which sends no block; "
           "4 more bytes here"
        << "";
    QTest::newRow("model as JSON text")
        << QStringList{"--model", " {\"timeout\": 500}", "getComBoardVer"} << 0 << "timeout 500"
        << "";
    // A list given in part keeps its other entries: scene 1's date block still has its layers.
    QTest::newRow("short name in the device's class")
        << QStringList{"--device", "keyboard", "getSN"} << 0 << "device 0x400000 (keyboard)"
        << "";
    const QString sceneOne = "0a000a004001b4000a00000080026801000000ff006e003c004001b400640032008"
                             "0026801000000ff01d2006e004001b400c800640080026801000000ff023601a00"
                             "04001b4002c01960080026801000000ff03000102030405060708090a0b0c0d0e0f"
                             "015f";
    QTest::newRow("model, a list in part")
        << QStringList{"--model",
                       R"({"ModelScene":{"sceneList":[{},{"layerList":[{"regionA":{"x":10}}]}]}})",
                       "--json", "setSceneDate", "1"}
        << 0 << "\"arryDatablock\":\"" + sceneOne + '"' << "";
    // The replay names the one entry changed; the others keep their places, empty.
    QTest::newRow("decode, a list's entry in the replay")
        << QStringList{"decode", "--device", "native", "0000f00801660000" + sceneOne} << 0
        << R"(--model '{"ModelScene":{"sceneList":[{},{"layerList":[{"regionA":{"x":10}},{},{},{}]})"
           R"(,{},{}]}}' DalTarsel::setSceneDate 1)"
        << "";
    QTest::newRow("model, one member of every record, a list")
        << QStringList{"--model", R"({"previewPorts":[0,1,77]})", "setPreviewPort"} << 0
        << "arryDatablock (5 bytes): 00014d0351"
        << "";
    QTest::newRow("model, a record's own member wins")
        << QStringList{"--model", R"({"timeout":500,"ModelScene":{"timeout":100}})", "--json",
                       "setSceneDate", "1"}
        << 0 << R"("timeout":100})"
        << "";
    QTest::newRow("sample key in the flat table")
        << QStringList{"sweep", "keyboard"} << 0
        << "== keyboard: Dal_Pommet::setKeyLed 0 1 1\nrecord 1: device 0x400000"
        << "";
    QTest::newRow("demo, a raw request on every family")
        << QStringList{"demo"} << 0
        << "modal read: dalctl raw f1 8 4 0 0\n  native 0x700000 [00 00 f1 08 04 00 00 00]"
        << "";
    // A number a model record holds itself, read once the record has its length.
    QTest::newRow("decode, a model record's own number")
        << QStringList{"decode", "--device", "native", "0000684609000000"} << 0
        << "setDelay_PowerON(model.powerOnDelay=9)"
        << "";
    // Each built-in key has its own label and number (two bytes: past 255 too), so that a key
    // read from another entry shows.
    QTest::newRow("built-in key's own label")
        << QStringList{"setKeyOled_New", "0", "1", "5"} << 0
        << "arryDatablock (13 bytes): 0500a0a14b3500004c32000044"
        << "";
    QTest::newRow("built-in key past 255")
        << QStringList{"setKeyLed", "0", "1", "300"} << 0 << "arryDatablock (4 bytes): 002c012d"
        << "";
    QTest::newRow("explain, no trace line") << QStringList{"explain", "-"} << 1 << ""
                                            << "";
    QTest::newRow("padded text, one set of answers")
        << QStringList{"decode", "  <GVER>  "} << 0
        << "text \"<GVER>\"\n  text on T3: getComBoardVer()\n    replay:"
        << "";
    QTest::newRow("list, colour") << QStringList{"list", "setH265FrameColor"} << 0
                                  << "# color: colour #rrggbb\n"
                                  << "";
    QTest::newRow("list, JSON") << QStringList{"list", "setOsdTextForT9"} << 0
                                << "# osd: JSON of posX posY"
                                << "";
}

void tst_dalctl::answers() {
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, output);
    QFETCH(QString, error);
    const Run run = dalctl(arguments);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(QString::fromUtf8(run.out).contains(output), run.out.constData());
    QCOMPARE(QString::fromUtf8(run.err), error);
}

// Each command's page describes it alone: its usage, only the options it reads, an example.
void tst_dalctl::helpPerCommand() {
    const QStringList commands{"list",   "raw", "demo",       "sweep", "explain",
                               "decode", "doc", "completion", "man",   "saveScene"};
    QMap<QString, QStringList> options; // the options each page describes
    QSet<QByteArray> pages{dalctl({"--help"}).out};
    for (const QString& command : commands) {
        const Run run = dalctl({command, "--help"});
        QCOMPARE(run.exitCode, 0);
        const QString page = QString::fromUtf8(run.out);
        QVERIFY2(page.startsWith("usage: dalctl " + command) ||
                     page.startsWith("usage: dalctl [options] DalTarsel::" + command + '('),
                 qPrintable(page));
        QVERIFY2(page.contains("\nExample:\n  "), qPrintable(page));
        pages << run.out;
        auto it = QRegularExpression("^  (--[a-z-]+)", QRegularExpression::MultilineOption)
                      .globalMatch(page);
        while (it.hasNext())
            options[command] << it.next().captured(1);
    }
    QCOMPARE(pages.size(), commands.size() + 1);
    QCOMPARE(options.value("list"), QStringList());
    QCOMPARE(options["decode"], QStringList({"--device", "--json", "--file", "--as-text"}));
    QVERIFY(options["raw"].contains("--timeout") && options["raw"].contains("--text"));
    QVERIFY(!options["saveScene"].contains("--timeout") &&
            options["saveScene"].contains("--model"));
}

// The version of the library as the project declares it, and the Qt it runs on.
void tst_dalctl::version() {
    QFile project(QStringLiteral(DAL_SOURCE_DIR "/../CMakeLists.txt"));
    QVERIFY(project.open(QIODevice::ReadOnly));
    const auto declared = QRegularExpression("project\\(DAL_Manage VERSION ([0-9.]+)")
                              .match(QString::fromUtf8(project.readAll()));
    QVERIFY(declared.hasMatch());
    const Run run = dalctl({"--version"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains("libDAL_Manage " + declared.captured(1).toUtf8()),
             run.out.constData());
    QVERIFY2(run.out.contains(QByteArray("Qt ") + qVersion()), run.out.constData());
}

// A text with quotes, backslashes, a line break that would start a record of its own and
// control characters prints as one record, and decode reads the printout back to the
// operation and the very text.
void tst_dalctl::quotedTextReadsBack() {
    const QString text = QStringLiteral("a\"b\\c\nrecord 2: x\x01\ty\r");
    const Run printed = dalctl({"setCurrentSceneIndexForSysPlan", "1", text});
    QCOMPARE(printed.exitCode, 0);
    const QByteArrayList lines = printed.out.split('\n');
    QCOMPARE(lines.size(), 5); // four lines and their ends
    QVERIFY(lines[0].startsWith("record 1: ") && !printed.out.contains("\nrecord 2"));
    QVERIFY(!printed.out.contains('\x01') && !printed.out.contains('\t') &&
            !printed.out.contains('\r'));
    const QString datablock = QString::fromUtf8(lines[2].trimmed());
    QVERIFY2(datablock.startsWith("Datablock: "), lines[2].constData());
    QCOMPARE(unquoted(datablock.mid(11)), text);

    const Run decoded = dalctl({"decode", "-"}, printed.out);
    QCOMPARE(decoded.exitCode, 0);
    const QString answer = QString::fromUtf8(decoded.out);
    QVERIFY2(answer.startsWith("record 1 (line 1): ") &&
                 answer.contains("setCurrentSceneIndexForSysPlan("),
             qPrintable(answer));
    QVERIFY2(!answer.contains(QLatin1Char('\x01')) && !answer.contains("\nrecord 2"),
             qPrintable(answer));
    // The replay, pasted into bash, prints the record again.
    const auto replay =
        QRegularExpression("replay: (dalctl .*)$", QRegularExpression::MultilineOption)
            .match(answer);
    QVERIFY2(replay.hasMatch(), qPrintable(answer));
    QProcess bash;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DALCTL"), QStringLiteral(DALCTL_PATH));
    bash.setProcessEnvironment(environment);
    bash.start(QStringLiteral("bash"),
               {"-c", "dalctl() { \"$DALCTL\" \"$@\"; }; " + replay.captured(1)});
    QVERIFY(bash.waitForFinished(60000));
    QCOMPARE(bash.readAllStandardOutput(), printed.out);
}

// Each line leaves with the ending it came with: CRLF, LF, or none on the last line.
void tst_dalctl::explainKeepsLineEndings() {
    const QByteArray trace = traceLine();
    QVERIFY(trace.startsWith("---addToQueue----CMD= \"68\""));
    const Run run = dalctl({"explain", "-"}, "x\r\n12:00 " + trace + "\r\nplain\n" + trace);
    QCOMPARE(run.exitCode, 0);
    const QByteArrayList lines = run.out.split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QByteArray("x\r"));
    QVERIFY2(lines[1].startsWith("12:00 " + trace + "  # dal: ") &&
                 lines[1].contains("savePage(page=3)") && lines[1].endsWith("]\r"),
             lines[1].constData());
    QCOMPARE(lines[2], QByteArray("plain"));
    QVERIFY2(lines[3].startsWith(trace + "  # dal: savePage(page=3)") && lines[3].endsWith(']'),
             lines[3].constData());
}

// Reading a pipe, explain writes each line's answer as soon as the line is whole.
void tst_dalctl::explainAnswersBeforeInputEnds() {
    const QByteArray trace = traceLine();
    QProcess process;
    process.start(QStringLiteral(DALCTL_PATH), {"explain", "-"});
    QVERIFY(process.waitForStarted());
    process.write(trace + '\n');
    QByteArray seen;
    while (!seen.contains('\n') && process.waitForReadyRead(20000))
        seen += process.readAllStandardOutput();
    QCOMPARE(process.state(), QProcess::Running); // its input is still open
    QVERIFY2(seen.startsWith(trace + "  # dal: savePage(page=3)"), seen.constData());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), 0);
}

// The sweep runs every operation of every family; a returned value is labelled once.
void tst_dalctl::sweepSaysReturnedOnce() {
    const Run run = dalctl({"sweep"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.out.contains("\nreturned: "));
    QVERIFY(run.out.contains("== keyboard: ") && run.out.contains("== OSD: "));
    for (const QByteArray& line : run.out.split('\n'))
        QVERIFY2(!line.contains("returned: returned:"), line.constData());
}

// The script, sourced into bash, completes commands, operations and families.
void tst_dalctl::completion() {
    if (QStandardPaths::findExecutable("bash").isEmpty())
        QSKIP("no bash");
    const Run run = dalctl({"completion"});
    QCOMPARE(run.exitCode, 0);
    QTemporaryDir folder;
    const QString script = fileOf(folder, run.out);
    const auto complete = [&](const QString& words) {
        QProcess bash;
        bash.start("bash",
                   {"-c", QStringLiteral("source %1 && COMP_WORDS=(%2) && "
                                         "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _dalctl && "
                                         "echo \"${COMPREPLY[*]}\"")
                              .arg(script, words)});
        if (!bash.waitForFinished(20000) || bash.exitCode() != 0)
            return QStringList{"bash failed: " + QString::fromUtf8(bash.readAllStandardError())};
        return QString::fromUtf8(bash.readAllStandardOutput())
            .simplified()
            .split(' ', Qt::SkipEmptyParts);
    };
    QCOMPARE(complete("dalctl expl"), QStringList{"explain"});
    const QStringList d = complete("dalctl d");
    QVERIFY(d.contains("demo") && d.contains("decode") && d.contains("doc") && d.contains("doCut"));
    QVERIFY(complete("dalctl getComBoard").contains("getComBoardVer"));
    QVERIFY(complete("dalctl setKeyO").contains("setKeyOled_P5"));
    QCOMPARE(complete("dalctl --device V"), QStringList({"VM6S", "VantaZ"}));
    QCOMPARE(complete("dalctl --device k"), QStringList{"keyboard"});
    QCOMPARE(complete("dalctl --device O"), QStringList{"OSD"});
    QVERIFY(complete("dalctl --device T3 getCom").contains("getComBoardVer"));
    QCOMPARE(complete("dalctl --json sweep V"), QStringList({"VM6S", "VantaZ"}));
}

// The page has an entry for every command --help lists and every option (which --help and the
// completion list alike), and man renders it without a warning.
void tst_dalctl::manualPage() {
    const Run page = dalctl({"man"});
    QCOMPARE(page.exitCode, 0);
    const QString help = QString::fromUtf8(dalctl({"--help"}).out);
    const QString roff = QString::fromUtf8(page.out).remove(QRegularExpression(R"(\\f[BIR])"));
    QStringList commands, options;
    auto it = QRegularExpression(R"(^  (?:dalctl (\w+)|(--[a-z-]+)))",
                                 QRegularExpression::MultilineOption)
                  .globalMatch(help);
    while (it.hasNext()) {
        const auto m = it.next();
        (m.captured(1).isEmpty() ? options : commands) << m.captured(1) + m.captured(2);
    }
    const auto completed = QRegularExpression(R"re(compgen -W "(--[^"]+)")re")
                               .match(QString::fromUtf8(dalctl({"completion"}).out));
    QCOMPARE(options, completed.captured(1).split(' '));
    QVERIFY(commands.contains("man") && commands.contains("list"));
    for (const QString& name :
         commands.replaceInStrings(QRegularExpression("^"), "dalctl ") + options)
        QVERIFY2(roff.contains(".TP\n" + QString(name).replace("-", "\\-")), qPrintable(name));
    if (QStandardPaths::findExecutable("man").isEmpty() ||
        QStandardPaths::findExecutable("nroff").isEmpty())
        QSKIP("no man to render the page");
    QTemporaryDir folder;
    QProcess man;
    man.setEnvironment(QProcess::systemEnvironment() << "MANROFFSEQ=");
    man.start("man", {"--warnings", "-l", fileOf(folder, page.out)});
    QVERIFY(man.waitForFinished(60000));
    QCOMPARE(man.readAllStandardError(), QByteArray());
    QCOMPARE(man.exitCode(), 0);
    QVERIFY(man.readAllStandardOutput().contains("EXIT STATUS"));
}

// The final line ending of a file or of standard input ends the text; it is not part of it.
void tst_dalctl::decodeDropsFinalLineEnding() {
    QTemporaryDir folder;
    for (const Run& run :
         {dalctl({"decode", "--device", "T3", "--file", fileOf(folder, "<GVER>\r\n")}),
          dalctl({"decode", "--device", "T3", "-"}, "<GVER>\n")}) {
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.out.contains("text on T3: getComBoardVer()"), run.out.constData());
    }
}

QTEST_GUILESS_MAIN(tst_dalctl)
#include "tst_dalctl.moc"
