// The reference page written by `dalctl doc`, as headless Chromium renders it.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <unistd.h>

namespace {

QString str(const QJsonValue& v, const char* key) { return v[QLatin1String(key)].toString(); }
QJsonArray arr(const QJsonValue& v, const char* key) { return v[QLatin1String(key)].toArray(); }

// A record in one line, "HEAD | TIMEOUT | TEXT | BLOCK", a byte that arguments reach written
// "01[scene]"; an OSD record's header and payload stand for head and block.
QString describe(const QJsonObject& rec) {
    const QString head = str(rec, rec.contains("header") ? "header" : "head");
    QStringList bytes;
    for (int i = 0; i + 1 < head.size(); i += 2) {
        QStringList names;
        for (const QJsonValue& name : rec["marks"][i / 2].toArray())
            names << name.toString();
        bytes << head.mid(i, 2) + (names.isEmpty() ? QString() : "[" + names.join(", ") + "]");
    }
    return QStringList{bytes.join(' '), QString::number(rec["timeout"].toInt()),
                       str(rec, "Datablock"),
                       str(rec, rec.contains("payload") ? "payload" : "arryDatablock")}
        .join(" | ");
}

// Text as a person reads it: tags dropped, the serializer's entities resolved.
QString plain(QString html) {
    static const QRegularExpression tag("<[^>]*>");
    return html.remove(tag)
        .replace("&lt;", "<")
        .replace("&gt;", ">")
        .replace("&quot;", "\"")
        .replace("&nbsp;", QString(QChar(0xA0)))
        .replace("&amp;", "&");
}

struct Row {
    QString family;
    int record = 0; // 0: a note (queues nothing, refused, returned)
    bool hidden = false;
    QString text;      // the whole row
    QJsonObject shown; // what its head, text, block and time-out elements show
};
struct Op {
    QString signature;
    bool hidden = false;
    QVector<Row> rows;
};

// Reads the rendered page through its hooks: data-signature on an operation, data-family and
// data-record on a row, the head, text, block and timeout elements of a record.
QVector<Op> operationsShown(const QString& html) {
    static const QRegularExpression element("<(\\w+)\\b([^>]*)>"),
        attribute("([\\w-]+)(=\"([^\"]*)\")?"),
        mark("<mark\\b[^>]*title=\"([^\"]*)\"[^>]*>([^<]*)</mark>");
    QVector<Op> ops;
    for (auto it = element.globalMatch(html, html.indexOf("<main")); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        QHash<QString, QString> at;
        for (auto a = attribute.globalMatch(m.captured(2)); a.hasNext();) {
            const QRegularExpressionMatch pair = a.next();
            at.insert(pair.captured(1), plain(pair.captured(3)));
        }
        const int end = html.indexOf("</" + m.captured(1) + ">", m.capturedEnd());
        const QString inner = html.mid(m.capturedEnd(), end - m.capturedEnd());
        const QStringList classes = at.value("class").split(' ');
        if (at.contains("data-signature")) {
            ops.append({at.value("data-signature"), at.contains("hidden"), {}});
            continue;
        }
        if (m.captured(1) == "tr" && at.contains("data-family") && !ops.isEmpty()) {
            ops.last().rows.append({at.value("data-family"),
                                    at.value("data-record").toInt(),
                                    at.contains("hidden"),
                                    plain(inner),
                                    {}});
            continue;
        }
        if (ops.isEmpty() || ops.last().rows.isEmpty())
            continue;
        QJsonObject& shown = ops.last().rows.last().shown;
        if (classes.contains("head")) {
            // "00 01[index] ...": each byte, and the names its mark carries
            QString head;
            QJsonArray marks;
            const QString bytes = QString(inner).replace(mark, "\\2[\\1]").replace(", ", ",");
            for (const QString& byte : plain(bytes).split(' ', Qt::SkipEmptyParts)) {
                head += byte.left(2);
                marks << QJsonArray::fromStringList(
                    byte.mid(3, byte.size() - 4).split(',', Qt::SkipEmptyParts));
            }
            shown["head"] = head;
            shown["marks"] = marks;
        } else if (classes.contains("text")) {
            shown["Datablock"] = plain(inner);
        } else if (classes.contains("block")) {
            shown["arryDatablock"] = plain(inner).remove(' ');
        } else if (classes.contains("timeout")) {
            shown["timeout"] = plain(inner).toInt();
        }
    }
    return ops;
}

// Which operations the page must list, by its rule, written apart from the page's script: an
// enabled family, and the query in the signature, in an enabled family's text, or (hex) in its
// head from a byte boundary.
bool listed(const QJsonValue& op, const QString& query, const QStringList& enabled) {
    const QString q = query.toLower(), compact = QString(q).remove(' ');
    const bool hex = QRegularExpression("^([0-9a-f]{2})+$").match(compact).hasMatch();
    bool anyEnabled = false, match = q.isEmpty() || str(op, "signature").toLower().contains(q);
    for (const QJsonValue& result : arr(op, "results")) {
        anyEnabled = anyEnabled || enabled.contains(str(result, "family"));
        for (const QJsonValue& rec : arr(result, "records"))
            match =
                match || (enabled.contains(str(result, "family")) &&
                          ((hex && QByteArray::fromHex(
                                       str(rec, rec["osd"].toBool() ? "header" : "head").toLatin1())
                                       .contains(QByteArray::fromHex(compact.toLatin1()))) ||
                           str(rec, "Datablock").toLower().contains(q)));
    }
    return anyEnabled && match;
}

const char kNoChromium[] = "no Chromium: the page cannot be rendered";

QByteArray run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(180000);
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

} // namespace

class tst_reference : public QObject {
    Q_OBJECT
    QTemporaryDir folder;
    QString chromium = QStandardPaths::findExecutable("chromium");
    QByteArray page;
    QJsonArray data;      // the operations embedded in the page
    QStringList families; // and its families

    QVector<Op> open(const QString& fragment) {
        const QTemporaryDir profile;
        const QString url = QUrl::fromLocalFile(folder.filePath("reference.html")).toString();
        QStringList args{"--headless",
                         "--disable-gpu",
                         "--disable-quic",
                         "--no-first-run",
                         "--disable-background-networking",
                         "--disable-component-update",
                         "--disable-sync",
                         "--user-data-dir=" + profile.path(),
                         "--dump-dom",
                         url + (fragment.isEmpty() ? "" : "#" + fragment)};
        if (::geteuid() == 0) // Chromium's sandbox does not run as root
            args.prepend("--no-sandbox");
        return operationsShown(QString::fromUtf8(run(chromium, args)));
    }

private slots:
    void initTestCase() {
        run(DALCTL_PATH, {"doc", "--out", folder.filePath("reference.html")});
        QFile file(folder.filePath("reference.html"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        page = file.readAll();
        const QByteArray marker = R"(<script type="application/json" id="dal-reference">)";
        const int start = page.indexOf(marker) + marker.size();
        const QJsonObject embedded =
            QJsonDocument::fromJson(page.mid(start, page.indexOf("</script>", start) - start))
                .object();
        data = embedded["operations"].toArray();
        // Every record carries a list of argument names per head byte.
        for (const QJsonValue& op : data)
            for (const QJsonValue& result : arr(op, "results"))
                for (const QJsonValue& rec : arr(result, "records"))
                    QCOMPARE(arr(rec, "marks").size(),
                             str(rec, rec["osd"].toBool() ? "header" : "head").size() / 2);
        for (const QJsonValue& family : embedded["families"].toArray())
            families << str(family, "name");
        QVERIFY(data.size() > 600);
    }

    // Nothing on the page, the data apart, reaches outside the file.
    void selfContained() {
        const int start = page.indexOf("id=\"dal-reference\">");
        const QString around =
            QString::fromUtf8(page.left(start) + page.mid(page.indexOf("</script>", start)));
        for (const char* outside :
             {"(src|href)\\s*=\\s*[\"']?(https?:|//)", "@import", "url\\((?!\\s*[\"']?data:)",
              "fetch\\s*\\(", "XMLHttpRequest", "<link\\b", "<iframe\\b"})
            QVERIFY2(!around.contains(QRegularExpression(outside)), outside);
    }

    // Without a fragment every operation is listed, each with every record of every family as
    // the data has it, marks included, "queues nothing" where it has none, and the bytes that
    // dalctl --json prints.
    void everyOperation() {
        if (chromium.isEmpty())
            QSKIP(kNoChromium);
        const QVector<Op> shown = open(QString());
        QCOMPARE(shown.size(), data.size());
        for (int i = 0; i < data.size(); ++i) {
            QCOMPARE(shown[i].signature, str(data[i], "signature"));
            QVERIFY(!shown[i].hidden);
            for (const QJsonValue& result : arr(data[i], "results")) {
                QStringList expected, rows, notes;
                for (const QJsonValue& rec : arr(result, "records"))
                    expected << describe(rec.toObject());
                for (const Row& row : shown[i].rows)
                    if (row.family == str(result, "family"))
                        (row.record ? rows : notes)
                            << (row.record ? describe(row.shown) : row.text);
                QCOMPARE(rows, expected);
                if (expected.isEmpty() && str(result, "refused").isEmpty())
                    QVERIFY2(notes.join(' ').contains("queues nothing"),
                             qPrintable(shown[i].signature));
                // What the page shows for an operation on T3 is what dalctl prints for it.
                const QString name = str(data[i], "name");
                if ((name == "getComBoardVer" || name == "setSupplierName") &&
                    str(result, "family") == "T3") {
                    QStringList call{"--device", "T3", "--json", name}, printed;
                    for (const QJsonValue& arg : arr(data[i], "arguments"))
                        call << str(arg, "sample");
                    for (const QByteArray& line : run(DALCTL_PATH, call).split('\n'))
                        if (!line.isEmpty())
                            printed << describe(QJsonDocument::fromJson(line).object());
                    QCOMPARE(rows.join('\n').remove(QRegularExpression("\\[[^]]*\\]")),
                             printed.join('\n'));
                }
            }
        }
    }

    void filter_data() {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("enabled"); // empty: every family
        QTest::newRow("text, one family") << "q=SVCN&family=T3"
                                          << "SVCN" << QStringList{"T3"};
        QTest::newRow("head bytes") << "q=f0%2058"
                                    << "f0 58" << QStringList();
        QTest::newRow("hex across bytes") << "q=06a0"
                                          << "06a0" << QStringList();
        QTest::newRow("signature, any case") << "q=getcomboard"
                                             << "getcomboard" << QStringList();
        QTest::newRow("one family") << "family=keyboard"
                                    << "" << QStringList{"keyboard"};
        QTest::newRow("two families") << "q=68+12&family=native,NV"
                                      << "68 12" << QStringList{"native", "NV"};
    }

    // A fragment opens the view it names: exactly the operations the rule selects are listed,
    // and only the rows of enabled families show.
    void filter() {
        QFETCH(QString, fragment);
        QFETCH(QString, query);
        QFETCH(QStringList, enabled);
        if (chromium.isEmpty())
            QSKIP(kNoChromium);
        if (enabled.isEmpty())
            enabled = families;
        QStringList expected, shown;
        for (const QJsonValue& op : data)
            if (listed(op, query, enabled))
                expected << str(op, "signature");
        for (const Op& op : open(fragment)) {
            if (!op.hidden)
                shown << op.signature;
            for (const Row& row : op.rows)
                QVERIFY2(row.hidden != enabled.contains(row.family), qPrintable(op.signature));
        }
        QCOMPARE(shown, expected);
    }
};

QTEST_GUILESS_MAIN(tst_reference)
#include "tst_reference.moc"
