#pragma once

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSet.h"

#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

// What the core never does by itself, but a failing one would: each double misbehaves in one place.

namespace quelt::test {

/// A code that no check of the module makes by itself.
inline constexpr long s_coreFailure = E_OUTOFMEMORY;

/// Holds what a set never lets in, null included.
class SetWith : public QueltInSet {
public:
    SetWith(std::initializer_list<QueltInObject*> elements, bool badCast = false)
        : QueltInSet(QueltInObject::sType()), m_badCast(badCast) {
        for (QueltInObject* const element : elements) {
            m_elements.push_back(element);
        }
    }
    [[nodiscard]] int badCastErr() const override { return m_badCast ? 1 : 0; }
    int Put(QueltInObject& object) override { return m_refusesPut ? 0 : QueltInSet::Put(object); }
    bool m_refusesPut = false;

private:
    bool m_badCast;
};

/// Holds what a map of dictionaries never lets in, null included, and answers look-ups as it is told.
class MapWith : public QueltInMap {
public:
    MapWith(std::initializer_list<QueltInObject*> values)
        : QueltInMap(QueltInString::sType(), QueltInObject::sType()) {
        for (QueltInObject* const value : values) {
            m_entries.push_back({nullptr, value});
        }
    }
    [[nodiscard]] QueltInObject* Get(const QueltInObjectVal& /*key*/) const override { return nullptr; }
};

/// Takes the first entries and refuses the next one.
class FullMap : public QueltInMap {
public:
    explicit FullMap(int room)
        : QueltInMap(QueltInIntHolder::sType(), QueltInObject::sType()), m_room(room) {}
    long Put(const QueltInObjectVal& key, const QueltInObject& value) override {
        return GetLength() < m_room ? QueltInMap::Put(key, value) : s_coreFailure;
    }

private:
    int m_room;
};

/// A context that fails, or answers with what a context never gives out, from a certain call on.
class ContextDouble : public QueltEeExpressionContext {
public:
    using MakeSet = std::function<QueltInSet*()>;

    long GetAllDictionariesByName(const QueltInMap*& dictionaries) const override {
        const long result = QueltEeExpressionContext::GetAllDictionariesByName(dictionaries);
        if (m_names) {
            dictionaries = *m_names;
        }
        return m_namesResult < 0 ? m_namesResult : result;
    }
    long GetAllDictionariesForInheritedEffectivity(const QueltEeBasicEff& effectivity,
                                                   const QueltInMap*& dictionaries) const override {
        const long result =
            QueltEeExpressionContext::GetAllDictionariesForInheritedEffectivity(effectivity, dictionaries);
        if (m_inheritedGoodCalls-- > 0) {
            return result;
        }
        if (m_inherited) {
            dictionaries = *m_inherited;
        }
        return m_inheritedResult < 0 ? m_inheritedResult : result;
    }
    long GetSetOfMDsContainingFeature(const QueltEeDicoObject& feature, QueltInSet*& possible,
                                      QueltInSet*& rejected,
                                      const QueltEeBasicEff* inherited) const override {
        m_pInheritedSeen = inherited;
        const long result =
            QueltEeExpressionContext::GetSetOfMDsContainingFeature(feature, possible, rejected, inherited);
        if (m_makePossible) {
            delete possible;
            possible = m_makePossible();
        }
        if (m_makeRejected) {
            delete rejected;
            rejected = m_makeRejected();
        }
        return m_featureResult.value_or(result);
    }

    std::optional<const QueltInMap*> m_names;
    long m_namesResult = S_OK;
    mutable int m_inheritedGoodCalls = 0;
    std::optional<const QueltInMap*> m_inherited;
    long m_inheritedResult = S_OK;
    MakeSet m_makePossible;
    MakeSet m_makeRejected;
    std::optional<long> m_featureResult;
    mutable const QueltEeBasicEff* m_pInheritedSeen = nullptr;
};

/// An effectivity whose variable is of another class, or not there.
template <class Base>
class OnVariable : public Base {
public:
    explicit OnVariable(const QueltEeDicoObject* variable) : Base(nullptr), m_pVariableDouble(variable) {}
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return m_pVariableDouble; }

private:
    const QueltEeDicoObject* m_pVariableDouble;
};

template <>
class OnVariable<QueltEeTreeSeriesEff> : public QueltEeTreeSeriesEff {
public:
    explicit OnVariable(const QueltEeDicoObject* variable)
        : QueltEeTreeSeriesEff(static_cast<const QueltEeTreeSeriesVar*>(nullptr)),
          m_pVariableDouble(variable) {}
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return m_pVariableDouble; }

private:
    const QueltEeDicoObject* m_pVariableDouble;
};

/// An effectivity of a kind that conversions do not know.
class SixthEff : public QueltEeVarEff {
public:
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override { return new SixthEff; }
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return nullptr; }
    [[nodiscard]] unsigned char equals(const QueltEeVarEff& /*other*/) const override { return 0; }
    long opAnd(const QueltEeVarEff& /*other*/) override { return E_INVALIDARG; }
    long opOr(const QueltEeVarEff& /*other*/) override { return E_INVALIDARG; }
    long opCut(const QueltEeVarEff& /*other*/) override { return E_INVALIDARG; }
    [[nodiscard]] unsigned char isAllFalse() const override { return 0; }
    [[nodiscard]] unsigned char isAllTrue() const override { return 0; }
    [[nodiscard]] QueltInString toString() const override { return "sixth"; }
};

/// A serial effectivity that cannot be read or written.
class SerialEffDouble : public QueltEeSerialEff {
public:
    using QueltEeSerialEff::QueltEeSerialEff;
    long getIntervals(QueltInListVal& intervals) const override {
        if (m_hasForeignInterval) {
            intervals.PutBack(QueltInIntHolder(1));
        }
        return m_getResult;
    }
    long set(const QueltInListVal& /*intervals*/) override { return m_setResult; }

    bool m_hasForeignInterval = false;
    long m_getResult = S_OK;
    long m_setResult = S_OK;
};

/// A series of the product kind with whatever revision table.
class SerialVarWithRevisions : public QueltEeSerialVar {
public:
    SerialVarWithRevisions(const QueltInGuid& guid, const QueltInMap* revisions)
        : QueltEeSerialVar("Unit", guid, SerialExternalType::productSeries), m_pRevisions(revisions) {}
    long getSeqNb2Revisions(const QueltInMap*& revisions) const override {
        revisions = m_pRevisions;
        return E_UNEXPECTED; // is not looked at
    }

private:
    const QueltInMap* m_pRevisions;
};

/// A node that gives no copy of itself.
template <class Node>
class Uncloneable : public Node {
public:
    using Node::Node;
    [[nodiscard]] QueltEeNodeRef* clone() const override { return nullptr; }
};

/// A node whose copy is a reference without node.
template <class Node>
class ClonedToNothing : public Node {
public:
    using Node::Node;
    [[nodiscard]] QueltEeNodeRef* clone() const override { return new QueltEeNodeRef; }
};

/// A node that keeps to itself that visiting it failed.
template <class Node>
class Silent : public Node {
public:
    using Node::Node;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override {
        static_cast<void>(Node::acceptVisitor(visitor));
        return S_OK;
    }
};

/// A node that refuses every visit.
class Refusing : public QueltEeVarEffLeaf {
public:
    using QueltEeVarEffLeaf::QueltEeVarEffLeaf;
    long acceptVisitor(QueltEeNodeVisitor& /*visitor*/) override { return s_coreFailure; }
};

/// A group whose children, as those see them who edit them, are others than those that the group was given.
template <class Group>
class GroupWith : public Group {
public:
    class List : public QueltInLinkList {
    public:
        List() : QueltInLinkList(QueltInObject::sType()) {}
        long Set(unsigned int position, QueltInObject& object) override {
            return m_refusesSet ? s_coreFailure : QueltInLinkList::Set(position, object);
        }
        long Remove(unsigned int position) override {
            return m_refusesRemove ? s_coreFailure : QueltInLinkList::Remove(position);
        }
        long RemoveEach(std::span<const std::uint32_t> positions) override {
            return m_refusesRemove ? s_coreFailure : QueltInLinkList::RemoveEach(positions);
        }
        long SetEach(std::span<const Placed> placed) override {
            return m_refusesSet ? s_coreFailure : QueltInLinkList::SetEach(placed);
        }
        bool m_refusesSet = false;
        bool m_refusesRemove = false;
    };
    [[nodiscard]] QueltInLinkList& getChildren() override { return m_seen; }
    void getChildrenRefs(QueltInLinkList& children) const override {
        for (QueltInObject* const element : m_seen.elements()) {
            children.PutBack(*element);
        }
    }
    /// Adds what is seen; not owned.
    GroupWith* showing(QueltInObject& element) {
        m_seen.QueltInLinkList::PutBack(element);
        return this;
    }
    List m_seen;
};

/// An AND or OR that says of itself that it is some group.
template <class Group>
class SomeGroup : public Group {
public:
    [[nodiscard]] QueltInObjectTypeClass* dType() const override { return QueltEeGroupOp::sType(); }
};

/// A NOT that has shown its child before, and does not any more.
class ForgetfulNot : public QueltEeNotOp {
public:
    [[nodiscard]] QueltEeNodeRef* getChildRef() const override {
        return m_isForgetful ? nullptr : QueltEeNotOp::getChildRef();
    }
    bool m_isForgetful = false;
};

/// An effectivity leaf that has referred to something before, and does not any more.
class ForgetfulLeaf : public QueltEeEffLeaf {
public:
    using QueltEeEffLeaf::QueltEeEffLeaf;
    [[nodiscard]] QueltEeEffectivity* getTargetEff() const override {
        return m_isForgetful ? nullptr : QueltEeEffLeaf::getTargetEff();
    }
    bool m_isForgetful = false;
};

/// A change that says so a number of times, when that is limited, and then is some object.
class FadingChange : public QueltEePredefEff {
public:
    explicit FadingChange(const QueltInGuid& guid) : QueltEePredefEff("ECO-9", guid) {}
    [[nodiscard]] QueltInObjectTypeClass* dType() const override {
        return !m_times || (*m_times)-- > 0 ? QueltEePredefEff::sType() : QueltInObject::sType();
    }
    mutable std::optional<int> m_times;
};

} // namespace quelt::test
