#include "tests/support/KnownStacks.h"

#include "imagefx/model/ImageEffect.h"
#include "tests/support/StackTester.h"

#include <QtTest/QtTest>

#include <utility>

namespace ko::imagefx::test
{

KnownStacks::Known KnownStacks::at(int number, const QImage &source)
{
    for (unsigned seed = m_firstSeed + unsigned(number);; seed += unsigned(m_count)) {
        RandomStacks::Stack stack = RandomStacks(seed).next();
        StackPicture expected(stack.model, source);
        if (expected.leftOut() < StackTester::mostLeftOut) {
            return {std::move(stack), std::move(expected)};
        }
        ++m_passedOver;
    }
}

bool KnownStacks::arePassedOverFew() const
{
    constexpr int share = 4;
    qInfo("%d stacks passed over", m_passedOver);
    return m_passedOver <= m_count / share;
}

void addStackNumbers(int count)
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < count; ++number) {
        QTest::addRow("%d", number) << number;
    }
}

} // namespace ko::imagefx::test
