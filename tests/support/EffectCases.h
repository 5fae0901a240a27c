#pragma once

#include "tests/support/EffectModel.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <memory>

namespace ko::imagefx
{
class AlphaMask;
class ImageEffect;
} // namespace ko::imagefx

namespace ko::imagefx::test
{

// The library's objects side by side with their models.

// An effect with one set of values.
struct EffectCase {
    QString name; // the values
    std::function<std::unique_ptr<ImageEffect>()> create;
    ModelEffect model;
};

// The effects of one kind, by the last part of its id, such as "HSV": values of both signs, of
// every size that means something else, and beyond what a slider would offer.
QVector<EffectCase> effectCases(const QString &kind);
QStringList effectKinds();

// A mask with its stops.
struct MaskCase {
    QString name;
    ModelMaskKind kind = ModelMaskKind::None;
    QVector<ModelStop> stops;
    ModelInterpolation interpolation = ModelInterpolation::Hermite;
    bool enabled = true;

    // Null for ModelMaskKind::None.
    std::unique_ptr<AlphaMask> create() const;
    // A disabled mask is none.
    ModelMask model() const;
};

QString maskKindName(ModelMaskKind kind);
// Every interpolation with stop lists of its own; ModelMaskKind::None has one case.
QVector<MaskCase> maskCases(ModelMaskKind kind);

} // namespace ko::imagefx::test
