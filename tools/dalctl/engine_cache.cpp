// Keeps learnt indexes between runs. A kept index is named by the identity of the process that
// learnt it, so a process reads only what a process like itself learnt: same dalctl, same
// library, same stand-ins, same Qt, same locale encoding. Anything else is learnt anew.
#include "engine_index.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QtGlobal>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <link.h>

namespace engine {

namespace {

const char kMagic[] = "dalctl index 1";
constexpr int kKeptIdentities = 6; // older ones are removed, so that rebuilds do not pile up

// The GNU build ID of a loaded object: the linker's hash of everything it linked.
QByteArray buildIdOf(const dl_phdr_info& info) {
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info.dlpi_phdr[i];
        if (segment.p_type != PT_NOTE)
            continue;
        const std::size_t align = segment.p_align == 8 ? 8 : 4;
        auto padded = [align](std::size_t n) { return (n + align - 1) / align * align; };
        const char* at = reinterpret_cast<const char*>(info.dlpi_addr + segment.p_vaddr);
        const char* end = at + segment.p_memsz;
        while (std::size_t(end - at) >= sizeof(ElfW(Nhdr))) {
            const auto* note = reinterpret_cast<const ElfW(Nhdr)*>(at);
            const char* name = at + sizeof(ElfW(Nhdr));
            const std::size_t left = std::size_t(end - name);
            if (padded(note->n_namesz) > left || note->n_descsz > left - padded(note->n_namesz))
                break;
            const char* desc = name + padded(note->n_namesz);
            if (note->n_type == NT_GNU_BUILD_ID && note->n_namesz == 4 &&
                std::memcmp(name, "GNU", 4) == 0)
                return QByteArray(desc, int(note->n_descsz));
            at = desc + std::min(padded(note->n_descsz), std::size_t(end - desc));
        }
    }
    return {};
}

// An object without a build ID is known by its contents.
QByteArray contentsHashOf(const dl_phdr_info& info) {
    const QString path = info.dlpi_name && *info.dlpi_name ? QFile::decodeName(info.dlpi_name)
                                                           : QStringLiteral("/proc/self/exe");
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha1);
    if (file.open(QIODevice::ReadOnly))
        hash.addData(&file);
    return path.toUtf8() + hash.result();
}

int addObject(dl_phdr_info* info, std::size_t, void* ids) {
    const QByteArray id = buildIdOf(*info);
    static_cast<QVector<QByteArray>*>(ids)->append(id.isEmpty() ? contentsHashOf(*info) : id);
    return 0;
}

// ---- the file's contents ----------------------------------------------------------------------

QDataStream& operator<<(QDataStream& s, const Shape& shape) {
    s << qint32(shape.form.kind) << shape.form.bytes << shape.form.text << shape.varies
      << qint32(shape.rules.size());
    for (const Rule& r : shape.rules)
        s << qint32(r.kind) << qint32(r.at) << qint32(r.arg) << qint32(r.offset)
          << qint32(r.falseByte);
    return s << shape.textArgs << shape.reached;
}

QDataStream& operator>>(QDataStream& s, Shape& shape) {
    qint32 kind = 0, rules = 0;
    s >> kind >> shape.form.bytes >> shape.form.text >> shape.varies >> rules;
    shape.form.kind = Form::Kind(std::clamp<qint32>(kind, Form::Head, Form::Osd));
    for (qint32 i = 0; i < rules && s.status() == QDataStream::Ok; ++i) {
        qint32 r[5] = {};
        s >> r[0] >> r[1] >> r[2] >> r[3] >> r[4];
        shape.rules << Rule{Rule::Kind(std::clamp<qint32>(r[0], Rule::Low, Rule::Bool)), r[1], r[2],
                            r[3], r[4]};
    }
    return s >> shape.textArgs >> shape.reached;
}

QByteArray serialise(const Index& index) {
    QByteArray payload;
    QDataStream s(&payload, QIODevice::WriteOnly);
    s.setVersion(QDataStream::Qt_5_15);
    s << qint32(index.signatures.size());
    for (const Signature& sig : index.signatures)
        s << qint32(sig.op - operations().data()) << qint32(sig.device) << sig.base
          << qint32(sig.record) << qint32(sig.records) << qint32(sig.tag) << sig.head << sig.out
          << sig.raw << QJsonDocument(sig.json).toJson(QJsonDocument::Compact);
    return payload;
}

bool fits(const Shape& shape, const Operation& op) {
    const int size = shape.form.bytes.size();
    const int args = op.argumentNames.size();
    return shape.varies.size() == size && shape.reached.size() == size &&
           std::all_of(shape.rules.begin(), shape.rules.end(),
                       [&](const Rule& r) {
                           return r.at >= 0 && r.at < size && r.arg >= 0 && r.arg < args;
                       }) &&
           std::all_of(shape.textArgs.begin(), shape.textArgs.end(),
                       [&](int arg) { return arg >= 0 && arg < args; });
}

// Reads the signatures back, each checked against the registry it refers to.
bool deserialise(const QByteArray& payload, int device, Index& index) {
    QDataStream s(payload);
    s.setVersion(QDataStream::Qt_5_15);
    qint32 count = 0;
    s >> count;
    const QVector<Operation>& ops = operations();
    for (qint32 i = 0; i < count && s.status() == QDataStream::Ok; ++i) {
        qint32 op = -1, record = 0, records = 0, tag = 0, sigDevice = 0;
        QStringList base;
        Shape head, out, raw;
        QByteArray json;
        s >> op >> sigDevice >> base >> record >> records >> tag >> head >> out >> raw >> json;
        if (s.status() != QDataStream::Ok || op < 0 || op >= ops.size())
            return false;
        const Operation& operation = ops[op];
        const bool tarsel = operation.className == QLatin1String("DalTarsel");
        if (!explainable(operation) || tarsel != (device != kAccessories) ||
            base.size() != operation.argumentTypes.size() || record < 1 || record > records ||
            !fits(head, operation) || !fits(out, operation) || !fits(raw, operation))
            return false;
        index.signatures << Signature{
            &operation, sigDevice, base, record, records,
            tag,        head,      out,  raw,    QJsonDocument::fromJson(json).object()};
    }
    return s.status() == QDataStream::Ok && s.atEnd();
}

// Removes the indexes of all but the identities that kept one most recently.
void removeOldest(const QDir& folder) {
    QStringList recent;
    for (const QFileInfo& file :
         folder.entryInfoList({QStringLiteral("*.index")}, QDir::Files, QDir::Time)) {
        const QString identity = file.fileName().section(QLatin1Char('.'), 0, 0);
        if (!recent.contains(identity))
            recent << identity;
        if (recent.indexOf(identity) >= kKeptIdentities)
            QFile::remove(file.filePath());
    }
}

} // namespace

QString keptFile(int index) {
    return QDir(cacheDirectory())
        .filePath(QStringLiteral("%1.%2.index").arg(QString::fromLatin1(identity())).arg(index));
}

QByteArray identity() {
    static const QByteArray id = [] {
        QVector<QByteArray> objects;
        dl_iterate_phdr(addObject, &objects);
        std::sort(objects.begin(), objects.end());
        QCryptographicHash hash(QCryptographicHash::Sha1);
        hash.addData(QByteArray(kMagic));
        for (const QByteArray& object : objects)
            hash.addData(QByteArray::number(object.size()) + ':' + object);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        // Texts leave in the locale's encoding; Qt 6 always uses UTF-8.
        hash.addData(QTextCodec::codecForLocale()->name());
#endif
        return hash.result().toHex();
    }();
    return id;
}

std::unique_ptr<Index> loadKeptIndex(int index) {
    QFile file(keptFile(index));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    QDataStream s(&file);
    s.setVersion(QDataStream::Qt_5_15);
    QByteArray magic, payload, digest;
    s >> magic >> payload >> digest;
    if (s.status() != QDataStream::Ok || magic != kMagic ||
        digest != QCryptographicHash::hash(payload, QCryptographicHash::Sha1))
        return nullptr;
    auto learnt = std::make_unique<Index>();
    return deserialise(payload, index, *learnt) ? std::move(learnt) : nullptr;
}

void keepIndex(int index, const Index& learnt) {
    const QDir folder(cacheDirectory());
    if (!folder.mkpath(QStringLiteral(".")))
        return;
    const QByteArray payload = serialise(learnt);
    QSaveFile file(keptFile(index));
    if (!file.open(QIODevice::WriteOnly))
        return;
    QDataStream s(&file);
    s.setVersion(QDataStream::Qt_5_15);
    s << QByteArray(kMagic) << payload
      << QCryptographicHash::hash(payload, QCryptographicHash::Sha1);
    if (file.commit())
        removeOldest(folder);
}

} // namespace engine
