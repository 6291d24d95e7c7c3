#include "interchange/NodeFields.h"

namespace quelt::host {

namespace {

using Mask = NodeFields::Mask;

constexpr Mask s_flags = NodeFields::s_mask<Key::negated, Key::noVar>;
constexpr Mask s_forms =
    ~(s_flags | NodeFields::s_mask<Key::in, Key::of>)&((Mask{1} << NodeFields::s_size) - 1);

/// The keys that a node of this form may have beside the form's own.
Mask goesWith(Key form) {
    switch (form) {
    case Key::eff:
        return NodeFields::s_mask<Key::of, Key::negated>;
    case Key::option:
    case Key::selection:
    case Key::serial:
    case Key::treeSeries:
        return NodeFields::s_mask<Key::in, Key::of> | s_flags;
    case Key::date:
        return s_flags;
    default:
        return 0;
    }
}

} // namespace

Key formOf(const NodeFields& fields) {
    const Mask forms = fields.given() & s_forms;
    if (forms == 0) {
        fields.place().refuse("no key says what this node is");
    }
    const Key form = NodeFields::firstOf(forms);
    const Mask bitOfForm = forms & (~forms + 1);
    fields.allowOnly(bitOfForm | goesWith(form), [form] { return inQuotes(nameOf(form)); });
    return form;
}

bool isCriterion(Key form) noexcept {
    return form == Key::option || form == Key::selection || form == Key::serial || form == Key::treeSeries ||
           form == Key::date;
}

} // namespace quelt::host
