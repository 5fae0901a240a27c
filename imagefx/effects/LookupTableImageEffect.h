#pragma once

#include "imagefx/model/ImageEffect.h"

#include <QtCore/QUrl>
#include <QtGui/QImage>

namespace ko::imagefx
{

// A colour grade: each channel's level is looked up in a table of 256 x 1 pixels, red in its red
// channel, green in its green one, blue in its blue one. Neutral without a table.
class KORVELIMAGEFX_EXPORT LookupTableImageEffect : public ImageEffect
{
    Q_OBJECT
    // Where the table comes from: a local file, a resource (such as the presets,
    // "qrc:/imagefx/lib/lut/fargo.png"), or "data:image/png;base64," with at most 2048 characters
    // behind it. It is loaded at once. A picture that is not 256 x 1, or cannot be loaded, leaves
    // the effect without a table; a URL of another kind leaves the table it had. Default empty.
    Q_PROPERTY(QUrl table READ table WRITE setTable NOTIFY tableChanged)

public:
    explicit LookupTableImageEffect(QObject *parent = nullptr);
    ~LookupTableImageEffect() override;

    QUrl table() const;
    void setTable(const QUrl &table);

    // The loaded table, 256 x 1 in Format_RGB888; null when there is none.
    QImage lut() const;

    // A local 256 x 1 picture as a data URL, for a stack that carries its table along; empty for
    // any other file. The effect's own table stays as it is.
    Q_INVOKABLE QUrl toDataUrl(const QUrl &file) const;

    bool isNeutral() const override;

Q_SIGNALS:
    void tableChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
