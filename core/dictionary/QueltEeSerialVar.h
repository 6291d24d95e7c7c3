#pragma once

#include "dictionary/QueltEeVariable.h"
#include "infrastructure/QueltInMap.h"

class QueltEeSerialVarValue;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSerialVarValue, QueltInObject>;

/// One value of a serial variable: a revision text (a model year) and its sequence number in the dictionary.
class QUELT_CORE_API QueltEeSerialVarValue : public QueltInTyped<QueltEeSerialVarValue, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeSerialVarValue";

    /// The value with a copy of the text `revision` and this sequence number.
    QueltEeSerialVarValue(const QueltInString& revision, unsigned int sequenceNumber);

    /// The revision text.
    [[nodiscard]] virtual const QueltInString& getRev() const { return m_revision; }
    /// The sequence number.
    [[nodiscard]] virtual unsigned int getSeqNumber() const { return m_sequenceNumber; }
    /// "2010: 5".
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltInString m_revision;
    unsigned int m_sequenceNumber;
};

class QueltEeSerialVar;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSerialVar, QueltEeVariable>;

/// A flat series: products numbered by sequence, of a kind that the external type tells.
class QUELT_CORE_API QueltEeSerialVar : public QueltInTyped<QueltEeSerialVar, QueltEeVariable> {
public:
    static constexpr const char* s_className = "QueltEeSerialVar";

    /// What the numbers count. Other values are accepted and kept.
    enum class SerialExternalType : int {
        productSeries = 12,      ///< a product series
        unitCounter = 13,        ///< a unit counter; its numbers are never rewritten
        manufacturingSeries = 14 ///< a manufacturing series
    };

    /// A series without revision table.
    QueltEeSerialVar(const QueltInString& name, const QueltInGuid& guid, SerialExternalType externalType);
    ~QueltEeSerialVar() override;
    QueltEeSerialVar(const QueltEeSerialVar&) = delete;
    QueltEeSerialVar& operator=(const QueltEeSerialVar&) = delete;

    /// What the numbers count.
    [[nodiscard]] virtual SerialExternalType getExternalType() const { return m_externalType; }
    /// The revision table: a map from sequence number (QueltInIntHolder) to QueltEeSerialVarValue, in the
    /// order of the table; not owned by the caller. Null and E_FAIL when the variable has no revision table.
    virtual long getSeqNb2Revisions(const QueltInMap*& revisions) const;
    /// Gives the variable a revision table, empty when it had none.
    void makeRevisionTable();
    /// Adds a revision, making the table when there is none. A number given twice keeps its place and takes
    /// the later text.
    void addRevision(const QueltInString& revision, unsigned int sequenceNumber);
    /// True when `other` is the same feature (the same GUID) with the same revisions under the same numbers,
    /// so that a sequence number means the same in both. No table is as good as an empty one.
    [[nodiscard]] bool agreesWith(const QueltEeSerialVar& other) const;

private:
    SerialExternalType m_externalType;
    QueltInMap* m_pRevisions = nullptr; // owned, with its values
};
