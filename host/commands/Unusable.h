#pragma once

#include "interchange/Place.h"

namespace quelt::host {

/// Says why a command cannot do its work, on one line.
class Unusable : public Refusal {
public:
    using Refusal::Refusal;
};

} // namespace quelt::host
