#pragma once

#include "expression/QueltEeExpression.h"
#include "expression/QueltQmSpecList.h"

class QueltDnf;
class QueltEeModelDico;
class QueltEeNodeRef;

class QueltEeFilterExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeFilterExpression, QueltEeExpression>;

/// A filter: a specification list in one dictionary (or in none), seen as one expression: all criteria must
/// hold when the list-mode flag is 0, at least one when it is not. Named effectivities count as criteria. An
/// empty list, and no list, is TRUE with the flag 0 and FALSE with another.
class QUELT_CORE_API QueltEeFilterExpression
    : public QueltInTyped<QueltEeFilterExpression, QueltEeExpression> {
public:
    static constexpr const char* s_className = "QueltEeFilterExpression";

    /// A filter in `dictionary` (not owned, may be null) over `list` (taken over, may be null); its
    /// list-mode flag is 0.
    QueltEeFilterExpression(const QueltEeModelDico* dictionary, QueltQmSpecList* list);
    ~QueltEeFilterExpression() override;
    QueltEeFilterExpression(const QueltEeFilterExpression&) = delete;
    QueltEeFilterExpression& operator=(const QueltEeFilterExpression&) = delete;

    /// Shows each criterion as a leaf, then each named effectivity as an effectivity leaf in the filter's
    /// dictionary. The leaves are the walk's own and hold copies. E_FAIL when a criterion gives no copy.
    long runConstVisitor(QueltEeNodeVisitor& visitor) const override;
    /// Makes the list shorter without changing the meaning: of the criteria on the same variable the first
    /// one takes the others in, those that decide nothing go, and where one decides alone the others go.
    /// Named effectivities are left as they are, unless a criterion decides alone. S_OK; 1 when anything
    /// changed, and the filter has a new list then; E_FAIL, and nothing is changed, when a criterion gives no
    /// copy.
    virtual long simplify();
    /// Makes the disjunctive normal form of the filter; the caller owns `dnf`. Results as QueltDnf::make;
    /// E_FAIL, and null, when a criterion gives no copy.
    virtual long getDNF(QueltDnf*& dnf) const;
    /// As getDNF, of the filter's negation.
    virtual long getNotDNF(QueltDnf*& dnf) const;
    /// As runConstVisitor; what a leaf holds after its visit is stored back as the criterion. A criterion
    /// stays as it is when the visit fails, and when the leaf holds nothing afterwards.
    virtual long runVisitor(QueltEeNodeVisitor& visitor);

    /// The filter as a tree of copies: an AND or OR of its criteria, however many there are. The caller owns
    /// it. Null when a criterion gives no copy.
    [[nodiscard]] QueltEeNodeRef* makeTree() const;
    /// The dictionary, or null.
    [[nodiscard]] const QueltEeModelDico* getDictionary() const noexcept { return m_pDictionary; }
    /// Puts the filter in `dictionary` (not owned, may be null).
    void setDictionary(const QueltEeModelDico* dictionary) noexcept { m_pDictionary = dictionary; }
    /// The list, or null; it stays the filter's.
    [[nodiscard]] QueltQmSpecList* getSpecList() const noexcept { return m_pList; }
    /// Takes `list` (may be null) over; the one held before is deleted.
    void setSpecList(QueltQmSpecList* list);
    /// The list-mode flag: 0 all criteria, else at least one.
    [[nodiscard]] int getListMode() const noexcept { return m_listMode; }
    /// Sets the list-mode flag.
    void setListMode(int listMode) noexcept { m_listMode = listMode; }
    /// "filter(Truck: all: Engine in {V6})", "filter(at least one: ...)" without dictionary, "filter(Truck:
    /// all)" without criteria.
    [[nodiscard]] QueltInString toString() const override;

private:
    const QueltEeModelDico* m_pDictionary;
    QueltQmSpecList* m_pList;
    int m_listMode = 0;
};
