#pragma once

#include "examples/contact-sheet/Photograph.h"

#include <QtCore/QList>
#include <QtCore/QObject>

#include <memory>
#include <vector>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::contactsheet
{

// A named list of effects. Owns them, those nested in batches, and their masks. Once it has drawn
// it holds GL objects: it must then be destroyed while the same context is current.
class Look
{
public:
    // Takes effects without an owner. None: the plain picture.
    Look(const QString &name, const QList<imagefx::ImageEffect *> &effects);

    QString name() const { return m_name; }
    // The photograph's thumbnail through the effects that are enabled. Needs a current GL context.
    QImage apply(const Photograph &photograph) const;

private:
    void adopt(const QList<imagefx::ImageEffect *> &effects);

    QString m_name;
    QList<imagefx::ImageEffect *> m_effects;
    std::unique_ptr<QObject> m_owner;
};

// The stacks (*.json) of a folder by name. Throws an Error for a folder without any, and for a file
// that is no stack of known effects.
std::vector<Look> readStacks(const QString &folder);
// The library's preset lookup tables by name.
std::vector<Look> presets();

} // namespace ko::contactsheet
