#include "compiled/QueltIDictionaryModelerAccess.h"

QueltIDictionaryModelerAccess::~QueltIDictionaryModelerAccess() = default;
