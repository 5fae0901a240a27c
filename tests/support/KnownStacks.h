#pragma once

#include "tests/support/PictureModel.h"
#include "tests/support/RandomStack.h"

#include <QtGui/QImage>

namespace ko::imagefx::test
{

// Random stacks that the model can tell enough about. A stack may amplify a rounding that may go
// either way until the model says too little about its picture; the next seed stands in for it
// then.
class KnownStacks
{
public:
    struct Known {
        RandomStacks::Stack stack;
        StackPicture expected;
    };

    KnownStacks(unsigned firstSeed, int count) : m_firstSeed(firstSeed), m_count(count) {}

    // Stack number `number` of `count`, and what the model makes of the picture with it.
    Known at(int number, const QImage &source);
    // Prints how many stacks were passed over. Many more than these would mean that the model is
    // too vague.
    bool arePassedOverFew() const;

private:
    const unsigned m_firstSeed;
    const int m_count;
    int m_passedOver = 0;
};

// The rows of a data-driven test: a column "number" for each of `count` stacks.
void addStackNumbers(int count);

} // namespace ko::imagefx::test
