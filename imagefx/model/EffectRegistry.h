#pragma once

#include "imagefx/Export.h"

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::imagefx
{

class AlphaMask;
class ImageEffect;

// Turns the id of an effect or mask kind into a new object of that kind. Not locked: fill a
// registry before other threads read it.
class KORVELIMAGEFX_EXPORT EffectRegistry
{
public:
    using EffectCreator = ImageEffect *(*)();
    using MaskCreator = AlphaMask *(*)();

    // The registry that ImageEffect's static functions use; empty until ImageEffect::initialize().
    static EffectRegistry &library();
    // A registry of every kind that the library has, under every id that its classes report. The
    // library's own is narrower: it lists brightness/contrast under a misspelt id alone and HSV not
    // at all, and so drops both when it reads a stack back.
    static EffectRegistry complete();

    // Enters the kinds of the library's own registry.
    void fill();

    // An id that is entered again creates with its newer creator.
    void insertEffect(const QString &effectId, EffectCreator creator);
    void insertMask(const QString &maskId, MaskCreator creator);

    // A new object without a parent, owned by the caller; null for an unknown id or a null creator.
    ImageEffect *createEffect(const QString &effectId) const;
    AlphaMask *createAlphaMask(const QString &maskId) const;

    // Every id that is entered, in alphabetical order.
    QStringList effectIds() const;
    QStringList maskIds() const;

private:
    QHash<QString, EffectCreator> m_effects;
    QHash<QString, MaskCreator> m_masks;
};

} // namespace ko::imagefx
