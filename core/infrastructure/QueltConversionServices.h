#pragma once

#include "infrastructure/QueltInGuid.h"

/// Conversions between value objects.
class QUELT_CORE_API QueltConversionServices {
public:
    /// Writes the text form of `guid` into `text`. S_OK always.
    static long ConvertGuidToString(const QueltInGuid& guid, QueltInString& text);
};
