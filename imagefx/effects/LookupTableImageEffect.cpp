#include "imagefx/effects/LookupTableImageEffect.h"

#include "imagefx/effects/LookupTableImageEffectState.h"
#include "imagefx/effects/TableDataUrl.h"
#include "imagefx/model/Logging.h"

#include <QtCore/QResource>
#include <QtGui/QImageReader>

namespace ko::imagefx
{

namespace
{

constexpr QSize tableSize(256, 1);
// A longer table is cut there, and so fails to decode.
constexpr int maximumDataLength = 2048;

} // namespace

class LookupTableImageEffect::Private
{
public:
    void accept(const QImage &image);
    void loadData(const QString &path);
    void load();

    QUrl table;
    QImage lut;
};

void LookupTableImageEffect::Private::accept(const QImage &image)
{
    if (image.size() == tableSize) {
        lut = image.convertToFormat(QImage::Format_RGB888);
        return;
    }
    qCCritical(lcImageEffect, "Invalid image dimensions %dx%d", image.width(), image.height());
    lut = QImage();
}

void LookupTableImageEffect::Private::loadData(const QString &path)
{
    if (!path.startsWith(tableDataPrefix)) {
        qCCritical(lcImageEffect, "Unsupported data URL");
        return;
    }
    const QByteArray base64 = path.mid(tableDataPrefix.size(), maximumDataLength).toLatin1();
    accept(QImage::fromData(QByteArray::fromBase64(base64)));
}

void LookupTableImageEffect::Private::load()
{
    if (table.isLocalFile()) {
        accept(QImage(table.toLocalFile()));
    } else if (table.scheme() == QLatin1String("data")) {
        loadData(table.path(QUrl::FullyDecoded));
    } else if (table.scheme() == QLatin1String("qrc")) {
        const QResource resource(QLatin1Char(':') + table.path(QUrl::FullyDecoded));
        accept(QImage::fromData(resource.uncompressedData()));
    } else {
        qCCritical(lcImageEffect, "Unsupported url scheme %s",
                   table.scheme().toLocal8Bit().constData());
    }
}

LookupTableImageEffect::LookupTableImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.LUT"), parent),
      d(std::make_unique<Private>())
{
}

LookupTableImageEffect::~LookupTableImageEffect() = default;

QUrl LookupTableImageEffect::table() const
{
    return d->table;
}

void LookupTableImageEffect::setTable(const QUrl &table)
{
    if (d->table == table) {
        return;
    }
    d->table = table;
    d->load();
    Q_EMIT tableChanged();
    Q_EMIT updateRequired();
}

QImage LookupTableImageEffect::lut() const
{
    return d->lut;
}

QUrl LookupTableImageEffect::toDataUrl(const QUrl &file) const
{
    if (!file.isLocalFile()) {
        return {};
    }
    QImageReader reader(file.toLocalFile());
    if (reader.size() != tableSize) {
        return {};
    }
    const QImage image = reader.read().convertToFormat(QImage::Format_RGB888);
    if (image.isNull()) {
        return {};
    }
    return tableDataUrl(image);
}

bool LookupTableImageEffect::isNeutral() const
{
    return d->lut.isNull();
}

ImageEffectState *LookupTableImageEffect::createState() const
{
    return new LookupTableImageEffectState;
}

} // namespace ko::imagefx
