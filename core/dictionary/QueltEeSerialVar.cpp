#include "dictionary/QueltEeSerialVar.h"

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>

template class QueltInTyped<QueltEeSerialVarValue, QueltInObject>;
template class QueltInTyped<QueltEeSerialVar, QueltEeVariable>;

QueltEeSerialVarValue::QueltEeSerialVarValue(const QueltInString& revision, unsigned int sequenceNumber)
    : m_revision(revision), m_sequenceNumber(sequenceNumber) {}

QueltInString QueltEeSerialVarValue::toString() const {
    quelt::TextBuilder text;
    text.name(m_revision.view()) << ": " << std::int64_t{m_sequenceNumber};
    return text.take();
}

QueltEeSerialVar::QueltEeSerialVar(const QueltInString& name, const QueltInGuid& guid,
                                   SerialExternalType externalType)
    : QueltInTyped(name, guid), m_externalType(externalType) {}

QueltEeSerialVar::~QueltEeSerialVar() {
    QueltInDeleteWithObjects(m_pRevisions);
}

long QueltEeSerialVar::getSeqNb2Revisions(const QueltInMap*& revisions) const {
    revisions = m_pRevisions;
    return revisions != nullptr ? S_OK : E_FAIL;
}

void QueltEeSerialVar::makeRevisionTable() {
    if (m_pRevisions == nullptr) {
        m_pRevisions = new QueltInMap(QueltInIntHolder::sType(), QueltEeSerialVarValue::sType());
    }
}

void QueltEeSerialVar::addRevision(const QueltInString& revision, unsigned int sequenceNumber) {
    makeRevisionTable();
    const QueltInIntHolder key(sequenceNumber);
    auto value = std::make_unique<QueltEeSerialVarValue>(revision, sequenceNumber);
    const std::unique_ptr<QueltInObject> replaced(m_pRevisions->Get(key));
    m_pRevisions->Put(key, *value);
    static_cast<void>(value.release()); // the table's from here on
}

bool QueltEeSerialVar::agreesWith(const QueltEeSerialVar& other) const {
    if (this == &other) {
        return true;
    }
    if (getGuid() != other.getGuid()) {
        return false;
    }
    const int length = m_pRevisions != nullptr ? m_pRevisions->GetLength() : 0;
    const int otherLength = other.m_pRevisions != nullptr ? other.m_pRevisions->GetLength() : 0;
    if (length != otherLength) {
        return false;
    }
    if (length == 0) {
        return true;
    }
    QueltInMap::const_iterator revisions = m_pRevisions->cBegin();
    while (const QueltInMapEntry* const entry = revisions.GetEntryGoToNext()) {
        const QueltInObject* const same = other.m_pRevisions->Get(*entry->key);
        if (same == nullptr || !(static_cast<const QueltEeSerialVarValue*>(same)->getRev() ==
                                 static_cast<const QueltEeSerialVarValue*>(entry->value)->getRev())) {
            return false;
        }
    }
    return true;
}
