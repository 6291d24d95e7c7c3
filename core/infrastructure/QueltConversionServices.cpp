#include "infrastructure/QueltConversionServices.h"

#include "infrastructure/QueltInResult.h"

long QueltConversionServices::ConvertGuidToString(const QueltInGuid& guid, QueltInString& text) {
    text = guid.toString();
    return S_OK;
}
