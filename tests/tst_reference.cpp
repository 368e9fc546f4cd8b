// The reference page written by `dalctl doc`, as headless Chromium renders it.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

#include <algorithm>
#include <unistd.h>

namespace {

QString str(const QJsonValue& v, const char* key) { return v[QLatin1String(key)].toString(); }
QJsonArray arr(const QJsonValue& v, const char* key) { return v[QLatin1String(key)].toArray(); }
bool osd(const QJsonValue& rec) { return rec["osd"].toBool(); }

// What produced byte i of a head or block: the names its marks carry; none for a constant.
QStringList producer(const QJsonArray& marks, int i) {
    const QStringList names = QVariant(marks[i].toArray().toVariantList()).toStringList();
    return names == QStringList{"constant"} ? QStringList() : names;
}

// Each run of a record's bytes that the same names produced, head first: "block 4-5: a, b".
QString runs(const QJsonValue& rec) {
    QStringList runs;
    for (const QString part : {"head", "block"}) {
        const QJsonArray marks = arr(rec, part == "head" ? "marks" : "blockMarks");
        for (int i = 0, j = 0; i < marks.size(); i = j) {
            const QStringList names = producer(marks, i);
            for (j = i + 1; !names.isEmpty() && j < marks.size() && producer(marks, j) == names;)
                ++j;
            if (!names.isEmpty())
                runs << part + ' ' + QString::number(i) +
                            (j - i > 1 ? '-' + QString::number(j - 1) : "") + ": " +
                            names.join(", ");
        }
    }
    return runs.join("; ");
}

// A record in one line, "HEAD | TIMEOUT | TEXT | BLOCK" (an OSD record's: header, payload).
QString describe(const QJsonValue& rec) {
    return QStringList{str(rec, osd(rec) ? "header" : "head"),
                       QString::number(rec["timeout"].toInt()), str(rec, "Datablock"),
                       str(rec, osd(rec) ? "payload" : "arryDatablock")}
        .join(" | ");
}

// A page of the test's own beside the reference page: opens that in a frame at its own fragment
// and writes out as JSON what the frame shows, a byte with the title of the <mark> holding it.
const char kViewer[] = R"(<!DOCTYPE html><meta charset="utf-8"><pre id="view"></pre><script>
const frame = document.createElement('iframe'), view = document.getElementById('view');
const all = (e, css) => Array.from(e.querySelectorAll(css));
const text = (e, css) => (e.querySelector(css) || {}).textContent || '';
function bytes(e, rec, key, marks) {
  rec[key] = '';
  rec[marks] = [];
  for (const n of e ? e.childNodes : [])
    for (const b of n.textContent.split(' ').filter(Boolean))
      rec[key] += b, rec[marks].push(n.nodeName === 'MARK' ? n.title.split(', ') : []);
}
// At 800 and 1024 px, every fold open, what does not read: a text column under 15em, a cell's
// bytes or text past its cell or the window, column titles on top of each other.
const cramped = new Map();
function measure(d, width) {
  frame.style.width = width + 'px';
  const range = d.createRange();
  const box = e => (range.selectNodeContents(e), range.getBoundingClientRect());
  const apart = (a, b) => a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top;
  for (const s of all(d, 'section[data-signature]')) {
    const titles = all(s, 'thead th').map(box).filter(r => r.width), bad = cramped.get(s) || [];
    all(s, '.text').forEach(e => e.closest('td').offsetWidth < 210 && bad.push(width + ': text column'));
    all(s, '.head, .text, .block, .legend, .other').forEach(e => box(e).right > 1 + Math.min(
        d.documentElement.clientWidth, e.closest('td').getBoundingClientRect().right) &&
        bad.push(width + ': ' + e.className + ' cut'));
    titles.forEach((a, i) => titles.slice(i + 1).some(b => !apart(a, b)) &&
        bad.push(width + ': titles overlap'));
    cramped.set(s, bad);
  }
}
frame.onload = () => {
  all(frame.contentDocument, 'details').forEach(e => e.open = true);
  [800, 1024].forEach(w => measure(frame.contentDocument, w));
  view.textContent = encodeURIComponent(JSON.stringify(
  all(frame.contentDocument, 'section[data-signature]').map(s => ({
    signature: s.dataset.signature, hidden: s.hidden, sample: text(s, '.sample'),
    cramped: cramped.get(s),
    rows: all(s, 'tr[data-family]').map(tr => {
      const rec = { timeout: +text(tr, '.timeout'), Datablock: text(tr, '.text') };
      bytes(tr.querySelector('.head'), rec, 'head', 'marks');
      bytes(tr.querySelector('.block'), rec, 'arryDatablock', 'blockMarks');
      return { family: tr.dataset.family, record: +(tr.dataset.record || 0), hidden: tr.hidden,
               text: tr.textContent, shown: rec,
               legend: all(tr, '.legend li').map(li => li.textContent).join('; ') };
    }) }))));
};
frame.src = 'reference.html' + location.hash;
document.body.appendChild(frame);
</script>)";

// Which operations the page must list, by its rule, written apart from the page's script: an
// enabled family, and the query in the signature, in an enabled family's text, or (hex) in its
// head (OSD: header) from a byte boundary, a byte that is not constant matching any byte while
// one constant byte matches.
bool listed(const QJsonValue& op, const QString& query, const QStringList& enabled) {
    const QString q = query.toLower(), compact = QString(q).remove(' ');
    const bool hex = QRegularExpression("^([0-9a-f]{2})+$").match(compact).hasMatch();
    bool anyEnabled = false, match = q.isEmpty() || str(op, "signature").toLower().contains(q);
    for (const QJsonValue& result : arr(op, "results")) {
        const bool on = enabled.contains(str(result, "family"));
        anyEnabled = anyEnabled || on;
        for (const QJsonValue& rec : arr(result, "records")) {
            QString head = str(rec, osd(rec) ? "header" : "head"); // each byte not constant: ".."
            for (int b = 0; b < head.size() / 2; ++b)
                if (!producer(arr(rec, "marks"), b).isEmpty())
                    head.replace(2 * b, 2, "..");
            for (int s = 0; on && hex && s + compact.size() <= head.size(); s += 2)
                match = match || (head.mid(s, compact.size()).count('.') < compact.size() &&
                                  std::equal(compact.begin(), compact.end(), head.begin() + s,
                                             [](QChar a, QChar b) { return b == '.' || a == b; }));
            match = match || (on && str(rec, "Datablock").toLower().contains(q));
        }
    }
    return anyEnabled && match;
}

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

    // The operations as the page shows them, opened at the fragment.
    QJsonArray open(const QString& fragment) {
        const QTemporaryDir profile;
        QStringList args = QString("--headless --disable-gpu --disable-quic --no-first-run "
                                   "--disable-background-networking --disable-component-update "
                                   "--disable-sync --allow-file-access-from-files --dump-dom")
                               .split(' ');
        args << "--user-data-dir=" + profile.path()
             << QUrl::fromLocalFile(folder.filePath("viewer.html")).toString() + '#' + fragment;
        if (::geteuid() == 0) // Chromium's sandbox does not run as root
            args.prepend("--no-sandbox");
        const QString view = QString::fromUtf8(run(chromium, args))
                                 .section("<pre id=\"view\">", 1)
                                 .section("</pre>", 0, 0);
        return QJsonDocument::fromJson(QUrl::fromPercentEncoding(view.toLatin1()).toUtf8()).array();
    }

private slots:
    void initTestCase() {
        run(DALCTL_PATH, {"doc", "--out", folder.filePath("reference.html")});
        QFile file(folder.filePath("reference.html")), viewer(folder.filePath("viewer.html"));
        QVERIFY(file.open(QIODevice::ReadOnly) && viewer.open(QIODevice::WriteOnly) &&
                viewer.write(kViewer) > 0);
        page = file.readAll();
        const QByteArray marker = R"(<script type="application/json" id="dal-reference">)";
        const int start = page.indexOf(marker) + marker.size();
        const QJsonObject embedded =
            QJsonDocument::fromJson(page.mid(start, page.indexOf("</script>", start) - start))
                .object();
        QCOMPARE(embedded["format"].toInt(), 2);
        data = embedded["operations"].toArray();
        // A record of an operation the engine reads names what produced each byte of its head
        // and block; one of an operation it does not read names nothing.
        for (const QJsonValue& op : data)
            for (const QJsonValue& result : arr(op, "results"))
                for (const QJsonValue& rec : arr(result, "records")) {
                    const int explained = op["explained"].toBool();
                    const QString head = str(rec, osd(rec) ? "header" : "head"),
                                  block = str(rec, osd(rec) ? "payload" : "arryDatablock");
                    QCOMPARE(arr(rec, "marks").size(), explained * head.size() / 2);
                    QCOMPARE(arr(rec, "blockMarks").size(), explained * block.size() / 2);
                }
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

    // Without a fragment every operation is listed with its sample arguments (a list with its
    // written form), each record of every family as the data has it, its runs of bytes that are
    // not constant marked and listed, "queues nothing" where it has none, as dalctl --json.
    void everyOperation() {
        if (chromium.isEmpty())
            QSKIP("no Chromium: the page cannot be rendered");
        int knownSeen = 0, lists = 0;
        const QJsonArray shown = open(QString());
        QCOMPARE(shown.size(), data.size());
        for (int i = 0; i < data.size(); ++i) {
            const QString name = str(data[i], "name"), sample = str(shown[i], "sample");
            QCOMPARE(str(shown[i], "signature"), str(data[i], "signature"));
            QVERIFY(!shown[i]["hidden"].toBool());
            QVERIFY2(arr(shown[i], "cramped").isEmpty(),
                     QJsonDocument(arr(shown[i], "cramped")).toJson().constData());
            for (const QJsonValue& arg : arr(data[i], "arguments")) {
                const QString written = str(arg, "written");
                const bool list = written.startsWith("numbers ");
                lists += list;
                QVERIFY2(sample.contains(str(arg, "name") + " = " + str(arg, "sample") +
                                         (list ? " (" + written + ")" : "")),
                         qPrintable(str(data[i], "signature") + ": " + sample));
            }
            for (const QJsonValue& result : arr(data[i], "results")) {
                const QString family = str(result, "family");
                QStringList expected, rows, notes, sent, printed;
                for (const QJsonValue& rec : arr(result, "records")) {
                    sent << describe(rec);
                    expected << sent.last() + " | " + runs(rec) + " | " + runs(rec);
                }
                for (const QJsonValue& row : arr(shown[i], "rows"))
                    if (str(row, "family") == family && !row["record"].toInt())
                        notes << str(row, "text");
                    else if (str(row, "family") == family)
                        rows << describe(row["shown"]) + " | " + runs(row["shown"]) + " | " +
                                    str(row, "legend");
                QCOMPARE(rows, expected);
                // T3's "<SVCN, 2B>" carries the scene in its letter, as native 68 1A 01 in DAT3.
                if (name == "saveScene" && family == "T3") {
                    QCOMPARE(rows.value(0).section(" | ", 5), "head 5: scene; block 8: scene");
                    ++knownSeen;
                }
                if (expected.isEmpty() && str(result, "refused").isEmpty())
                    QVERIFY2(notes.join(' ').contains("queues nothing"), qPrintable(name));
                // What the call gave back carries its own labels.
                if (!str(result, "returned").isEmpty())
                    QVERIFY2(notes.contains(family + str(result, "returned")), qPrintable(name));
                // What the page shows for an operation on T3 (the data, as compared) is what
                // dalctl prints for it.
                if ((name == "getComBoardVer" || name == "setSupplierName") && family == "T3") {
                    QStringList call{"--device", "T3", "--json", name};
                    for (const QJsonValue& arg : arr(data[i], "arguments"))
                        call << str(arg, "sample");
                    for (const QString& line :
                         QString(run(DALCTL_PATH, call)).split('\n', Qt::SkipEmptyParts))
                        printed << describe(QJsonDocument::fromJson(line.toUtf8()).object());
                    QCOMPARE(printed, sent);
                }
            }
        }
        QVERIFY(knownSeen == 1 && lists > 0);
    }

    void filter_data() {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("operation"); // must be listed, or must not
        QTest::addColumn<bool>("listedToo");
        const QString saveScene = "DalTarsel::saveScene(int timeout, int scene)";
        QTest::newRow("text, one family") << "q=SVCN&family=T3" << saveScene << true;
        QTest::newRow("head bytes") << "q=f0%2058" << QString() << false;
        QTest::newRow("hex across bytes") << "q=06a0" << QString() << false;
        QTest::newRow("signature, any case") << "q=getcomboard" << QString() << false;
        QTest::newRow("one family") << "family=keyboard" << saveScene << false;
        QTest::newRow("two families") << "q=68+12&family=native,NV" << QString() << false;
        // The sample's scene is 1: its byte matches any; the constant bytes beside it do not.
        QTest::newRow("argument byte matches any") << "q=68+1a+01+05" << saveScene << true;
        QTest::newRow("constant byte differs") << "q=68%201b%2001%2005" << saveScene << false;
    }

    // A fragment opens the view it names: exactly the operations the rule selects are listed,
    // and only the rows of enabled families show.
    void filter() {
        QFETCH(QString, fragment);
        QFETCH(QString, operation);
        QFETCH(bool, listedToo);
        if (chromium.isEmpty())
            QSKIP("no Chromium: the page cannot be rendered");
        const QUrlQuery view(QString(fragment).replace('+', "%20"));
        const QString query = view.queryItemValue("q", QUrl::FullyDecoded);
        QStringList expected, shown, enabled = families;
        if (view.hasQueryItem("family"))
            enabled = view.queryItemValue("family", QUrl::FullyDecoded).split(',');
        for (const QJsonValue& op : data)
            if (listed(op, query, enabled))
                expected << str(op, "signature");
        for (const QJsonValue& op : open(fragment)) {
            if (!op["hidden"].toBool())
                shown << str(op, "signature");
            for (const QJsonValue& row : arr(op, "rows"))
                QVERIFY2(row["hidden"].toBool() != enabled.contains(str(row, "family")),
                         qPrintable(str(op, "signature")));
        }
        QCOMPARE(shown, expected);
        if (!operation.isEmpty())
            QCOMPARE(shown.contains(operation), listedToo);
    }
};

QTEST_GUILESS_MAIN(tst_reference)
#include "tst_reference.moc"
