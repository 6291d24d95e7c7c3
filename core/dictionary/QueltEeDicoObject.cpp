#include "dictionary/QueltEeDicoObject.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeDicoObject, QueltInObject>;

QueltEeDicoObject::QueltEeDicoObject() : m_guidHash(m_guid.fullHash()) {}

QueltEeDicoObject::QueltEeDicoObject(const QueltInString& name, const QueltInGuid& guid)
    : m_name(name.view()), m_guid(guid), m_guidHash(guid.fullHash()) {}

long QueltEeDicoObject::initFakeName() {
    QueltInString name("GUID-");
    name.append(m_guid.toString().view());
    m_name = QueltInName(name.view());
    return S_OK;
}

long QueltEeDicoObject::initFakeNameAndGuid(const QueltInString& name, const QueltInGuid& guid) {
    m_name = QueltInName(name.view());
    m_guid = guid;
    m_guidHash = guid.fullHash();
    return S_OK;
}

QueltInString QueltEeDicoObject::toString() const {
    return quelt::TextBuilder().name(getName().view()).take();
}
