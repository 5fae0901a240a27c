#include "imagefx/effects/BlurKernel.h"

#include <QtCore/QString>

#include <cmath>

namespace ko::imagefx
{

namespace
{

constexpr float maximumTaps = 16.0F;

// exp(-x^2 / 2 sigma^2)
float gauss(float x, float taps)
{
    const float sigma = (taps + 1.0F) / 3.333333F;
    return float(std::pow(double(2.7182817F), double(-(x * x) / (2.0F * sigma * sigma))));
}

} // namespace

int tapCount(float radiusInPixels)
{
    return int(qBound(1.0F, radiusInPixels, maximumTaps));
}

QVector<float> blurWeights(int taps)
{
    const auto count = float(taps);
    QVector<float> weights{gauss(0.0F, count)};
    float sum = weights.first();
    for (int i = 1; i <= taps; ++i) {
        weights.append(gauss(float(i) / count * count, count));
        sum += 2.0F * weights.last();
    }
    for (float &weight : weights) {
        weight /= sum;
    }
    return weights;
}

QByteArray blurDefinitions(int taps)
{
    const QVector<float> weights = blurWeights(taps);
    QString text =
        QStringLiteral("#define SAMPLES %1\n\nmediump float w[SAMPLES];\n").arg(taps + 1);
    for (int k = 0; k < weights.size(); ++k) {
        text += QStringLiteral("w[%1] = %2;\n").arg(k).arg(double(weights.at(k)), 0, 'f', 6);
    }
    return text.toLatin1();
}

} // namespace ko::imagefx
