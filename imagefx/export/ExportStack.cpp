#include "imagefx/export/ExportStack.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/TableDataUrl.h"

#include <QtCore/QFileInfo>
#include <QtCore/QJsonObject>

namespace ko::imagefx
{

namespace
{

QUrl portableTable(const LookupTableImageEffect &grade)
{
    QUrl table = grade.table();
    const QString path = table.path(QUrl::FullyDecoded);
    const bool isResourceFile =
        table.isLocalFile() && table.toLocalFile().startsWith(QLatin1Char(':'));
    if (table.isLocalFile() && !isResourceFile) {
        const QFileInfo file(table.toLocalFile());
        return file.isRelative() ? QUrl::fromLocalFile(file.absoluteFilePath()) : table;
    }
    const bool isPreset = table.scheme() == QLatin1String("qrc") &&
                          path.startsWith(QLatin1String("/imagefx/lib/lut/"));
    if (isPreset || grade.lut().isNull()) {
        return table;
    }
    return tableDataUrl(grade.lut());
}

QJsonArray portable(QJsonArray stack, const QList<ImageEffect *> &effects)
{
    for (int i = 0; i < stack.size(); ++i) {
        QJsonObject object = stack.at(i).toObject();
        if (const auto *grade = qobject_cast<const LookupTableImageEffect *>(effects.at(i))) {
            object[QLatin1String("table")] = portableTable(*grade).toString(QUrl::FullyEncoded);
        } else if (const auto *batch = qobject_cast<const BatchImageEffect *>(effects.at(i))) {
            QJsonValueRef nested = object[QLatin1String("imageEffects")];
            nested = portable(nested.toArray(), batch->imageEffectList());
        }
        stack[i] = object;
    }
    return stack;
}

} // namespace

QJsonArray writeExportStack(const QList<ImageEffect *> &effects)
{
    return portable(ImageEffect::serialize(effects), effects);
}

} // namespace ko::imagefx
