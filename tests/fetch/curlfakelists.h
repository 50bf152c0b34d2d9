#pragma once

#include "curlfake.h"

/// The part of the fake that watches over header lists and forms.
namespace CurlFake
{

/// The parts of a form that is open; none when @p form is no address of one.
QList<FormPart> partsOf(const void *form);
/// Every line and every part can be added again. What is open stays counted.
void resetLists();

} // namespace CurlFake
