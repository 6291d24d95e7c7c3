#include "interchange/Fields.h"

namespace quelt::host {

void refuseUnknownKey(const Place& object, std::string_view key) {
    object.child(key).refuse("unknown key " + inQuotes(key));
}

void refuseRepeatedKey(const Place& object, std::string_view key) {
    object.child(key).refuse("key " + inQuotes(key) + " given twice");
}

void refuseMissingKey(const Place& object, Key key) {
    object.refuse("missing key " + inQuotes(nameOf(key)));
}

} // namespace quelt::host
