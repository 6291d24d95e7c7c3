#pragma once

#include "interchange/Fields.h"

namespace quelt::host {

/// The fields of a node object: its form, and what goes with the form.
using NodeFields = Fields<Key::and_, Key::or_, Key::not_, Key::notDomain, Key::eff, Key::restriction,
                          Key::empty, Key::option, Key::selection, Key::serial, Key::treeSeries, Key::date,
                          Key::in, Key::of, Key::negated, Key::noVar>;

/// The key that says what the node is: one of `and` to `date`. Refuses an object with none or several, and
/// one with keys that the form does not have.
[[nodiscard]] Key formOf(const NodeFields& fields);

/// True for the forms that state a criterion: `option` to `date`.
[[nodiscard]] bool isCriterion(Key form) noexcept;

} // namespace quelt::host
