#include "interchange/Fields.h"

namespace quelt::host {

void refuseUnknownKey(const Place& object, std::string_view key) {
    object.child(key).refuse("unknown key " + quoted(key));
}

void refuseRepeatedKey(const Place& object, std::string_view key) {
    object.child(key).refuse("key " + quoted(key) + " given twice");
}

void refuseMissingKey(const Place& object, Key key) {
    object.refuse("missing key " + quoted(nameOf(key)));
}

} // namespace quelt::host
