#pragma once

#include "tests/support/PictureModel.h"

#include <QtCore/QList>

#include <memory>
#include <random>
#include <vector>

namespace ko::imagefx
{
class ImageEffect;
} // namespace ko::imagefx

namespace ko::imagefx::test
{

// Effects that own their masks, and batches that own their members, as QObject children. The stack
// that was read from JSON is nobody's before this.
class OwnedEffects
{
public:
    OwnedEffects() = default;
    explicit OwnedEffects(const QList<ImageEffect *> &effects);
    OwnedEffects(OwnedEffects &&other) = default;
    OwnedEffects &operator=(OwnedEffects &&other) = default;
    ~OwnedEffects();

    const QList<ImageEffect *> &list() const { return m_list; }

private:
    std::vector<std::unique_ptr<ImageEffect>> m_owned;
    QList<ImageEffect *> m_list;
};

// Makes stacks of effects of all kinds with their models; the same ones from the same seed. Nothing
// has been drawn with the effects yet.
class RandomStacks
{
public:
    struct Stack {
        OwnedEffects effects;
        ModelStack model;
    };

    explicit RandomStacks(unsigned seed) : m_random(seed) {}

    // 1 to 8 effects; batches are at most two deep. Of hue and luminance masks a stack has one kind
    // only, since the two share their passes.
    Stack next();

private:
    struct Member {
        std::unique_ptr<ImageEffect> effect;
        ModelMember model;
        bool neutral = false;
    };

    Member member(int depth);
    Member plainMember(int depth);
    Member tableMember();
    Member blur();
    Member sharpen();
    Member batch(int depth);
    void setMask(Member &member);

    int number(int from, int to);
    float value(float from, float to);
    bool chance(double share);

    std::mt19937 m_random;
    ModelMaskKind m_colorMask = ModelMaskKind::Hue;
};

} // namespace ko::imagefx::test
