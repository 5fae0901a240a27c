#pragma once

#include "fuzz/FuzzBytes.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QJsonArray>

#include <memory>
#include <vector>

namespace ko::fuzz
{

// A stack of effects with all that they use.
class FuzzStack
{
public:
    // Read from the text of a stack, which may be any text.
    static FuzzStack fromJson(FuzzBytes *bytes);
    // Made from objects, so that numbers come which no text can hold.
    static FuzzStack fromBytes(FuzzBytes *bytes);

    const QList<imagefx::ImageEffect *> &effects() const { return m_effects; }

private:
    void take(const QList<imagefx::ImageEffect *> &effects);

    std::vector<std::unique_ptr<imagefx::ImageEffect>> m_owned;
    QList<imagefx::ImageEffect *> m_effects;
};

} // namespace ko::fuzz
